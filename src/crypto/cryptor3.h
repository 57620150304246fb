// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <QStringView>
#include <atomic>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "crypto/cryptor_host.h"
#include "crypto/rijndael.h"

namespace keeper {

/// The Rijndael cipher (Daemen and Rijmen, "AES Proposal: Rijndael", 1999; FIPS 197 for 128-bit
/// blocks) with keys and blocks of 128, 160, 192, 224 or 256 bits, and the three forms in which the
/// system keeps enciphered data: byte arrays, texts and files. Blocks are independent of each
/// other.
///
/// One instance holds one key schedule and serves one operation at a time. Round keys, which begin
/// with the key itself, are wiped at each new key, by forgetKey() and in the destructor; operations
/// that take a key forget it at their end. Enciphering without a key throws CryptorError 91.
class Cryptor3 {
  public:
    /// `paths`: the implementations of rijndael.h that may be used.
    explicit Cryptor3(CryptorHost& host, unsigned paths = rijndael::AllPaths);
    ~Cryptor3();
    Cryptor3(const Cryptor3&) = delete;
    Cryptor3& operator=(const Cryptor3&) = delete;

    /// Key from text: its ANSI bytes, cut or zero-padded to 32; with `isHex` its hexadecimal digits
    /// when they are exactly the key's bytes. 0 on success, 1 for illegal sizes, which leave the
    /// previous schedule in place.
    int SetCipherKeyString(QStringView key, int keyBits, int blockBits, bool isHex);
    void forgetKey() noexcept { m_key.wipe(); }

    /// One block from source[p] to destination[q]; the same buffer at the same offset is allowed.
    /// REQUIRES: the key was set with this block size, both blocks lie inside their spans.
    /// Throws CryptorError 1 when p_stopRequested was set; the flag is clear afterwards.
    void BlockEncrypt(std::span<const std::uint8_t> source, std::span<std::uint8_t> destination,
                      int p, int q);
    void BlockDecrypt(std::span<const std::uint8_t> source, std::span<std::uint8_t> destination,
                      int p, int q);
    void Block160Encrypt(std::span<const std::uint8_t> source, std::span<std::uint8_t> destination,
                         int p, int q);
    void Block160Decrypt(std::span<const std::uint8_t> source, std::span<std::uint8_t> destination,
                         int p, int q);
    void Block192Encrypt(std::span<const std::uint8_t> source, std::span<std::uint8_t> destination,
                         int p, int q);
    void Block192Decrypt(std::span<const std::uint8_t> source, std::span<std::uint8_t> destination,
                         int p, int q);
    void Block224Encrypt(std::span<const std::uint8_t> source, std::span<std::uint8_t> destination,
                         int p, int q);
    void Block224Decrypt(std::span<const std::uint8_t> source, std::span<std::uint8_t> destination,
                         int p, int q);
    void Block256Encrypt(std::span<const std::uint8_t> source, std::span<std::uint8_t> destination,
                         int p, int q);
    void Block256Decrypt(std::span<const std::uint8_t> source, std::span<std::uint8_t> destination,
                         int p, int q);

    /// Array form. With `appendSize` the last byte of the ciphertext's plaintext holds the length
    /// modulo the block. Errors throw CryptorError 0x80040001, 3 or 4; 0x80040002, an array that
    /// does not begin at index 0, cannot occur with spans. REQUIRES: the input does not lie in the
    /// vector that is filled.
    void ArrayEncrypt(std::span<const std::uint8_t> plaintext,
                      std::vector<std::uint8_t>& ciphertext, bool appendSize, int blockBits);
    void ArrayDecrypt(std::vector<std::uint8_t>& plaintext,
                      std::span<const std::uint8_t> ciphertext, bool appendSize, int blockBits);

    /// File form under the key that is set. A longer file at the target keeps its tail. On any
    /// failure false is returned and the target is deleted, unless the failure (wrong sizes, a file
    /// over 256 chunks, a refused access, source and target the same file, most wrong keys) was
    /// found before the target was opened: then nothing has changed. Only a refused access is shown
    /// to the user.
    bool FileEncrypt(const QString& source, const QString& target, int blockBits);
    bool FileDecrypt(const QString& target, const QString& source, int blockBits);

