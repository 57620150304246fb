// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "store/sealed_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <system_error>
#include <vector>

#include "crypto/cryptor3.h"
#include "crypto/secure_wipe.h"
#include "platform/database.h"
#include "platform/random.h"
#include "platform/unique_fd.h"
#include "store/failure.h"

namespace keeper {
namespace {

/// The key of a sealed file has as many bits as the widest block.
constexpr std::int64_t kSealedBlock = 32;

const QString kSealingMark = QStringLiteral(".sealing-");

[[noreturn]] void fail(const char* step, const QString& path) {
    throw std::system_error(errno, std::generic_category(),
                            std::string(step) + " " + path.toStdString());
}

UniqueFd openFile(const QString& path, int flags) {
    UniqueFd file(::open(QFile::encodeName(path).constData(), flags | O_CLOEXEC));
    if (!file.isValid()) {
        fail("open", path);
    }
    return file;
}

void flush(const QString& path, int flags) {
    const UniqueFd handle = openFile(path, flags);
    // Some network file systems cannot flush a folder and say EINVAL.
    if (::fsync(handle.get()) != 0 && !((flags & O_DIRECTORY) != 0 && errno == EINVAL)) {
        fail("flush", path);
    }
}

std::int64_t sizeOf(const UniqueFd& file, const QString& path) {
    struct stat state {};
    if (::fstat(file.get(), &state) != 0) {
        fail("stat", path);
    }
    return state.st_size;
}

void readAt(const UniqueFd& file, const QString& path, std::int64_t offset,
            std::vector<std::uint8_t>& bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t got = ::pread(file.get(), bytes.data() + done, bytes.size() - done,
                                    offset + static_cast<std::int64_t>(done));
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            errno = got == 0 ? EIO : errno;
            fail("read", path);
        }
        done += static_cast<std::size_t>(got);
    }
}

/// Enciphered bytes are never a whole page of zeros: that is what was not written out.
bool hasPageOfZeros(const QString& path) {
    const UniqueFd file = openFile(path, O_RDONLY);
    const std::int64_t pageSize = DatabaseOptions{}.pageSize;
    const std::int64_t pages = sizeOf(file, path) / pageSize;
    const std::vector<std::uint8_t> zeros(static_cast<std::size_t>(pageSize));
    std::vector<std::uint8_t> page(zeros.size());
    for (std::int64_t i = 0; i < pages; ++i) {
        readAt(file, path, i * pageSize, page);
        if (page == zeros) {
            return true;
        }
    }
    return false;
}

/// The pages of a sealed file by its size: whole ones, and the one block behind them.
std::optional<std::int64_t> pagesIn(std::int64_t size, std::int64_t block) {
    const std::int64_t pageSize = DatabaseOptions{}.pageSize;
    if (size <= block || (size - block) % pageSize != 0) {
        return std::nullopt;
    }
    return (size - block) / pageSize;
}

/// A database is whole pages and pages are whole blocks, so the one block behind them is always the
/// enciphered block of zeros. It proves the key, and it is the only place of a sealed file that the
/// authentication codes of the pages do not reach.
UnsealResult endOf(Cryptor3& cipher, const QString& path, const QString& key) {
    const int bits = Cryptor3::sizeForKey(key.size());
    const auto blockSize = static_cast<std::size_t>(bits / 8);
    const UniqueFd file = openFile(path, O_RDONLY);
    const std::int64_t size = sizeOf(file, path);
    const auto block = static_cast<std::int64_t>(blockSize);
    if (!pagesIn(size, block)) {
        return UnsealResult::Malformed;
    }
    std::vector<std::uint8_t> last(blockSize);
    readAt(file, path, size - block, last);
    std::vector<std::uint8_t> expected;
    const ForgetKey forget(cipher);
    cipher.SetCipherKeyString(key, bits, bits, false);
    cipher.ArrayEncrypt(std::vector<std::uint8_t>(blockSize), expected, false, bits);
    if (last == expected) {
        return UnsealResult::Done;
    }
    return hasPageOfZeros(path) ? UnsealResult::Malformed : UnsealResult::NotUnderThisKey;
}

/// Takes the file away unless it was kept: on every way out of a failed operation.
class TemporaryFile {
  public:
    explicit TemporaryFile(QString path) : m_path(std::move(path)) {}
    ~TemporaryFile() {
        if (!m_path.isEmpty()) {
            QFile::remove(m_path);
        }
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    [[nodiscard]] const QString& path() const { return m_path; }
    void keep() { m_path.clear(); }

  private:
    QString m_path;
};

}  // namespace

QString makeFreshFile(const QString& folder, const QString& prefix, const QString& suffix,
                      Random& random) {
    std::array<std::uint8_t, 16> bytes{};
    random.fill(bytes);
    const QByteArray digits =
        QByteArray(reinterpret_cast<const char*>(bytes.data()), bytes.size()).toHex();
    QString path = folder + u'/' + prefix + QString::fromLatin1(digits) + suffix;
    createPrivateFile(path);
    return path;
}

void createPrivateFile(const QString& path) {
    const UniqueFd file(
        ::open(QFile::encodeName(path).constData(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0600));
    if (!file.isValid()) {
        fail("create", path);
    }
}

void removeLeftovers(const QString& folder, const QString& prefix, const QString& suffix) {
    QDir place(folder);
    const QStringList names = place.entryList(QDir::Files | QDir::Hidden | QDir::System);
    for (const QString& name : names) {
        if (name.startsWith(prefix) && name.endsWith(suffix)) {
            place.remove(name);
        }
    }
}

void moveDurably(const QString& from, const QString& to) {
    if (std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) != 0) {
        fail("rename", to);
    }
    flushFolderOf(to);
}

