// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "crypto/posix_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <QFile>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <utility>

#include "crypto/cryptor_host.h"

namespace keeper {
namespace {

[[noreturn]] void raise(PosixFile::Failure failure, const QString& description) {
    throw CryptorError(failure, QStringLiteral("AES"), description);
}

[[noreturn]] void raiseSystemError(int error, PosixFile::Failure whenMissing) {
    switch (error) {
        case EACCES:
        case EPERM:
        case EROFS:
        case ETXTBSY:
            raise(PosixFile::AccessRefused, QStringLiteral("拒绝访问。"));
        case ENOENT:
            if (whenMissing == PosixFile::FileNotFound) {
                raise(PosixFile::FileNotFound, QStringLiteral("文件未找到。"));
            }
            [[fallthrough]];
        case ENOTDIR:
        case ELOOP:
        case ENAMETOOLONG:
            raise(PosixFile::PathNotFound, QStringLiteral("路径未找到。"));
        case EISDIR:
        case ENXIO:
            raise(PosixFile::NotAFile, QStringLiteral("路径不是普通文件。"));
        case EEXIST:
            raise(PosixFile::AlreadyExists, QStringLiteral("文件已存在。"));
        case ENOSPC:
        case EDQUOT:
        case EFBIG:
            raise(PosixFile::DiskFull, QStringLiteral("磁盘已满。"));
        default:
            raise(PosixFile::DeviceError, QStringLiteral("设备读写错误（%1）。").arg(error));
    }
}

template <typename Call>
auto uninterrupted(Call&& call) {
    for (;;) {
        const auto result = call();
        if (result >= 0) {
            return result;
        }
        if (errno != EINTR) {
            raiseSystemError(errno, PosixFile::PathNotFound);
        }
    }
}

std::unique_ptr<char, decltype(&std::free)> realPath(const QString& path) {
    return {::realpath(QFile::encodeName(path).constData(), nullptr), &std::free};
}

}  // namespace

PosixFile::PosixFile(const QString& path, int flags, mode_t mode, Failure whenMissing) {
    do {
        m_descriptor =
            ::open(QFile::encodeName(path).constData(), flags | O_CLOEXEC | O_NOCTTY, mode);
    } while (m_descriptor < 0 && errno == EINTR);
    if (m_descriptor < 0) {
        raiseSystemError(errno, whenMissing);
    }
    uninterrupted([&] { return ::fstat(m_descriptor, &m_status); });
}

PosixFile PosixFile::openSource(const QString& path) {
    // Not blocking: a named pipe must be refused below, not waited for.
    PosixFile file(path, O_RDONLY | O_NONBLOCK, 0, FileNotFound);
    if (!S_ISREG(file.m_status.st_mode)) {
        raise(NotAFile, QStringLiteral("路径不是普通文件。"));
    }
    ::posix_fadvise(file.m_descriptor, 0, 0, POSIX_FADV_SEQUENTIAL);
    return file;
}

PosixFile PosixFile::openTarget(const QString& path, mode_t mode) {
    // Not blocking, as above.
    PosixFile file(path, O_WRONLY | O_CREAT | O_NONBLOCK, mode, PathNotFound);
    if (!S_ISREG(file.m_status.st_mode)) {
        raise(NotAFile, QStringLiteral("路径不是普通文件。"));
    }
    return file;
}

PosixFile PosixFile::createBeside(const QString& target, QString& path) {
    struct stat status {};
    if (::stat(QFile::encodeName(target).constData(), &status) == 0 && !S_ISREG(status.st_mode)) {
        raise(NotAFile, QStringLiteral("路径不是普通文件。"));
    }
    const QString folder = target.left(target.lastIndexOf(QLatin1Char('/')) + 1);
    QByteArray name = QFile::encodeName(folder) + ".morvane-XXXXXX";
    PosixFile file;
    file.m_descriptor = uninterrupted([&] { return ::mkostemp(name.data(), O_CLOEXEC); });
    path = QFile::decodeName(name);
    uninterrupted([&] { return ::fstat(file.m_descriptor, &file.m_status); });
    return file;
}

PosixFile::~PosixFile() {
    abandon();
}

void PosixFile::abandon() noexcept {
    if (const int descriptor = std::exchange(m_descriptor, -1); descriptor >= 0) {
        ::close(descriptor);
    }
}

PosixFile::PosixFile(PosixFile&& other) noexcept
    : m_descriptor(std::exchange(other.m_descriptor, -1)), m_status(other.m_status) {}

PosixFile& PosixFile::operator=(PosixFile&& other) noexcept {
    std::swap(m_descriptor, other.m_descriptor);
    std::swap(m_status, other.m_status);
    return *this;
}

bool PosixFile::isSameFileAs(const PosixFile& other) const {
    return m_status.st_dev == other.m_status.st_dev && m_status.st_ino == other.m_status.st_ino;
}

bool PosixFile::isAt(const QString& path) const {
    struct stat status {};
    return ::stat(QFile::encodeName(path).constData(), &status) == 0 &&
           status.st_dev == m_status.st_dev && status.st_ino == m_status.st_ino;
}

void PosixFile::read(std::span<std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const auto got =
            uninterrupted([&] { return ::read(m_descriptor, bytes.data(), bytes.size()); });
        if (got == 0) {
            raise(PastTheEnd, QStringLiteral("读取时超出文件末尾。"));
        }
        bytes = bytes.subspan(static_cast<std::size_t>(got));
    }
}

