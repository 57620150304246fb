// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "crypto/cryptor5.h"

#include <algorithm>
#include <new>

#include "crypto/code_page.h"
#include "crypto/posix_file.h"
#include "crypto/progress_steps.h"
#include "crypto/replacement_file.h"
#include "crypto/secure_wipe.h"

namespace keeper {

namespace {

constexpr float kXorProgressStep = 0.5F;
/// Long enough that the loop over words pays, short enough to stay in the first-level cache.
constexpr std::size_t kPatternLength = 4096;
/// A stop takes effect within so many bytes. Also the piece that a file is worked in: it is still
/// in the cache when it is written.
constexpr std::size_t kPiece = std::size_t{64} * 1024;

/// Compiles to the widest exclusive-or of the target: the two arrays never overlap.
void xorBytes(std::uint8_t* __restrict data, const std::uint8_t* __restrict pattern,
              std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        data[i] ^= pattern[i];
    }
}

CryptorError raised() {
    try {
        throw;
    } catch (const CryptorError& error) {
        return error;
    } catch (const std::bad_alloc&) {
        return {7, QStringLiteral("cXOR"), QStringLiteral("内存不足。")};
    } catch (const std::exception& error) {
        return {0, QStringLiteral("cXOR"), QString::fromUtf8(error.what())};
    }
}

}  // namespace

/// One pass over a text that comes in pieces.
class Cryptor5::Run {
  public:
    Run(Cryptor5& owner, std::uint64_t size)
        : m_owner(owner), m_size(size), m_steps(size, /*unit=*/1, kXorProgressStep) {
        m_owner.requireKey();
        m_owner.m_isCalculating = true;
    }
    ~Run() { m_owner.m_isCalculating = false; }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

    /// False when a stop was requested; the request is then forgotten.
    bool take(std::span<std::uint8_t> piece);
    void finish() {
        if (m_steps.lastRaised() != 100.0F) {
            m_owner.report(100.0F);
        }
    }

  private:
    Cryptor5& m_owner;
    std::uint64_t m_size;
    std::uint64_t m_position = 0;
    /// Counts the index of the byte just done, one less than the bytes done.
    ProgressSteps m_steps;
};

bool Cryptor5::Run::take(std::span<std::uint8_t> piece) {
    while (!piece.empty()) {
        const std::uint64_t due = std::min(m_steps.nextPosition(), m_size - 1) + 1 - m_position;
        const auto stretch = static_cast<std::size_t>(
            std::min({due, std::uint64_t{piece.size()}, std::uint64_t{kPiece}}));
        const std::size_t cycle = m_owner.m_pattern.size() - m_owner.m_keyLength;
        const std::size_t phase = m_position % m_owner.m_keyLength;
        for (std::size_t done = 0; done < stretch; done += cycle) {
            xorBytes(piece.data() + done, m_owner.m_pattern.data() + phase,
                     std::min(cycle, stretch - done));
        }
        m_position += stretch;
        piece = piece.subspan(stretch);
        if (m_steps.reached(m_position - 1)) {
            m_owner.report(m_steps.lastRaised());
        }
        if (m_owner.m_stopRequested.exchange(false)) {
            return false;
        }
    }
    return true;
}

Cryptor5::~Cryptor5() {
    secureWipe(m_key);
    secureWipe(m_pattern);
}

void Cryptor5::key(const QString& value) {
    if (value == m_key) {
        return;
    }
    secureWipe(m_key);
    secureWipe(m_pattern);
    m_key = value;
    m_key.detach();
    m_keyLength = static_cast<std::size_t>(value.size());
    std::vector<std::uint8_t> bytes = ansiBytes(value);
    const WipeGuard wipe(bytes);
    const std::size_t repeats =
        m_keyLength == 0 ? 0 : (kPatternLength + m_keyLength - 1) / m_keyLength;
    std::vector<std::uint8_t> pattern;
    // One key more than the whole cycles, so that a stretch may begin inside the key.
    pattern.reserve((repeats + 1) * m_keyLength);
    for (std::size_t i = 0; m_keyLength > 0 && i <= repeats; ++i) {
        pattern.insert(pattern.end(), bytes.begin(),
                       bytes.begin() + static_cast<std::ptrdiff_t>(m_keyLength));
    }
    m_pattern.swap(pattern);
}

bool Cryptor5::EncryptByte(std::span<std::uint8_t> data, const QString& key) {
    return cipherBytes(data, key, "EncryptByte");
}

