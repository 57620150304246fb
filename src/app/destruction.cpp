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
#include <QRegularExpression>
#include <algorithm>
#include <cerrno>
#include <exception>
#include <system_error>
#include <vector>

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

const QString kNoFile = QStringLiteral("none");
/// Characters of a working copy's own name, before the ending.
constexpr qsizetype kDigits = 32;

/// Tells a file from another one that is put in its place later. Throws when the disk cannot tell.
QString identityOf(const QString& path) {
    struct stat status {};
    if (::stat(QFile::encodeName(path).constData(), &status) != 0) {
        if (errno == ENOENT || errno == ENOTDIR) {
            return kNoFile;
        }
        throw std::system_error(errno, std::generic_category(), path.toStdString());
    }
    return QStringLiteral("%1:%2:%3.%4")
        .arg(status.st_ino)
        .arg(status.st_size)
        .arg(status.st_mtim.tv_sec)
        .arg(status.st_mtim.tv_nsec);
}

/// Steps that follow one another whatever becomes of each.
class Failures {
  public:
    template <typename Step>
    void run(Step&& step) {
        try {
            step();
        } catch (...) {
            m_thrown.push_back(std::current_exception());
        }
    }
    [[nodiscard]] std::vector<Failure> all() const {
        std::vector<Failure> told;
        for (const std::exception_ptr& thrown : m_thrown) {
            try {
                std::rethrow_exception(thrown);
            } catch (...) {
                told.push_back(currentFailure());
            }
        }
        return told;
    }
    void rethrowFirst() const {
        if (!m_thrown.empty()) {
            std::rethrow_exception(m_thrown.front());
        }
    }

  private:
    std::vector<std::exception_ptr> m_thrown;
};

/// A copy made by a change of the key has a second part behind a hyphen.
bool isWorkingCopy(const QString& fileName) {
    static const QRegularExpression form(QStringLiteral("^[0-9A-Fa-f]{%1}[-.]").arg(kDigits));
    return form.match(fileName).hasMatch();
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
    note.workingCopies = {QFileInfo(system.p_tmpFile()).fileName(),
                          QFileInfo(system.user().p_activeFile()).fileName()};
    note.deletesFolder = deletesFolder;
    // Told behind the deletions: a box that stands before them would be a way out of them.
    Failures failures;
    failures.run([&] { note.sealedIdentity = identityOf(note.sealedFile); });
    failures.run([&] { write(note); });
    forgetUser(note);
    failures.run([&] { deleteFiles(note); });
    system.ClearUser(deletesFolder);
    for (const Failure& failure : failures.all()) {
        m_prompt.messageBox(failureText(failure, kWhere), Prompt::Icon::Critical);
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
                if (const QString text = finish(note); !text.isEmpty()) {
                    told << text;
                }
            } else {
                setFileAside(note.path, QStringLiteral("damaged"));
                told << QStringLiteral("紧急销毁的记录已损坏，未据此删除任何文件：\r\n%1")
                            .arg(note.path);
            }
        } catch (...) {
            told << failureText(currentFailure(), kWhere);
        }
    }
    return told;
}

QString Destruction::finish(const Note& note) {
    forgetUser(note);
    if (!QFileInfo(QFileInfo(note.privateFolder).path()).isDir()) {
        // Perhaps a disk that is not there today; what is here goes now, and the note stays.
        deleteCopies(note);
        return {};
    }
    const QString now = identityOf(note.sealedFile);
    if (!note.sealedIdentity.isEmpty() && now != kNoFile && now != note.sealedIdentity) {
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
    // Names alone: the state folder may have another path by now.
    note.workingCopies = {QFileInfo(object[kWorking].toString()).fileName(),
                          QFileInfo(object[kFormer].toString()).fileName()};
    note.deletesFolder = object[kWithFolder].toBool();
    return note;
}

bool Destruction::isSound(const Note& note) {
    const auto isSoundCopy = [](const QString& copy) {
        return copy.isEmpty() || isWorkingCopy(copy);
    };
    return std::ranges::all_of(note.workingCopies, isSoundCopy) && !note.userName.isEmpty() &&
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
        !privatefolder::isSamePlace(stored->p_privateFolder(), note.privateFolder)) {
        // A database of the same name in another folder, which was opened by hand.
        m_users.AddNewUser(stored);
        return;
    }
    m_users.DeleteUser(note.userName);
}

void Destruction::deleteFiles(const Note& note) const {
    Failures failures;
    failures.run([&] { deleteCopies(note); });
    failures.run([&] { removeFile(note.sealedFile); });
    // Second names that a lock has left of the files in the folder.
    QDir(stateFolder() + QStringLiteral("/folder-lock-") + digestOf(note.privateFolder))
        .removeRecursively();
    if (note.deletesFolder) {
        failures.run([&] { privatefolder::destroy(note.privateFolder); });
    }
    failures.rethrowFirst();
    removeFile(note.path);
}

/// With their journals and, under the same first digits, what a change of the key has left.
void Destruction::deleteCopies(const Note& note) const {
    const QDir state(stateFolder());
    Failures failures;
    for (const QString& copy : note.workingCopies) {
        if (!isWorkingCopy(copy)) {
            continue;
        }
        const QStringList names =
            state.entryList({copy.first(kDigits) + u'*'}, QDir::Files | QDir::Hidden);
        for (const QString& name : names) {
            failures.run([&] { removeFile(state.filePath(name)); });
        }
    }
    failures.rethrowFirst();
}

}  // namespace keeper