void flushFolderOf(const QString& path) {
    flush(QFileInfo(path).absolutePath(), O_RDONLY | O_DIRECTORY);
}

void sealFile(Cryptor3& cipher, const QString& source, const QString& target, const QString& key,
              Random& random) {
    // A link to a file elsewhere stays a link.
    const QString resolved = QFileInfo(target).canonicalFilePath();
    const QFileInfo place(resolved.isEmpty() ? target : resolved);
    const QString folder = place.absolutePath();
    const QString head = u'.' + place.fileName() + kSealingMark;
    removeLeftovers(folder, head, QString());
    TemporaryFile fresh(makeFreshFile(folder, head, QString(), random));
    if (!cipher.EncryptFile(source, fresh.path(), key, /*deleteSource=*/false)) {
        throw KeeperError(
            5, QStringLiteral("sealFile"),
            QStringLiteral("加密未能完成，原文件保持不变。\r\n") + cipher.lastFailure());
    }
    if (endOf(cipher, fresh.path(), key) != UnsealResult::Done) {
        throw KeeperError(5, QStringLiteral("sealFile"),
                          QStringLiteral("加密结果不完整，原文件保持不变。"));
    }
    flush(fresh.path(), O_RDONLY);
    // Renamed away, the file is no longer there to be removed on a failure of the folder's flush.
    moveDurably(fresh.path(), place.filePath());
    fresh.keep();
}

UnsealResult unsealFile(Cryptor3& cipher, const QString& source, const QString& target,
                        const QString& key) {
    TemporaryFile made(target);
    if (const UnsealResult end = endOf(cipher, source, key); end != UnsealResult::Done) {
        return end;
    }
    if (!cipher.DecryptFile(source, target, key, /*deleteSource=*/false)) {
        return UnsealResult::SystemFailed;
    }
    made.keep();
    return UnsealResult::Done;
}

QString sealedMark(const QString& path) {
    if (!QFileInfo(path).isFile()) {
        return {};
    }
    const UniqueFd file = openFile(path, O_RDONLY);
    struct stat state {};
    if (::fstat(file.get(), &state) != 0) {
        fail("stat", path);
    }
    if (!pagesIn(state.st_size, kSealedBlock)) {
        return {};
    }
    std::vector<std::uint8_t> last(kSealedBlock);
    readAt(file, path, state.st_size - kSealedBlock, last);
    const QByteArray digits =
        QByteArray(reinterpret_cast<const char*>(last.data()), kSealedBlock).toHex();
    return QStringLiteral("%1-%2-%3.%4")
        .arg(QString::fromLatin1(digits))
        .arg(state.st_size)
        .arg(state.st_mtim.tv_sec)
        .arg(state.st_mtim.tv_nsec);
}

bool isSameKeyByMark(const QString& left, const QString& right) {
    return left.isEmpty() || right.isEmpty() ||
           left.section(u'-', 0, 0) == right.section(u'-', 0, 0);
}

QString setSealedFileAside(const QString& path) {
    const QFileInfo file(path);
    const QByteArray from = QFile::encodeName(path);
    for (int i = 1;; ++i) {
        QString aside = file.absolutePath() + u'/' + file.completeBaseName() +
                        QStringLiteral("（另存 %1）.").arg(i) + file.suffix();
        const QByteArray to = QFile::encodeName(aside);
        if (::link(from.constData(), to.constData()) == 0) {
            return aside;
        }
        if (errno == EEXIST) {
            continue;
        }
        // No links here. A name that somebody takes in this moment is too much to fear.
        if (!QFileInfo::exists(aside) && std::rename(from.constData(), to.constData()) == 0) {
            return aside;
        }
        fail("set aside", path);
    }
}

QString foreignFileText(const QString& aside) {
    return QStringLiteral(
               "密码数据库文件在本次会话期间被换成了另一个文件（例如换回了备份，或在另一台电脑上保"
               "存过）。"
               "它没有被覆盖，已另存为：\r\n") +
           aside;
}

std::optional<std::int64_t> pagesOfSealedFile(const QString& path) {
    const auto pages = pagesIn(sizeOf(openFile(path, O_RDONLY), path), kSealedBlock);
    return hasPageOfZeros(path) ? std::nullopt : pages;
}

void unsealFirstPage(Cryptor3& cipher, const QString& source, const QString& target,
                     const QString& key) {
    const int bits = Cryptor3::sizeForKey(key.size());
    std::vector<std::uint8_t> sealed(static_cast<std::size_t>(DatabaseOptions{}.pageSize));
    readAt(openFile(source, O_RDONLY), source, 0, sealed);
    std::vector<std::uint8_t> page;
    const ForgetKey forget(cipher);
    cipher.SetCipherKeyString(key, bits, bits, false);
    cipher.ArrayDecrypt(page, sealed, false, bits);
    createPrivateFile(target);
    TemporaryFile made(target);
    QFile file(target);
    const auto size = static_cast<qint64>(page.size());
    if (!file.open(QIODevice::WriteOnly) ||
        file.write(reinterpret_cast<const char*>(page.data()), size) != size || !file.flush()) {
        errno = ENOSPC;
        fail("write", target);
    }
    made.keep();
}

}  // namespace keeper
