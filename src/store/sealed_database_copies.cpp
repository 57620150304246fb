// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

// The working copies of a sealed database: made, marked as not yet wanted, kept, cleared away.

#include <fcntl.h>
#include <sys/file.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "platform/database.h"
#include "platform/durable_file.h"
#include "platform/prompt.h"
#include "store/failure.h"
#include "store/schema.h"
#include "store/sealed_database.h"
#include "store/sealed_file.h"
#include "store/working_copy_files.h"

namespace keeper {
namespace {

/// Not valid when another process, or another session of this one, has the mark.
UniqueFd lockedMark(const QString& path) {
    UniqueFd mark(::open(QFile::encodeName(path).constData(), O_RDWR | O_CLOEXEC));
    if (mark.isValid() && ::flock(mark.get(), LOCK_EX | LOCK_NB) == 0) {
        return mark;
    }
    return UniqueFd();
}

}  // namespace

void SealedDatabase::startWorkingCopy(Origin origin) {
    ensurePrivateFolder(m_stateFolder);
    removeAbandonedCopies();
    // The mark comes first: a kill in between leaves no copy that nobody would take away.
    QString mark;
    do {
        mark = makeFreshFile(m_stateFolder, QString(), kWorkingSuffix + kFreshSuffix, m_random);
        m_freshMark = lockedMark(mark);
        // Another program may clear it away before it is locked.
    } while (!m_freshMark.isValid() || !QFileInfo::exists(mark));
    m_tmpFile = mark.chopped(kFreshSuffix.size());
    createPrivateFile(m_tmpFile);
    m_origin = origin;
    m_wasConnected = false;
}

void SealedDatabase::ClearUnfinished() {
    removeLeftovers(m_stateFolder, QString(), kCompactingSuffix);
    removeLeftovers(m_stateFolder, QString(), kDispatchingSuffix);
}

void SealedDatabase::removeAbandonedCopies() {
    const QDir folder(m_stateFolder);
    const QStringList marks =
        folder.entryList({u'*' + kWorkingSuffix + kFreshSuffix}, QDir::Files | QDir::Hidden);
    for (const QString& name : marks) {
        const QString mark = folder.filePath(name);
        const QString copy = mark.chopped(kFreshSuffix.size());
        if (lockedMark(mark).isValid() && !Database::isHeldElsewhere(copy) && isGone(copy) &&
            isGone(journalOf(copy))) {
            QFile::remove(mark);
        }
    }
}

bool SealedDatabase::removeWorkingCopy() {
    removeRelatives();
    QFile::remove(m_tmpFile + kCompactingSuffix);
    if (!isGone(m_tmpFile) || !isGone(journalOf(m_tmpFile))) {
        return false;
    }
    m_origin = Origin::None;
    m_wasConnected = false;
    KeepWorkingCopy();
    m_tmpFile.clear();
    return true;
}

void SealedDatabase::KeepWorkingCopy() {
    if (!m_tmpFile.isEmpty()) {
        QFile::remove(m_tmpFile + kFreshSuffix);
    }
    m_freshMark = UniqueFd();
}

bool SealedDatabase::CreateWorkingCopy(const QDateTime& now) {
    m_trouble = Trouble::System;
    const bool made = guardedRun(m_prompt, QStringLiteral("cSystem.CreateUser"), [&] {
        m_database.close();
        ClearUnfinished();
        m_sealedMark.clear();
        m_foreignFile.clear();
        startWorkingCopy(Origin::New);
        QFile::remove(m_tmpFile);
        try {
            m_database.create(m_tmpFile, GetAccessDBSec(false, QString()));
            createSchema(m_database, now);
            m_database.close();
        } catch (...) {
            DiscardWorkingCopy();
            throw;
        }
    });
    if (made) {
        m_trouble = Trouble::None;
    }
    return made;
}

/// A key change that was cut short leaves two working copies of one session; the user's record told
/// which of them counts, and that one is open now.
void SealedDatabase::removeRelatives() {
    const QFileInfo mine(m_tmpFile);
    if (!m_tmpFile.endsWith(kWorkingSuffix)) {
        return;
    }
    const QString family = familyOf(m_tmpFile);
    const QDir folder = mine.dir();
    for (const QString& name :
         folder.entryList({family + u'*' + kWorkingSuffix}, QDir::Files | QDir::Hidden)) {
        if (name != mine.fileName() && familyOf(name) == family &&
            isGone(journalOf(folder.filePath(name)))) {
            QFile::remove(folder.filePath(name));
        }
    }
}

void SealedDatabase::GetResumeTempFile(const QString& path) {
    m_tmpFile = path;
    KeepWorkingCopy();
    m_origin = Origin::Resumed;
    m_sealedMark.clear();
    m_foreignFile.clear();
    m_wasConnected = false;
}

bool SealedDatabase::DiscardWorkingCopy() {
    m_database.close();
    return m_tmpFile.isEmpty() || (!Database::isHeldElsewhere(m_tmpFile) && removeWorkingCopy());
}

}  // namespace keeper
