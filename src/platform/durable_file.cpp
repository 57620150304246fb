// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/durable_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <QDir>
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

/// Of every file that is being written, in any folder; then six characters of its own.
constexpr const char* freshPrefix = ".morvane-keeper-new-";

/// Deletes what kills have left of replacements: nobody holds a lock on it any more.
void sweep(const QString& folder) {
    const QDir place(folder);
    const QStringList left = place.entryList({QLatin1String(freshPrefix) + u'*'},
                                             QDir::Files | QDir::Hidden | QDir::NoSymLinks);
    for (const QString& file : left) {
        const QByteArray name = QFile::encodeName(place.filePath(file));
        const UniqueFd handle = openFile(name, O_RDWR | O_NOFOLLOW | O_NONBLOCK);
        if (handle.isValid() && ::flock(handle.get(), LOCK_EX | LOCK_NB) == 0) {
            ::unlink(name.constData());
        }
    }
}

/// Durable content under a name of its own, since another process may be writing the same file. It
/// goes away unless it is given another name.
class FreshFile {
  public:
    /// `path` is what a failure names.
    FreshFile(const QString& folder, const QByteArray& content, const QString& path) {
        sweep(folder);
        do {
            m_name = QFile::encodeName(folder) + '/' + freshPrefix + "XXXXXX";
            m_handle = UniqueFd(::mkostemp(m_name.data(), O_CLOEXEC));
            if (!m_handle.isValid()) {
                m_name.clear();
                fail("create a file for", path);
            }
            // Another process that sweeps may come between the two calls.
        } while ((::flock(m_handle.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) ||
                 ::access(m_name.constData(), F_OK) != 0);
        try {
            fill(content, path);
        } catch (...) {
            ::unlink(m_name.constData());
            throw;
        }
    }
    ~FreshFile() {
        if (!m_name.isEmpty()) {
            ::unlink(m_name.constData());
        }
    }
    FreshFile(const FreshFile&) = delete;
    FreshFile& operator=(const FreshFile&) = delete;

    /// Over what has the name now.
    [[nodiscard]] bool renameTo(const QByteArray& target) {
        bool isDone = ::rename(m_name.constData(), target.constData()) == 0;
        if (!isDone && (errno == ETXTBSY || errno == EBUSY || errno == EACCES)) {
            // Folders shared with another system may rename no file that is open.
            m_handle.reset();
            isDone = ::rename(m_name.constData(), target.constData()) == 0;
        }
        if (isDone) {
            setRenamed();
        }
        return isDone;
    }
    [[nodiscard]] const QByteArray& name() const { return m_name; }
    void setRenamed() { m_name.clear(); }

  private:
    void fill(const QByteArray& content, const QString& path) const {
        writeAll(m_handle.get(), content, path);
        if (retried([&] { return ::fsync(m_handle.get()); }) != 0) {
            fail("flush", path);
        }
        // Network file systems tell a full disk only at a close, which must not end the lock.
        if (::close(::fcntl(m_handle.get(), F_DUPFD_CLOEXEC, 0)) != 0) {
            fail("close", path);
        }
    }

    QByteArray m_name;
    UniqueFd m_handle;
};

/// The file that a link in the last step leads to, so that the link stays one.
QString behindLinks(const QString& path) {
    const QFileInfo file(path);
    if (!file.isSymLink()) {
        return path;
    }
    if (!file.isFile()) {
        fail("follow link", path, file.exists() ? EINVAL : ENOENT);
    }
    return file.canonicalFilePath();
}

/// False with EEXIST when the name is in use.
bool renameToFreeName(const QByteArray& from, const QByteArray& to) {
    if (::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE) == 0) {
        return true;
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return false;
    }
    // Not every file system knows the flag: an empty file takes the name first.
    if (!openFile(to, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0600).isValid()) {
        return false;
    }
    if (::rename(from.constData(), to.constData()) == 0) {
        return true;
    }
    const int number = errno;
    ::unlink(to.constData());
    errno = number;
    return false;
}

/// Gives `from` the first free name of the form PATH.SUFFIX, PATH.SUFFIX-2, ...
QString renameAside(const QByteArray& from, const QString& path, const QString& suffix) {
    for (int attempt = 1; attempt <= 1000; ++attempt) {
        QString target = path + u'.' + suffix;
        if (attempt > 1) {
            target += u'-' + QString::number(attempt);
        }
        if (renameToFreeName(from, QFile::encodeName(target))) {
            flushFolder(folderOf(path));
            return target;
        }
        if (errno != EEXIST) {
            break;
        }
    }
    fail("set aside", path);
}

}  // namespace

void ensureFolder(const QString& folder) {
    const QByteArray name = QFile::encodeName(folder);
    int result = ::mkdir(name.constData(), 0700);
    if (result != 0 && errno == ENOENT && folderOf(folder) != folder) {
        ensureFolder(folderOf(folder));
        result = ::mkdir(name.constData(), 0700);
    }
    if (result == 0) {
        // Files in it are only as durable as its own name.
        flushFolder(folderOf(folder));
        return;
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
        const int number = errno;
        // A link that leads nowhere stands for content that is away, on another disk perhaps.
        if (number == ENOENT && !QFileInfo(path).isSymLink()) {
            return std::nullopt;
        }
        fail("open", path, number);
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
    const QString target = behindLinks(path);
    FreshFile fresh(folderOf(target), content, path);
    if (!fresh.renameTo(QFile::encodeName(target))) {
        fail("rename", path);
    }
    flushFolder(folderOf(target));
}

QString copyAside(const QString& path, const QByteArray& content, const QString& suffix) {
    FreshFile fresh(folderOf(path), content, path);
    QString target = renameAside(fresh.name(), path, suffix);
    fresh.setRenamed();
    return target;
}

QString setFileAside(const QString& path, const QString& suffix) {
    return renameAside(QFile::encodeName(path), path, suffix);
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
