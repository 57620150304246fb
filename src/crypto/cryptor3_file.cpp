// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later
//
// The file form. A piece of the source is read into one buffer, ciphered in place and written,
// while the system fetches what follows and flushes what went before.

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <new>

#include "crypto/cryptor3.h"
#include "crypto/posix_file.h"
#include "crypto/progress_steps.h"
#include "crypto/secure_wipe.h"

namespace keeper {
namespace {

constexpr std::int64_t largestChunk = 4 * 1024 * 1024;
constexpr std::int64_t mostChunks = 256;
/// The buffer. It stays inside the second-level cache, where a whole chunk would not.
constexpr std::int64_t largestPiece = 256 * 1024;

[[noreturn]] void raise(std::int32_t number, const QString& description) {
    throw CryptorError(number, QStringLiteral("AES"), description);
}

QString wrongLengthText() {
    return QStringLiteral("在密文文件中出现长度有误的字段，\r\n\r\n可能是解密密钥错误导致的。");
}

/// Memory that is not cleared first and is wiped last.
class Buffer {
  public:
    explicit Buffer(std::int64_t size) : m_bytes(static_cast<std::size_t>(size)) {
        constexpr std::size_t alignment = 4096;
        m_data.reset(static_cast<std::uint8_t*>(
            std::aligned_alloc(alignment, (m_bytes + alignment - 1) / alignment * alignment)));
        if (!m_data) {
            throw std::bad_alloc();
        }
    }
    ~Buffer() { secureWipe(m_data.get(), m_bytes); }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;
    [[nodiscard]] std::span<std::uint8_t> first(std::int64_t size) {
        return {m_data.get(), static_cast<std::size_t>(size)};
    }

  private:
    struct Free {
        void operator()(std::uint8_t* data) const { std::free(data); }
    };
    std::unique_ptr<std::uint8_t, Free> m_data;
    std::size_t m_bytes;
};

}  // namespace

/// One file operation. It works with a copy of the key, so that a handler of the event loop that
/// sets another one cannot spoil the file.
class Cryptor3::FileRun {
  public:
    FileRun(Cryptor3& owner, bool decrypt, const QString& source, const QString& target)
        : m_owner(owner),
          m_key(owner.m_key),
          m_decrypt(decrypt),
          m_sourcePath(source),
          m_targetPath(target) {}
    ~FileRun() { m_key.wipe(); }
    FileRun(const FileRun&) = delete;
    FileRun& operator=(const FileRun&) = delete;

    void run(int blockBits, bool mustLast);
    /// After a failure: closes both files, and deletes the target if it was opened.
    void abandon();

  private:
    void checkSource();
    void openTarget();
    void cipherAll();
    void cipherPiece(std::span<std::uint8_t> piece, std::int64_t offset, ProgressSteps& steps);
    void report(float percent);