    /// Text form: upper-case hexadecimal of the array form without length, two blanks between
    /// blocks. An empty key returns the text unchanged. Failures are shown and give an empty text.
    [[nodiscard]] QString EncryptString(const QString& plaintext, const QString& key);
    [[nodiscard]] QString DecryptString(const QString& ciphertext, const QString& key);

    /// File form with the key from text. Failures are shown and give false; the source of a failed
    /// operation is never deleted. `deleteSource` deletes it when the target is safe on the disk.
    bool EncryptFile(const QString& source, const QString& target, const QString& key,
                     bool deleteSource);
    bool DecryptFile(const QString& source, const QString& target, const QString& key,
                     bool deleteSource);

    [[nodiscard]] bool p_IsCalculating() const { return m_isCalculating; }
    [[nodiscard]] bool p_stopRequested() const {
        return m_stopRequested.load(std::memory_order_relaxed);
    }
    /// May be set from a signal handler: the flag is looked at within 64 KiB of data.
    void p_stopRequested(bool value) { m_stopRequested.store(value, std::memory_order_relaxed); }
    /// Rounds of the current key, 0 before the first.
    [[nodiscard]] int Nr() const { return m_key.rounds; }
    /// What ended the last file operation, also where nothing was shown; empty after success.
    [[nodiscard]] const QString& lastFailure() const { return m_lastFailure; }
    /// Its number (those of PosixFile, or of the errors named above), 0 after success.
    [[nodiscard]] std::int32_t lastFailureNumber() const { return m_lastFailureNumber; }

    /// Called with the percentage done, at steps of at least 1.0, before the event loop turns.
    std::function<void(float percent)> DisplayProgress;

    /// Key and block bits for a key of so many characters.
    [[nodiscard]] static int sizeForKey(qsizetype characters);

  private:
    class FileRun;

    void SetCipherKey(std::span<const std::uint8_t> keyBytes, int keyBits, int blockBits);
    void SetCalculating(bool value) { m_isCalculating = value; }
    void requireKey() const;
    /// Throws when a stop was requested, and forgets the request.
    void throwIfStopped(bool decrypt);
    void cipherBlock(int columns, bool decrypt, std::span<const std::uint8_t> source,
                     std::span<std::uint8_t> destination, int p, int q);
    /// Whole blocks; a stop takes effect within 64 KiB.
    void cipherBlocks(const rijndael::KeySchedule& key, int columns, bool decrypt,
                      const std::uint8_t* source, std::uint8_t* destination, std::size_t bytes);
    /// With `mustLast` the target's content is on the disk when this has returned true.
    bool cipherFile(bool decrypt, const QString& source, const QString& target, int blockBits,
                    bool mustLast);
    bool cipherFileWithKey(bool decrypt, const QString& source, const QString& target,
                           const QString& key, bool deleteSource);
    void showFailure(const QString& operation, const CryptorError& error);

    CryptorHost& m_host;
    const rijndael::Implementation& m_implementation;
    rijndael::KeySchedule m_key;
    QString m_lastFailure;
    std::int32_t m_lastFailureNumber = 0;
    std::atomic<bool> m_stopRequested = false;
    bool m_isCalculating = false;

    static_assert(std::atomic<bool>::is_always_lock_free);
};

/// REQUIRES: called inside a catch block. What was thrown, with a number and a description.
[[nodiscard]] CryptorError currentCryptorError();

/// Lets a cryptor forget its key at the end of a scope.
class ForgetKey {
  public:
    explicit ForgetKey(Cryptor3& cryptor) : m_cryptor(cryptor) {}
    ~ForgetKey() { m_cryptor.forgetKey(); }
    ForgetKey(const ForgetKey&) = delete;
    ForgetKey& operator=(const ForgetKey&) = delete;

  private:
    Cryptor3& m_cryptor;
};

}  // namespace keeper
