// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "crypto/cryptor3.h"

#include <algorithm>
#include <array>
#include <new>

#include "crypto/code_page.h"
#include "crypto/hex_display.h"
#include "crypto/secure_wipe.h"

namespace keeper {
namespace {

constexpr std::size_t stopInterval = 64 * 1024;
constexpr std::size_t longestKey = 32;

constexpr bool isLegalSize(int bits) {
    return bits >= 128 && bits <= 256 && bits % 32 == 0;
}

constexpr std::int32_t arrayError(int value) {
    return static_cast<std::int32_t>(0x80040000U + static_cast<std::uint32_t>(value));
}

std::size_t checkedBlockBytes(int blockBits, const QString& operation) {
    if (!isLegalSize(blockBits)) {
        throw CryptorError(arrayError(1), operation, QStringLiteral("invalid block bits"));
    }
    return static_cast<std::size_t>(blockBits) / 8;
}

}  // namespace

CryptorError currentCryptorError() {
    try {
        throw;
    } catch (const CryptorError& error) {
        return error;
    } catch (const std::bad_alloc&) {
        return {7, QStringLiteral("AES"), QStringLiteral("内存不足。")};
    } catch (const std::exception& error) {
        return {0, QStringLiteral("AES"), QString::fromUtf8(error.what())};
    }
}

Cryptor3::Cryptor3(CryptorHost& host, unsigned paths)
    : m_host(host), m_implementation(rijndael::selectImplementation(paths)) {}

Cryptor3::~Cryptor3() {
    m_key.wipe();
}

int Cryptor3::sizeForKey(qsizetype characters) {
    return static_cast<int>(std::clamp((characters + 3) / 4 * 32, qsizetype{128}, qsizetype{256}));
}

int Cryptor3::SetCipherKeyString(QStringView key, int keyBits, int blockBits, bool isHex) {
    std::vector<std::uint8_t> bytes;
    const WipeGuard guard(bytes);
    if (!isHex || HexDisplayToBytes(key, bytes) != keyBits / 8) {
        secureWipe(bytes);
        bytes = ansiBytes(key);
    }
    std::array<std::uint8_t, longestKey> padded{};
    std::copy_n(bytes.begin(), std::min(bytes.size(), padded.size()), padded.begin());
    int result = 0;
    try {
        SetCipherKey(padded, keyBits, blockBits);
    } catch (const CryptorError&) {
        result = 1;
    }
    secureWipe(padded.data(), padded.size());
    return result;
}

void Cryptor3::SetCipherKey(std::span<const std::uint8_t> keyBytes, int keyBits, int blockBits) {
    const QString operation = QStringLiteral("AES.SetCipherKey");
    if (!isLegalSize(keyBits)) {
        throw CryptorError(1, operation,
                           QStringLiteral("AES.SetCipherKey - Illegal KeyBits Value"));
    }
    if (!isLegalSize(blockBits)) {
        throw CryptorError(1, operation,
                           QStringLiteral("AES.SetCipherKey - Illegal BlockBits Value"));
    }
    rijndael::expandKey(m_key, keyBytes.first(static_cast<std::size_t>(keyBits) / 8),
                        blockBits / 32);
}

void Cryptor3::requireKey() const {
    if (m_key.rounds == 0) {
        throw CryptorError(91, QStringLiteral("AES"), QStringLiteral("尚未设置密钥。"));
    }
}

void Cryptor3::throwIfStopped(bool decrypt) {
    if (p_stopRequested()) {
        p_stopRequested(false);
        throw CryptorError(
            1, QStringLiteral("AES"),
            decrypt ? QStringLiteral("解密运算已终止。") : QStringLiteral("加密运算已终止。"));
    }
}

void Cryptor3::cipherBlock(int columns, bool decrypt, std::span<const std::uint8_t> source,
                           std::span<std::uint8_t> destination, int p, int q) {
    struct Context {
        Cryptor3& cryptor;
        bool decrypt;
    };
    requireKey();
    const auto bytes = static_cast<std::size_t>(columns) * 4;
    if (p < 0 || q < 0 || source.size() < bytes || destination.size() < bytes ||
        static_cast<std::size_t>(p) > source.size() - bytes ||
        static_cast<std::size_t>(q) > destination.size() - bytes) {
        throw CryptorError(9, QStringLiteral("AES"), QStringLiteral("下标越界。"));
    }
    Context context{*this, decrypt};
    rijndael::cipherBlockByRounds(
        m_key, columns, decrypt, source.data() + p, destination.data() + q,
        [](void* state) {
            const auto* owner = static_cast<const Context*>(state);
            owner->cryptor.throwIfStopped(owner->decrypt);
        },
        &context);
}

void Cryptor3::BlockEncrypt(std::span<const std::uint8_t> source,
                            std::span<std::uint8_t> destination, int p, int q) {
    cipherBlock(4, /*decrypt=*/false, source, destination, p, q);
}
void Cryptor3::BlockDecrypt(std::span<const std::uint8_t> source,
                            std::span<std::uint8_t> destination, int p, int q) {
    cipherBlock(4, /*decrypt=*/true, source, destination, p, q);
}
void Cryptor3::Block160Encrypt(std::span<const std::uint8_t> source,
                               std::span<std::uint8_t> destination, int p, int q) {
    cipherBlock(5, /*decrypt=*/false, source, destination, p, q);
}
void Cryptor3::Block160Decrypt(std::span<const std::uint8_t> source,
                               std::span<std::uint8_t> destination, int p, int q) {
    cipherBlock(5, /*decrypt=*/true, source, destination, p, q);
}
void Cryptor3::Block192Encrypt(std::span<const std::uint8_t> source,
                               std::span<std::uint8_t> destination, int p, int q) {
    cipherBlock(6, /*decrypt=*/false, source, destination, p, q);
}
void Cryptor3::Block192Decrypt(std::span<const std::uint8_t> source,
                               std::span<std::uint8_t> destination, int p, int q) {
    cipherBlock(6, /*decrypt=*/true, source, destination, p, q);
}
void Cryptor3::Block224Encrypt(std::span<const std::uint8_t> source,
                               std::span<std::uint8_t> destination, int p, int q) {
    cipherBlock(7, /*decrypt=*/false, source, destination, p, q);
}
void Cryptor3::Block224Decrypt(std::span<const std::uint8_t> source,
                               std::span<std::uint8_t> destination, int p, int q) {
    cipherBlock(7, /*decrypt=*/true, source, destination, p, q);
}
void Cryptor3::Block256Encrypt(std::span<const std::uint8_t> source,
                               std::span<std::uint8_t> destination, int p, int q) {
    cipherBlock(8, /*decrypt=*/false, source, destination, p, q);
}
void Cryptor3::Block256Decrypt(std::span<const std::uint8_t> source,
                               std::span<std::uint8_t> destination, int p, int q) {
    cipherBlock(8, /*decrypt=*/true, source, destination, p, q);
}

void Cryptor3::cipherBlocks(const rijndael::KeySchedule& key, int columns, bool decrypt,
                            const std::uint8_t* source, std::uint8_t* destination,
                            std::size_t bytes) {
    const auto index = static_cast<std::size_t>(columns - 4);
    const auto function =
        decrypt ? m_implementation.decrypt[index] : m_implementation.encrypt[index];
    const std::uint32_t* roundKeys = decrypt ? key.reverse.data() : key.forward.data();
    const std::size_t blockBytes = static_cast<std::size_t>(columns) * 4;
    while (bytes > 0) {
        const std::size_t blocks = std::min(bytes, stopInterval) / blockBytes;
        function(roundKeys, key.rounds, source, destination, blocks);
        throwIfStopped(decrypt);
        source += blocks * blockBytes;
        destination += blocks * blockBytes;
        bytes -= blocks * blockBytes;
    }
}

void Cryptor3::ArrayEncrypt(std::span<const std::uint8_t> plaintext,
                            std::vector<std::uint8_t>& ciphertext, bool appendSize, int blockBits) {
    const std::size_t block = checkedBlockBytes(blockBits, QStringLiteral("AES.ArrayEncrypt"));
    requireKey();
    const std::size_t length = plaintext.size();
    const std::size_t rest = length % block;
    const std::size_t whole = length - rest;
    ciphertext.assign((length + (appendSize ? block : block - 1)) / block * block, 0);
    cipherBlocks(m_key, blockBits / 32, /*decrypt=*/false, plaintext.data(), ciphertext.data(),
                 whole);
    if (whole == ciphertext.size()) {
        return;
    }
    if (appendSize) {
        ciphertext.back() = static_cast<std::uint8_t>(rest);
    }
    std::uint8_t* last = ciphertext.data() + whole;
    std::copy_n(plaintext.data() + whole, rest, last);
    cipherBlocks(m_key, blockBits / 32, /*decrypt=*/false, last, last, block);
}

void Cryptor3::ArrayDecrypt(std::vector<std::uint8_t>& plaintext,
                            std::span<const std::uint8_t> ciphertext, bool appendSize,
                            int blockBits) {
    const QString operation = QStringLiteral("AES.ArrayDecrypt");
    const std::size_t block = checkedBlockBytes(blockBits, operation);
    const std::size_t length = ciphertext.size();
    if (length % block != 0) {
        throw CryptorError(arrayError(4), operation,
                           QStringLiteral("ciphertext size is not a multiple of block size"));
    }
    requireKey();
    plaintext.resize(length);
    cipherBlocks(m_key, blockBits / 32, /*decrypt=*/true, ciphertext.data(), plaintext.data(),
                 length);
    if (!appendSize) {
        return;
    }
    if (length == 0 || plaintext.back() >= block) {
        throw CryptorError(arrayError(3), operation, QStringLiteral("incorrect length field"));
    }
    // An empty plaintext stays one block of zeros; the callers know.
    if (const std::size_t kept = length - block + plaintext.back(); kept > 0) {
        plaintext.resize(kept);
    }
}

void Cryptor3::showFailure(const QString& operation, const CryptorError& error) {
    m_host.showMessage(CryptorHost::Severity::Critical,
                       QStringLiteral("[%1]AES.%2:\r\n%3")
                           .arg(QString::number(error.number()), operation, error.description()));
}

QString Cryptor3::EncryptString(const QString& plaintext, const QString& key) {
    if (plaintext.isEmpty() || key.isEmpty()) {
        return plaintext;
    }
    try {
        const int bits = sizeForKey(key.size());
        std::vector<std::uint8_t> plain = ansiBytes(plaintext);
        const WipeGuard guard(plain);
        std::vector<std::uint8_t> cipher;
        const ForgetKey forget(*this);
        SetCipherKeyString(key, bits, bits, /*isHex=*/false);
        ArrayEncrypt(plain, cipher, /*appendSize=*/false, bits);
        return BytesToHexDisplay(cipher, bits / 8);
    } catch (...) {
        showFailure(QStringLiteral("EncryptString"), currentCryptorError());
        return {};
    }
}

QString Cryptor3::DecryptString(const QString& ciphertext, const QString& key) {
    if (ciphertext.isEmpty() || key.isEmpty()) {
        return ciphertext;
    }
    try {
        const int bits = sizeForKey(key.size());
        std::vector<std::uint8_t> cipher;
        if (HexDisplayToBytes(ciphertext, cipher) == 0) {
            return {};
        }
        std::vector<std::uint8_t> plain;
        const WipeGuard guard(plain);
        const ForgetKey forget(*this);
        SetCipherKeyString(key, bits, bits, /*isHex=*/false);
        ArrayDecrypt(plain, cipher, /*appendSize=*/false, bits);
        QString text = ansiText(plain);
        if (text.endsWith(QChar(u'\0'))) {
            text.truncate(text.indexOf(QChar(u'\0')));
        }
        return text;
    } catch (...) {
        showFailure(QStringLiteral("DecryptString"), currentCryptorError());
        return {};
    }
}

}  // namespace keeper
