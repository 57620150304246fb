// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/linux/folder_pin.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <cerrno>
#include <system_error>
#include <utility>

#include "platform/durable_file.h"
#include "platform/linux/folder_links.h"

namespace keeper {
namespace {

constexpr unsigned kWriteRights = S_IWUSR | S_IWGRP | S_IWOTH;
constexpr unsigned kAllRights = 07777;
constexpr qint64 kLongestJournal = qint64{16} << 20;

QString pathOf(int handle) {
    return QFile::symLinkTarget(QStringLiteral("/proc/self/fd/%1").arg(handle));
}

UniqueFd openFolder(const QString& path) {
    return UniqueFd(::open(QFile::encodeName(path).constData(),
                           O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

/// By the number of the inode: a path may lead to another folder meanwhile.
quint64 inodeOf(int handle) {
    struct stat status {};
    return ::fstat(handle, &status) == 0 ? status.st_ino : 0;
}

bool isFlagged(int handle) {
    int flags = 0;
    return ::ioctl(handle, FS_IOC_GETFLAGS, &flags) == 0 && (flags & FS_IMMUTABLE_FL) != 0;
}

bool setImmutable(int handle, bool isWanted) {
    int flags = 0;
    if (::ioctl(handle, FS_IOC_GETFLAGS, &flags) != 0) {
        return false;
    }
    const int wanted = isWanted ? flags | FS_IMMUTABLE_FL : flags & ~FS_IMMUTABLE_FL;
    return wanted == flags || ::ioctl(handle, FS_IOC_SETFLAGS, &wanted) == 0;
}

unsigned rightsOf(int handle) {
    struct stat status {};
    return ::fstat(handle, &status) == 0 ? status.st_mode & kAllRights : 0;
}

bool setRights(int handle, unsigned rights) {
    if (rightsOf(handle) == rights) {
        return true;
    }
    if (::fchmod(handle, rights) != 0) {
        return false;
    }
    // File systems without rights of their own answer success, and nothing changes.
    errno = EOPNOTSUPP;
    return rightsOf(handle) == rights;
}

bool release(int handle, unsigned mode) {
    if (isFlagged(handle) && !setImmutable(handle, false)) {
        return false;
    }
    // A person's own change of the rights meanwhile stays.
    return rightsOf(handle) != (mode & ~kWriteRights) || setRights(handle, mode);
}

/// The folder with this inode: at `path`, or beside it under another name.
UniqueFd findFolder(const QString& path, quint64 inode) {
    UniqueFd found = openFolder(path);
    if (found.isValid() && inodeOf(found.get()) == inode) {
        return found;
    }
    QDirIterator siblings(QFileInfo(path).absolutePath(),
                          QDir::Dirs | QDir::Hidden | QDir::NoSymLinks | QDir::NoDotAndDotDot);
    while (siblings.hasNext()) {
        found = openFolder(siblings.next());
        if (found.isValid() && inodeOf(found.get()) == inode) {
            return found;
        }
    }
    return {};
}

}  // namespace

FolderPin::FolderPin(const QString& folder, QString journal)
    : m_journal(std::move(journal)), m_folders(collect(folder)) {
    ensurePrivateFolder(QFileInfo(m_journal).absolutePath());
    // Told before anything is taken: a crash may come between any two steps.
    replaceFile(m_journal, toJournal());
    try {
        takeAll();
    } catch (...) {
        giveBack();
        throw;
    }
}

void FolderPin::takeAll() {
    m_isImmutable = setImmutable(descriptor(), true);
    for (const Pinned& pinned : m_folders) {
        if (!take(pinned)) {
            throw std::system_error(errno, std::generic_category(),
                                    "lock " + pinned.path.toStdString());
        }
    }
}

void FolderPin::takeAnew(const QString& folder, const std::function<void()>& mend) {
    for (const Pinned& pinned : m_folders) {
        release(pinned.handle.get(), pinned.mode);
    }
    std::vector<Pinned> before;
    try {
        mend();
        before = std::exchange(m_folders, collect(folder));
        replaceFile(m_journal, toJournal());
    } catch (...) {
        if (!before.empty()) {
            m_folders.swap(before);
        }
        renew();
        throw;
    }
    takeAll();
}

FolderPin::~FolderPin() {
    giveBack();
}

bool FolderPin::take(const Pinned& pinned) const {
    return m_isImmutable ? setImmutable(pinned.handle.get(), true)
                         : setRights(pinned.handle.get(), pinned.mode & ~kWriteRights);
}

void FolderPin::giveBack() {
    bool isFree = true;
    for (const Pinned& pinned : m_folders) {
        isFree = release(pinned.handle.get(), pinned.mode) && isFree;
    }
    if (isFree && !m_keepsJournal) {
        QFile::remove(m_journal);
    }
}

std::vector<FolderPin::Pinned> FolderPin::collect(const QString& folder) {
    std::vector<Pinned> folders;
    const auto add = [&folders](const QString& path) {
        UniqueFd handle = openFolder(path);
        if (!handle.isValid()) {
            throw std::system_error(errno, std::generic_category(), "open " + path.toStdString());
        }
        // What somebody has made immutable is pinned already, and stays so at the unlocking.
        if (!isFlagged(handle.get())) {
            const unsigned mode = rightsOf(handle.get());
            folders.push_back({path, std::move(handle), mode});
        }
    };
    add(folder);
    if (folders.empty()) {
        throw std::system_error(EPERM, std::generic_category(), "lock " + folder.toStdString());
    }
    QDirIterator inner(folder, QDir::Dirs | QDir::Hidden | QDir::NoSymLinks | QDir::NoDotAndDotDot,
                       QDirIterator::Subdirectories);
    while (inner.hasNext()) {
        add(inner.next());
    }
    return folders;
}

void FolderPin::renew() const {
    for (const Pinned& pinned : m_folders) {
        take(pinned);
    }
}

std::vector<int> FolderPin::descriptors() const {
    std::vector<int> all;
    for (const Pinned& pinned : m_folders) {
        all.push_back(pinned.handle.get());
    }
    return all;
}

QByteArray FolderPin::toJournal() const {
    QJsonArray folders;
    for (const Pinned& pinned : m_folders) {
        folders.append(
            QJsonObject{{QStringLiteral("path"), pinned.path},
                        // As a text: a number of the format holds 53 bits.
                        {QStringLiteral("inode"), QString::number(inodeOf(pinned.handle.get()))},
                        {QStringLiteral("mode"), static_cast<int>(pinned.mode)}});
    }
    return QJsonDocument(folders).toJson();
}

QString FolderPin::mirrorOf(const QString& journal) {
    return QFileInfo(journal).absolutePath() + u'/' + QFileInfo(journal).completeBaseName();
}

bool FolderPin::heal(const QString& journal) {
    const auto content = readWholeFile(journal, kLongestJournal);
    if (!content) {
        return true;
    }
    bool isFree = true;
    QString outer;
    QString outerNow;
    for (const QJsonValue value : QJsonDocument::fromJson(*content).array()) {
        const QJsonObject row = value.toObject();
        QString path = row.value(QStringLiteral("path")).toString();
        if (!outer.isEmpty()) {
            path.replace(0, outer.size(), outerNow);
        }
        const UniqueFd folder =
            findFolder(path, row.value(QStringLiteral("inode")).toString().toULongLong());
        if (outer.isEmpty()) {
            if (!folder.isValid() && !QFileInfo(QFileInfo(path).absolutePath()).isDir()) {
                return true;  // its disk is not there; the journal waits for it
            }
            outer = path;
            outerNow = folder.isValid() ? pathOf(folder.get()) : path;
        }
        const auto mode = static_cast<unsigned>(row.value(QStringLiteral("mode")).toInt());
        isFree = (!folder.isValid() || release(folder.get(), mode)) && isFree;
    }
    const FolderLinks links(mirrorOf(journal));
    if (isFree && (outer.isEmpty() || links.restore(outerNow))) {
        links.remove();
        removeFile(journal);
    }
    return isFree;
}

}  // namespace keeper