    Cryptor3& m_owner;
    rijndael::KeySchedule m_key;
    bool m_decrypt;
    const QString& m_sourcePath;
    const QString& m_targetPath;
    PosixFile m_source;
    PosixFile m_target;
    bool m_isTargetOurs = false;
    int m_columns = 0;
    std::int64_t m_block = 0;
    /// Of the enciphered file, whether it is read or written.
    std::int64_t m_paddedLength = 0;
};

void Cryptor3::FileRun::run(int blockBits, bool mustLast) {
    if (blockBits < 128 || blockBits > 256 || blockBits % 32 != 0) {
        raise(static_cast<std::int32_t>(0x80040001U), QStringLiteral("字区大小的值不合法！"));
    }
    m_owner.requireKey();
    m_columns = blockBits / 32;
    m_block = blockBits / 8;
    m_source = PosixFile::openSource(m_sourcePath);
    checkSource();
    openTarget();
    cipherAll();
    m_source.close();
    if (mustLast) {
        // Here, not by its path: a target that may be written need not be readable.
        m_target.flush();
    }
    m_target.close();
}

/// All that can be known before the first byte is written is refused here, while an older target is
/// still whole.
void Cryptor3::FileRun::checkSource() {
    const std::int64_t length = m_source.size();
    m_paddedLength = m_decrypt ? length : (length + m_block) / m_block * m_block;
    if (m_decrypt && (length == 0 || length % m_block != 0)) {
        raise(1, QStringLiteral("加密文件的块大小有误！"));
    }
    const std::int64_t chunk = largestChunk / m_block * m_block;
    if (m_paddedLength > mostChunks * chunk) {
        raise(6, QStringLiteral("溢出：文件太大。"));
    }
    if (m_decrypt) {
        Buffer last(m_block);
        const auto bytes = last.first(m_block);
        m_source.readAt(length - m_block, bytes);
        m_owner.cipherBlocks(m_key, m_columns, m_decrypt, bytes.data(), bytes.data(), bytes.size());
        if (bytes.back() >= m_block) {
            raise(1, wrongLengthText());
        }
    }
}

void Cryptor3::FileRun::openTarget() {
    // What comes out of a sealed file is private until its owner says otherwise.
    const mode_t mode = m_decrypt ? S_IRUSR | S_IWUSR : (m_source.mode() & 0666U) | S_IWUSR;
    m_target = PosixFile::openTarget(m_targetPath, mode);
    if (m_target.isSameFileAs(m_source)) {
        raise(PosixFile::AccessRefused, QStringLiteral("源文件与目标文件是同一个文件。"));
    }
    m_isTargetOurs = true;
}

void Cryptor3::FileRun::cipherAll() {
    const std::int64_t piece = std::min(largestPiece / m_block * m_block, m_paddedLength);
    Buffer buffer(piece);
    const auto block = static_cast<std::uint64_t>(m_block);
    ProgressSteps steps(static_cast<std::uint64_t>(m_paddedLength), block, /*step=*/1.0F,
                        m_decrypt ? block - 1 : 0);
    const std::int64_t sourceLength = m_source.size();
    for (std::int64_t offset = 0; offset < m_paddedLength; offset += piece) {
        if (offset % largestChunk < piece) {
            m_source.readAhead(offset + piece, largestChunk);
            if (offset >= largestChunk) {
                m_target.beginWriteBack(offset - largestChunk, largestChunk);
            }
        }
        const std::span<std::uint8_t> bytes =
            buffer.first(std::min(piece, m_paddedLength - offset));
        const bool isLast = offset + piece >= m_paddedLength;
        const auto present = static_cast<std::size_t>(
            std::min(static_cast<std::int64_t>(bytes.size()), sourceLength - offset));
        m_source.read(bytes.first(present));
        std::ranges::fill(bytes.subspan(present), std::uint8_t{0});
        if (isLast && !m_decrypt) {
            bytes.back() = static_cast<std::uint8_t>(sourceLength % m_block);
        }
        cipherPiece(bytes, offset, steps);
        std::size_t kept = bytes.size();
        if (isLast) {
            if (steps.lastRaised() != 100.0F) {
                report(100.0F);
            }
            if (m_decrypt) {
                if (bytes.back() >= m_block) {
                    raise(1, wrongLengthText());
                }
                kept = kept - static_cast<std::size_t>(m_block) + bytes.back();
            }
        }
        m_target.write(bytes.first(kept));
    }
}

void Cryptor3::FileRun::cipherPiece(std::span<std::uint8_t> piece, std::int64_t offset,
                                    ProgressSteps& steps) {
    const std::int64_t end = offset + static_cast<std::int64_t>(piece.size());
    std::uint8_t* data = piece.data();
    while (offset < end) {
        const std::int64_t stretch =
            std::min(end, static_cast<std::int64_t>(steps.nextPosition())) - offset;
        m_owner.cipherBlocks(m_key, m_columns, m_decrypt, data, data,
                             static_cast<std::size_t>(stretch));
        data += stretch;
        offset += stretch;
        if (steps.reached(static_cast<std::uint64_t>(offset))) {
            report(steps.lastRaised());
        }
    }
}

void Cryptor3::FileRun::report(float percent) {
    if (m_owner.DisplayProgress) {
        m_owner.DisplayProgress(percent);
    }
    m_owner.m_host.turnEventLoop();
}

void Cryptor3::FileRun::abandon() {
    m_source = PosixFile();
    m_target.abandon();
    if (m_isTargetOurs) {
        m_target.remove(m_targetPath);
    }
}

bool Cryptor3::cipherFile(bool decrypt, const QString& source, const QString& target, int blockBits,
                          bool mustLast) {
    m_lastFailure.clear();
    m_lastFailureNumber = 0;
    FileRun run(*this, decrypt, source, target);
    SetCalculating(true);
    try {
        run.run(blockBits, mustLast);
        SetCalculating(false);
        return true;
    } catch (...) {
        const CryptorError error = currentCryptorError();
        m_lastFailure = error.description();
        m_lastFailureNumber = error.number();
        if (error.number() == PosixFile::AccessRefused) {
            m_host.showMessage(
                CryptorHost::Severity::Exclamation,
                QStringLiteral("[%1]AES.%2:\r\n%3")
                    .arg(QString::number(error.number()),
                         decrypt ? QStringLiteral("FileDecrypt") : QStringLiteral("FileEncrypt"),
                         decrypt ? QStringLiteral("密文文件拒绝访问，无法解密！")
                                 : QStringLiteral("明文文件拒绝访问，无法加密！")));
        }
    }
    SetCalculating(false);
    run.abandon();
    return false;
}

bool Cryptor3::FileEncrypt(const QString& source, const QString& target, int blockBits) {
    return cipherFile(/*decrypt=*/false, source, target, blockBits, /*mustLast=*/false);
}

bool Cryptor3::FileDecrypt(const QString& target, const QString& source, int blockBits) {
    return cipherFile(/*decrypt=*/true, source, target, blockBits, /*mustLast=*/false);
}

bool Cryptor3::cipherFileWithKey(bool decrypt, const QString& source, const QString& target,
                                 const QString& key, bool deleteSource) {
    p_stopRequested(false);
    try {
        if (!PosixFile::isUsable(source)) {
            raise(1, decrypt ? QStringLiteral("密文源文件无效！")
                             : QStringLiteral("明文源文件无效！"));
        }
        if (key.isEmpty()) {
            raise(2, decrypt ? QStringLiteral("解密密钥空！") : QStringLiteral("加密密钥空！"));
        }
        const int bits = sizeForKey(key.size());
        const ForgetKey forget(*this);
        SetCipherKeyString(key, bits, bits, /*isHex=*/false);
        if (!cipherFile(decrypt, source, target, bits, deleteSource)) {
            return false;
        }
        if (deleteSource) {
            PosixFile::flushFolderOf(target);
            PosixFile::deleteFile(source);
        }
        return true;
    } catch (...) {
        const CryptorError error = currentCryptorError();
        m_lastFailure = error.description();
        m_lastFailureNumber = error.number();
        showFailure(decrypt ? QStringLiteral("DecryptFile") : QStringLiteral("EncryptFile"), error);
        return false;
    }
}

bool Cryptor3::EncryptFile(const QString& source, const QString& target, const QString& key,
                           bool deleteSource) {
    return cipherFileWithKey(/*decrypt=*/false, source, target, key, deleteSource);
}

bool Cryptor3::DecryptFile(const QString& source, const QString& target, const QString& key,
                           bool deleteSource) {
    return cipherFileWithKey(/*decrypt=*/true, source, target, key, deleteSource);
}

}  // namespace keeper
