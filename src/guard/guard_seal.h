// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QDate>
#include <QString>
#include <cstdint>

#include "crypto/cryptor3.h"
#include "crypto/cryptor4.h"
#include "crypto/cryptor_host.h"
#include "guard/hardware_tag.h"

namespace keeper {

class Random;

/// The pair of texts stored beside a value, by which an edit of the value by hand is noticed.
struct Seal {
    /// The random password that wraps the digest, itself under a public-key table entry.
    QString password;
    /// SHA-1 of the value's text, enciphered under that password.
    QString digest;
};

/// Makes seals and tests them. The two exponents, the modulus and the key table of Cryptor4 decide
/// which databases a build can read: they never change.
class SealMaker {
  public:
    static constexpr int kMaxDays = 32767;

    explicit SealMaker(Random& random);

    /// A fresh seal, tested before it is returned: a seal that does not hold would condemn the
    /// database at the next login. Throws KeeperError when none can be made.
    [[nodiscard]] Seal make(const QString& text, int keyIndex);
    [[nodiscard]] bool holds(const Seal& seal, const QString& text, int keyIndex);

    // The texts that seals stand for. REQUIRES: 0 <= days <= kMaxDays.
    [[nodiscard]] QString branchDaysText(int days, const QDate& end) const;
    [[nodiscard]] QString originDaysText(int days, const QDate& end,
                                         const HardwareTag& origin) const;
    [[nodiscard]] static QString versionText(const QString& version, const HardwareTag& origin);

  private:
    /// The ciphers of the seals work on short texts: they neither yield nor speak to anybody. What
    /// they would say of a text that somebody edited is said by the verdict of the guard.
    class SilentHost final : public CryptorHost {
      public:
        void showMessage(Severity /*severity*/, const QString& /*text*/) override {}
        void turnEventLoop() override {}
    };

    SilentHost m_host;
    Cryptor3 m_aes;
    mutable Cryptor4 m_codec;
};

}  // namespace keeper