bool Cryptor5::DecryptByte(std::span<std::uint8_t> data, const QString& key) {
    return cipherBytes(data, key, "DecryptByte");
}

bool Cryptor5::cipherBytes(std::span<std::uint8_t> data, const QString& key,
                           const char* operation) {
    try {
        if (!key.isEmpty()) {
            this->key(key);
        }
        Run run(*this, data.size());
        if (!run.take(data)) {
            return false;
        }
        run.finish();
        return true;
    } catch (...) {
        showFailure(operation);
        return false;
    }
}

bool Cryptor5::EncryptFile(const QString& source, const QString& target, const QString& key) {
    return cipherFile(source, target, key, "EncryptFile");
}

bool Cryptor5::DecryptFile(const QString& source, const QString& target, const QString& key) {
    return cipherFile(source, target, key, "DecryptFile");
}

bool Cryptor5::cipherFile(const QString& source, const QString& target, const QString& key,
                          const char* operation) {
    m_stopRequested = false;
    try {
        if (!PosixFile::isUsable(source)) {
            throw CryptorError(static_cast<std::int32_t>(0x80040000U), QStringLiteral("cXOR"),
                               operation[0] == 'E' ? QStringLiteral("明文源文件无效！")
                                                   : QStringLiteral("密文源文件无效！"));
        }
        return runFile(source, target, key);
    } catch (...) {
        showFailure(operation);
        return false;
    }
}

/// The result grows beside the target, and takes its place when it is whole: neither a stop nor a
/// full disk costs the user a file. The source goes last.
bool Cryptor5::runFile(const QString& source, const QString& target, const QString& key) {
    PosixFile input = PosixFile::openSource(source);
    if (input.isAt(target)) {
        throw CryptorError(PosixFile::AccessRefused, QStringLiteral("cXOR"),
                           QStringLiteral("源文件与目标文件是同一个文件。"));
    }
    if (!key.isEmpty()) {
        this->key(key);
    }
    const auto size = static_cast<std::uint64_t>(input.size());
    Run run(*this, size);
    ReplacementFile output(target);
    std::vector<std::uint8_t> buffer(
        static_cast<std::size_t>(std::min<std::uint64_t>(size, kPiece)));
    const WipeGuard wipe(buffer);
    for (std::uint64_t left = size; left > 0;) {
        const auto piece = std::span(buffer).first(
            static_cast<std::size_t>(std::min<std::uint64_t>(left, buffer.size())));
        input.read(piece);
        if (!run.take(piece)) {
            return false;
        }
        output.file().write(piece);
        left -= piece.size();
    }
    run.finish();
    output.replaceTarget(input.mode(), ReplacementFile::Flush::Yes);
    try {
        PosixFile::deleteFile(source);
    } catch (const CryptorError&) {
        // The result is whole, which is what true says; the caller sees that the source stands.
    }
    return true;
}

QString Cryptor5::EncryptString(const QString& text, const QString& key) {
    if (text.isEmpty() || key.isEmpty()) {
        return text;
    }
    std::vector<std::uint8_t> bytes = ansiBytes(text);
    const WipeGuard wipe(bytes);
    return EncryptByte(bytes, key) ? ansiText(bytes) : QString();
}

QString Cryptor5::DecryptString(const QString& text, const QString& key) {
    if (text.isEmpty() || key.isEmpty()) {
        return text;
    }
    std::vector<std::uint8_t> bytes = ansiBytes(text);
    const WipeGuard wipe(bytes);
    return DecryptByte(bytes, key) ? ansiText(bytes) : QString();
}

void Cryptor5::requireKey() const {
    if (m_keyLength == 0) {
        // The index into the key is taken modulo its length.
        throw CryptorError(11, QStringLiteral("cXOR"), QStringLiteral("除数为零：密钥空。"));
    }
}

void Cryptor5::report(float percent) {
    if (DisplayProgress) {
        DisplayProgress(percent);
    }
    m_host.turnEventLoop();
}

/// REQUIRES: called inside a catch block.
void Cryptor5::showFailure(const char* operation) {
    const CryptorError error = raised();
    const QString hint = error.number() == 7 ? QStringLiteral("文件尺寸太大；") : QString();
    m_host.showMessage(CryptorHost::Severity::Critical,
                       QStringLiteral("[%1]cXOR.%2:%3\r\n%4")
                           .arg(QString::number(error.number()), QString::fromLatin1(operation),
                                hint, error.description()));
}

}  // namespace keeper