void PosixFile::readAt(std::int64_t offset, std::span<std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const auto got = uninterrupted(
            [&] { return ::pread(m_descriptor, bytes.data(), bytes.size(), offset); });
        if (got == 0) {
            raise(PastTheEnd, QStringLiteral("读取时超出文件末尾。"));
        }
        bytes = bytes.subspan(static_cast<std::size_t>(got));
        offset += got;
    }
}

void PosixFile::write(std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const auto put =
            uninterrupted([&] { return ::write(m_descriptor, bytes.data(), bytes.size()); });
        bytes = bytes.subspan(static_cast<std::size_t>(put));
    }
}

void PosixFile::readAhead(std::int64_t offset, std::int64_t length) {
    ::posix_fadvise(m_descriptor, offset, length, POSIX_FADV_WILLNEED);
}

void PosixFile::beginWriteBack(std::int64_t offset, std::int64_t length) {
    ::sync_file_range(m_descriptor, offset, length, SYNC_FILE_RANGE_WRITE);
}

void PosixFile::close() {
    // After EINTR the descriptor is gone all the same.
    const int descriptor = std::exchange(m_descriptor, -1);
    if (descriptor >= 0 && ::close(descriptor) != 0 && errno != EINTR) {
        raiseSystemError(errno, PathNotFound);
    }
}

void PosixFile::remove(const QString& path) noexcept {
    const auto real = realPath(path);
    struct stat now {};
    if (real && S_ISREG(m_status.st_mode) && ::lstat(real.get(), &now) == 0 &&
        now.st_dev == m_status.st_dev && now.st_ino == m_status.st_ino) {
        ::unlink(real.get());
    }
}

bool PosixFile::isUsable(const QString& path) {
    struct stat status {};
    return ::stat(QFile::encodeName(path).constData(), &status) == 0 && S_ISREG(status.st_mode) &&
           status.st_size > 0;
}

void PosixFile::flushToDisk(const QString& path) {
    PosixFile(path, O_RDONLY, 0, FileNotFound).flush();
    flushFolderOf(path);
}

void PosixFile::flushFolderOf(const QString& path) {
    if (const auto real = realPath(path)) {
        const QString name = QFile::decodeName(real.get());
        PosixFile(name.left(qMax(name.lastIndexOf(QLatin1Char('/')), qsizetype{1})),
                  O_RDONLY | O_DIRECTORY, 0, FileNotFound)
            .flush();
    }
}

void PosixFile::flush() {
    if (::fsync(m_descriptor) != 0 && errno != EINVAL && errno != ENOTSUP) {
        raiseSystemError(errno, FileNotFound);
    }
}

void PosixFile::deleteFile(const QString& path) {
    uninterrupted([&] { return ::unlink(QFile::encodeName(path).constData()); });
}

void PosixFile::moveFile(const QString& from, const QString& to, bool keepExisting) {
    const QByteArray source = QFile::encodeName(from);
    const QByteArray target = QFile::encodeName(to);
    if (!keepExisting) {
        uninterrupted([&] { return ::rename(source.constData(), target.constData()); });
        return;
    }
    if (::renameat2(AT_FDCWD, source.constData(), AT_FDCWD, target.constData(), RENAME_NOREPLACE) ==
        0) {
        return;
    }
    if (errno != EINVAL && errno != ENOSYS) {
        raiseSystemError(errno, PathNotFound);
    }
    // Network file systems do not know that call: a second name never replaces one either.
    uninterrupted([&] { return ::link(source.constData(), target.constData()); });
    ::unlink(source.constData());
}

void PosixFile::setPermissions(const QString& path, mode_t mode) {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    uninterrupted(
        [&] { return ::chmod(QFile::encodeName(path).constData(), mode & 0777U & ~mask); });
}

}  // namespace keeper
