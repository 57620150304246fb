// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/destruction.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

#include "app/private_folder.h"
#include "app/system.h"
#include "app/users.h"
#include "platform/durable_file.h"
#include "platform/user_folders.h"
#include "store/failure.h"

namespace keeper {
namespace {

constexpr qint64 kLargestNote = 64 * 1024;
const QString kUser = QStringLiteral("user");
const QString kFolder = QStringLiteral("privateFolder");
const QString kSealed = QStringLiteral("sealedFile");
const QString kWorking = QStringLiteral("workingCopy");
const QString kWithFolder = QStringLiteral("deletesFolder");

const QString kWhere = QStringLiteral("cSystem.ClearUser");

}  // namespace

void Destruction::destroy(System& system, bool deletesFolder) {
    const Note note{system.p_userName(), system.p_privateFolder(), system.p_kvdbFile(),
                    system.p_tmpFile(), deletesFolder};
    (void)guardedRun(m_prompt, kWhere, [&] { write(note); });
    forgetUser(note);
    system.ClearUser(deletesFolder);
    deleteFiles(note);
}

void Destruction::finishInterrupted() {
    (void)guardedRun(m_prompt, kWhere, [&] {
        const auto content = readWholeFile(notePath(), kLargestNote);
        if (!content) {
            return;
        }
        const QJsonObject object = QJsonDocument::fromJson(*content).object();
        const Note note{object[kUser].toString(), object[kFolder].toString(),
                        object[kSealed].toString(), object[kWorking].toString(),
                        object[kWithFolder].toBool()};
        if (!isSound(note)) {
            setFileAside(notePath(), QStringLiteral("damaged"));
            return;
        }
        forgetUser(note);
        deleteFiles(note);
    });
}

QString Destruction::stateFolder() const {
    return m_folders.state + QStringLiteral("/morvane-keeper");
}

QString Destruction::notePath() const {
    return stateFolder() + QStringLiteral("/destruction.json");
}

void Destruction::write(const Note& note) const {
    ensurePrivateFolder(QFileInfo(notePath()).path());
    const QJsonObject object{{kUser, note.userName},
                             {kFolder, note.privateFolder},
                             {kSealed, note.sealedFile},
                             {kWorking, note.workingCopy},
                             {kWithFolder, note.deletesFolder}};
    replaceFile(notePath(), QJsonDocument(object).toJson());
}

bool Destruction::isSound(const Note& note) const {
    const bool isWorkingCopyOurs =
        note.workingCopy.isEmpty() || QFileInfo(note.workingCopy).absolutePath() == stateFolder();
    return isWorkingCopyOurs && !note.userName.isEmpty() &&
           QDir::isAbsolutePath(note.privateFolder) &&
           privatefolder::userNameOf(note.privateFolder) == note.userName &&
           note.sealedFile == privatefolder::databaseOf(note.privateFolder);
}

void Destruction::forgetUser(const Note& note) {
    m_users.DeleteUser(note.userName);
    if (const auto user = m_users.GetUser(note.userName)) {
        m_users.RemoveUser(user);
    }
}

void Destruction::deleteFiles(const Note& note) {
    (void)guardedRun(m_prompt, kWhere, [&] {
        if (!note.workingCopy.isEmpty()) {
            removeFile(note.workingCopy);
            removeFile(note.workingCopy + QStringLiteral("-journal"));
        }
        if (note.deletesFolder && QFileInfo(note.privateFolder).isDir()) {
            privatefolder::destroy(note.privateFolder);
        }
        if (QFileInfo::exists(note.sealedFile)) {
            removeFile(note.sealedFile);
        }
        if (isDone(note)) {
            removeFile(notePath());
        }
    });
}

bool Destruction::isDone(const Note& note) {
    return !QFileInfo::exists(note.sealedFile) &&
           (note.workingCopy.isEmpty() || !QFileInfo::exists(note.workingCopy)) &&
           (!note.deletesFolder || !QFileInfo::exists(note.privateFolder));
}

}  // namespace keeper
