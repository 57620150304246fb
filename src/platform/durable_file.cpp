// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/durable_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <QFile>
#include <QFileInfo>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <system_error>

namespace keeper {
namespace {

[[noreturn]] void fail(const char* step, const QString& path, int number = errno) {
    throw std::system_error(number, std::generic_category(),
                            std::string(step) + " " + path.toStdString());
}

template <typename Call>
auto retried(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR) {
        result = call();
    }
    return result;
}

UniqueFd openFile(const QByteArray& name, int flags, mode_t mode = 0) {
    return UniqueFd(retried([&] { return ::open(name.constData(), flags | O_CLOEXEC, mode); }));
}

QString folderOf(const QString& path) {
    const qsizetype slash = path.lastIndexOf(u'/');
    return slash < 0 ? QStringLiteral(".") : slash == 0 ? QStringLiteral("/") : path.left(slash);
}

void flushFolder(const QString& folder) {
    const UniqueFd handle = openFile(QFile::encodeName(folder), O_RDONLY | O_DIRECTORY);
    // Some network file systems cannot flush a folder and say EINVAL; there is nothing more to do.
    if (!handle.isValid() ||
        (retried([&] { return ::fsync(handle.get()); }) != 0 && errno != EINVAL)) {
        fail("flush folder", folder);
    }
}

void writeAll(int handle, const QByteArray& content, const QString& path) {
    qsizetype done = 0;
    while (done < content.size()) {
        const ssize_t part = retried([&] {
            return ::write(handle, content.constData() + done,
                           static_cast<std::size_t>(content.size() - done));
        });
        if (part < 0) {
            fail("write", path);
        }
        done += part;
    }
}

}  // namespace

void ensureFolder(const QString& folder) {
    const QByteArray name = QFile::encodeName(folder);
    if (::mkdir(name.constData(), 0700) == 0) {
        return;
    }
    if (errno == ENOENT && folderOf(folder) != folder) {
        ensureFolder(folderOf(folder));
        if (::mkdir(name.constData(), 0700) == 0) {
            return;
        }
    }
    struct stat state {};
    const int number = errno;
    if (number != EEXIST || ::stat(name.constData(), &state) != 0) {
        fail("make folder", folder, number);
    }
    if (!S_ISDIR(state.st_mode)) {
        fail("make folder", folder, ENOTDIR);
    }
}

void ensurePrivateFolder(const QString& folder) {
    ensureFolder(folder);
    struct stat state {};
    const QByteArray name = QFile::encodeName(folder);
    // A file system without rights (FAT) keeps its own; the folder is usable all the same.
    if (::stat(name.constData(), &state) == 0 && (state.st_mode & 0077) != 0) {
        ::chmod(name.constData(), state.st_mode & 0700);
    }
}

std::optional<QByteArray> readWholeFile(const QString& path, qint64 limit) {
    // Without O_NONBLOCK a pipe in the file's place would hang the program.
    const UniqueFd handle = openFile(QFile::encodeName(path), O_RDONLY | O_NONBLOCK);
    if (!handle.isValid()) {
        if (errno == ENOENT) {
            return std::nullopt;
        }
        fail("open", path);
    }
    struct stat state {};
    if (::fstat(handle.get(), &state) != 0) {
        fail("look at", path);
    }
    if (!S_ISREG(state.st_mode)) {
        fail("open", path, EINVAL);
    }
    QByteArray content;
    QByteArray buffer(64 * 1024, Qt::Uninitialized);
    for (;;) {
        const ssize_t part = retried([&] {
            return ::read(handle.get(), buffer.data(), static_cast<std::size_t>(buffer.size()));
        });
        if (part < 0) {
            fail("read", path);
        }
        if (part == 0) {
            return content;
        }
        if (content.size() + part > limit) {
            fail("read", path, EFBIG);
        }
        content.append(buffer.constData(), part);
    }
}

void replaceFile(const QString& path, const QByteArray& content) {
    const QByteArray name = QFile::encodeName(path);
    const QByteArray fresh = name + ".new";
    // What a crash left behind: nobody else writes here, so the name is ours.
    ::unlink(fresh.constData());
    UniqueFd handle = openFile(fresh, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0600);
    if (!handle.isValid()) {
        fail("create", QFile::decodeName(fresh));
    }
    try {
        writeAll(handle.get(), content, path);
        if (retried([&] { return ::fsync(handle.get()); }) != 0) {
            fail("flush", path);
        }
        // Network file systems tell a full disk only here.
        if (::close(handle.release()) != 0) {
            fail("close", path);
        }
        if (::rename(fresh.constData(), name.constData()) != 0) {
            fail("rename", path);
        }
    } catch (...) {
        ::unlink(fresh.constData());
        throw;
    }
    flushFolder(folderOf(path));
}

QString setFileAside(const QString& path, const QString& suffix) {
    for (int attempt = 1; attempt <= 1000; ++attempt) {
        QString target = path + u'.' + suffix;
        if (attempt > 1) {
            target += u'-' + QString::number(attempt);
        }
        if (::renameat2(AT_FDCWD, QFile::encodeName(path).constData(), AT_FDCWD,
                        QFile::encodeName(target).constData(), RENAME_NOREPLACE) == 0) {
            flushFolder(folderOf(path));
            return target;
        }
        if (errno != EEXIST) {
            break;
        }
    }
    fail("set aside", path);
}

bool removeFile(const QString& path) {
    if (::unlink(QFile::encodeName(path).constData()) != 0) {
        if (errno == ENOENT) {
            return false;
        }
        fail("delete", path);
    }
    flushFolder(folderOf(path));
    return true;
}

FileLock::FileLock(const QString& path, std::chrono::milliseconds patience)
    : m_file(openFile(QFile::encodeName(path), O_RDWR | O_CREAT | O_NOFOLLOW, 0600)) {
    if (!m_file.isValid()) {
        fail("open lock", path);
    }
    const auto end = std::chrono::steady_clock::now() + patience;
    while (::flock(m_file.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR) {
            fail("lock", path);
        }
        if (std::chrono::steady_clock::now() >= end) {
            fail("lock", path, EWOULDBLOCK);
        }
        constexpr timespec pause{0, 5'000'000};
        ::nanosleep(&pause, nullptr);
    }
}

}  // namespace keeper
