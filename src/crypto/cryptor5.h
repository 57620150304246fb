// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "crypto/cryptor_host.h"

namespace keeper {

class ProgressSteps;

/// The light cipher of user files: byte i of the text xor byte i mod n of the key.
///
/// The key's bytes are its ANSI bytes, but n is the number of its characters: with double-byte
/// characters the last bytes do not act. There is no header, and nothing tells a right key from a
/// wrong one. An instance serves one operation at a time; keys are wiped when they are replaced.
class Cryptor5 {
  public:
    explicit Cryptor5(CryptorHost& host) : m_host(host) {}
    ~Cryptor5();
    Cryptor5(const Cryptor5&) = delete;
    Cryptor5& operator=(const Cryptor5&) = delete;

    /// Sets the current key.
    void key(const QString& value);

    /// In place. An empty `key` leaves the current one in force. False when a stop was requested,
    /// which leaves the data half done, or when there is no key, which is shown.
    bool EncryptByte(std::span<std::uint8_t> data, const QString& key);
    bool DecryptByte(std::span<std::uint8_t> data, const QString& key);

    /// Success replaces the target in one step and always removes the source, after the target is
    /// safe on the disk. False, with a message unless it was a stop, leaves both as they were.
    bool EncryptFile(const QString& source, const QString& target, const QString& key);
    bool DecryptFile(const QString& source, const QString& target, const QString& key);

    /// The ANSI bytes of the text, enciphered and read as text again; it may hold any character.
    /// Empty text stays empty; an empty key returns the text unchanged.
    [[nodiscard]] QString EncryptString(const QString& text, const QString& key);
    [[nodiscard]] QString DecryptString(const QString& text, const QString& key);

    [[nodiscard]] bool p_IsCalculating() const { return m_isCalculating; }
    [[nodiscard]] bool p_stopRequested() const { return m_stopRequested; }
    /// May be set from a signal handler or while the event loop turns.
    void p_stopRequested(bool value) { m_stopRequested = value; }

    /// Called with the percentage done, at steps of at least 0.5, before the event loop turns.
    std::function<void(float percent)> DisplayProgress;

  private:
    class Run;

    bool cipherBytes(std::span<std::uint8_t> data, const QString& key, const char* operation);
    bool cipherFile(const QString& source, const QString& target, const QString& key,
                    const char* operation);
    bool runFile(const QString& source, const QString& target, const QString& key);
    void requireKey() const;
    void report(float percent);
    void showFailure(const char* operation);

    CryptorHost& m_host;
    QString m_key;
    /// The key's bytes that act, repeated so that long stretches need no look at its end.
    std::vector<std::uint8_t> m_pattern;
    std::size_t m_keyLength = 0;
    std::atomic<bool> m_stopRequested = false;
    bool m_isCalculating = false;
};

}  // namespace keeper
