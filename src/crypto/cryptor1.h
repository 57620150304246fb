// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <QStringView>
#include <functional>

#include "crypto/cryptor_host.h"

namespace keeper {

class PosixFile;

/// MD5 (RFC 1321) of texts, and of files by a rule of its own.
///
/// All digests are upper-case hexadecimal. That of a text is taken over its ANSI bytes.
class Cryptor1 {
  public:
    explicit Cryptor1(CryptorHost& host) : m_host(host) {}
    Cryptor1(const Cryptor1&) = delete;
    Cryptor1& operator=(const Cryptor1&) = delete;

    [[nodiscard]] static QString hashString(QStringView text);

    /// Digest of a file, for comparison with digests of this method only: a file whose size is a
    /// multiple of 64, and not 0, is digested without its last 64 bytes. Stored digests were made
    /// this way; every other file gets its true MD5.
    ///
    /// False, without a message and with `digest` as it was: the file cannot be read, has
    /// more than 268,435,456 bytes, or p_stopRequested was set meanwhile.
    [[nodiscard]] bool hashFile(const QString& path, QString& digest);

    /// True while hashFile() runs.
    [[nodiscard]] bool p_IsCalculating() const { return m_isCalculating; }
    [[nodiscard]] bool p_stopRequested() const { return m_stopRequested; }
    /// May be set from a signal handler or while the event loop turns.
    void p_stopRequested(bool value) { m_stopRequested = value; }

    /// Called with the percentage done, at steps of at least 0.5, before the event loop turns.
    std::function<void(float percent)> DisplayProgress;

  private:
    [[nodiscard]] QString digestOf(PosixFile& file);
    void raiseProgress(float percent);

    CryptorHost& m_host;
    volatile bool m_stopRequested = false;
    bool m_isCalculating = false;
};

}  // namespace keeper
