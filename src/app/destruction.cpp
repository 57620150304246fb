// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/destruction.h"

#include <sys/stat.h>

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <optional>

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
const QString kIdentity = QStringLiteral("sealedIdentity");
const QString kWorking = QStringLiteral("workingCopy");
const QString kFormer = QStringLiteral("formerWorkingCopy");
const QString kWithFolder = QStringLiteral("deletesFolder");

const QString kWhere = QStringLiteral("cSystem.ClearUser");

/// Tells a file from another one that is put in its place later; empty when there is none.
QString identityOf(const QString& path) {
    struct stat status {};
    if (::stat(QFile::encodeName(path).constData(), &status) != 0) {
        return {};
    }
    return QStringLiteral("%1:%2:%3.%4")
        .arg(status.st_ino)
        .arg(status.st_size)
        .arg(status.st_mtim.tv_sec)
        .arg(status.st_mtim.tv_nsec);
}

QString digestOf(const QString& folder) {
    const QByteArray digest = QCryptographicHash::hash(folder.toUtf8(), QCryptographicHash::Sha1);
    return QString::fromLatin1(digest.toHex().first(16));
}

}  // namespace

void Destruction::destroy(System& system, bool deletesFolder) {
    Note note;
    note.privateFolder = system.p_privateFolder();
    note.path = notePath(note.privateFolder);
    note.userName = system.p_userName();
    note.sealedFile = system.p_kvdbFile();
    note.sealedIdentity = identityOf(note.sealedFile);
    note.workingCopies = {system.p_tmpFile(), system.user().p_activeFile()};
    note.deletesFolder = deletesFolder;
    // Told behind the deletions: a box that stands before them would be a way out of them.
    std::optional<Failure> unwritten;
    try {
        write(note);
    } catch (...) {
        unwritten = currentFailure();
    }
    forgetUser(note);
    system.ClearUser(deletesFolder);
    (void)guardedRun(m_prompt, kWhere, [&] { deleteFiles(note); });
    if (unwritten) {
        m_prompt.messageBox(failureText(*unwritten, kWhere), Prompt::Icon::Critical);
    }
}

QStringList Destruction::finishInterrupted() {
    QStringList told;
    const QDir state(stateFolder());
    const QStringList notes = state.entryList({QStringLiteral("destruction*.json")}, QDir::Files);
    for (const QString& name : notes) {
        try {
            const Note note = read(state.filePath(name));
            if (isSound(note)) {
                told << finish(note);
            } else {
                setFileAside(note.path, QStringLiteral("damaged"));
            }
        } catch (...) {
            told << failureText(currentFailure(), kWhere);
        }
    }
    return told;
}

QString Destruction::finish(const Note& note) {
    forgetUser(note);
    const QString now = identityOf(note.sealedFile);
    if (!note.sealedIdentity.isEmpty() && !now.isEmpty() && now != note.sealedIdentity) {
        deleteCopies(note);
        removeFile(note.path);
        return QStringLiteral(
                   "用户【%1】的密码数据库上次未能完全销毁，此后已换成另一个文件，"
                   "因此不再销毁：\r\n%2")
            .arg(note.userName, note.sealedFile);
    }
    deleteFiles(note);
    return QStringLiteral("用户【%1】的紧急销毁上次被中断，现已完成。").arg(note.userName);
}

QString Destruction::stateFolder() const {
    return m_folders.state + QStringLiteral("/morvane-keeper");
}

QString Destruction::notePath(const QString& privateFolder) const {
    return stateFolder() + QStringLiteral("/destruction-") + digestOf(privateFolder) +
           QStringLiteral(".json");
}

void Destruction::write(const Note& note) const {
    ensurePrivateFolder(QFileInfo(note.path).path());
    const QJsonObject object{{kUser, note.userName},
                             {kFolder, note.privateFolder},
                             {kSealed, note.sealedFile},
                             {kIdentity, note.sealedIdentity},
                             {kWorking, note.workingCopies.value(0)},
                             {kFormer, note.workingCopies.value(1)},
                             {kWithFolder, note.deletesFolder}};
    replaceFile(note.path, QJsonDocument(object).toJson());
}

Destruction::Note Destruction::read(const QString& path) {
    Note note;
    note.path = path;
    const QByteArray content = readWholeFile(path, kLargestNote).value_or(QByteArray());
    const QJsonObject object = QJsonDocument::fromJson(content).object();
    note.userName = object[kUser].toString();
    note.privateFolder = object[kFolder].toString();
    note.sealedFile = object[kSealed].toString();
    note.sealedIdentity = object[kIdentity].toString();
    note.workingCopies = {object[kWorking].toString(), object[kFormer].toString()};
    note.deletesFolder = object[kWithFolder].toBool();
    return note;
}

bool Destruction::isSound(const Note& note) const {
    const auto isOurs = [this](const QString& copy) {
        return copy.isEmpty() || QFileInfo(copy).absolutePath() == stateFolder();
    };
    return std::ranges::all_of(note.workingCopies, isOurs) && !note.userName.isEmpty() &&
           QDir::isAbsolutePath(note.privateFolder) &&
           privatefolder::userNameOf(note.privateFolder) == note.userName &&
           note.sealedFile == privatefolder::databaseOf(note.privateFolder);
}

void Destruction::forgetUser(const Note& note) {
    if (const auto user = m_users.GetUser(note.userName)) {
        m_users.RemoveUser(user);
    }
    const auto stored = m_users.makeUser();
    if (stored->ReadRegistry(note.userName) &&
        QFileInfo(stored->p_privateFolder()) != QFileInfo(note.privateFolder)) {
        // A database of the same name in another folder, which was opened by hand.
        m_users.AddNewUser(stored);
        return;
    }
    m_users.DeleteUser(note.userName);
}

void Destruction::deleteFiles(const Note& note) const {
    deleteCopies(note);
    // Second names that a lock has left of the files in the folder.
    QDir(stateFolder() + QStringLiteral("/folder-lock-") + digestOf(note.privateFolder))
        .removeRecursively();
    if (note.deletesFolder && QFileInfo(note.privateFolder).isDir()) {
        privatefolder::destroy(note.privateFolder);
    }
    removeFile(note.sealedFile);
    removeFile(note.path);
}

/// With their journals and, under the same first digits, what a change of the key has left.
void Destruction::deleteCopies(const Note& note) const {
    constexpr qsizetype kDigits = 32;
    const QDir state(stateFolder());
    for (const QString& copy : note.workingCopies) {
        const QString digits =
            QFileInfo(copy).fileName().first(std::min(kDigits, QFileInfo(copy).fileName().size()));
        if (digits.size() < kDigits || digits.contains(u'.')) {
            continue;
        }
        for (const QString& name : state.entryList({digits + u'*'}, QDir::Files | QDir::Hidden)) {
            removeFile(state.filePath(name));
        }
    }
}

}  // namespace keeper
