// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "guard/guard_seal.h"

#include <span>

#include "crypto/cryptor2.h"
#include "crypto/secure_wipe.h"
#include "platform/random.h"
#include "store/failure.h"

namespace keeper {
namespace {

// The modulus is a prime above every count of days, and the exponents have no factor in common with
// modulus - 1: different counts then never share a power, so no count can be exchanged for another
// behind its seal.
constexpr std::uint16_t kSealModulus = 46337;
constexpr std::uint16_t kBranchExponent = 30211;
constexpr std::uint16_t kOriginExponent = 20507;
static_assert(kSealModulus > SealMaker::kMaxDays);
static_assert(kBranchExponent % 2 != 0 && kBranchExponent % 181 != 0);
static_assert(kOriginExponent % 2 != 0 && kOriginExponent % 181 != 0);
static_assert(kSealModulus - 1 == 256 * 181);

constexpr int kPasswordLength = 32;

QString dateText(const QDate& date) {
    return QString::number(date.year()) + QString::number(date.month()) +
           QString::number(date.day());
}

}  // namespace

SealMaker::SealMaker(Random& random)
    : m_aes(m_host),
      m_codec(m_host, [&random](std::span<std::uint8_t> bytes) { random.fill(bytes); }) {}

Seal SealMaker::make(const QString& text, int keyIndex) {
    Cryptor4::Key key{};
    Cryptor4::GetPGPKey(static_cast<std::int16_t>(keyIndex), key);
    const QString digest = Cryptor2::hashString(text);
    QString password = m_codec.RanPwd4PGP(kPasswordLength, kPasswordLength);
    const WipeGuard wipe(password);
    Seal seal{m_codec.Encode(password, key[0], key[2]), m_aes.EncryptString(digest, password)};
    if (!holds(seal, text, keyIndex)) {
        throw KeeperError(0, QStringLiteral("cSWProtect"),
                          QStringLiteral("数据库保护值封印失败。"));
    }
    return seal;
}

bool SealMaker::holds(const Seal& seal, const QString& text, int keyIndex) {
    Cryptor4::Key key{};
    Cryptor4::GetPGPKey(static_cast<std::int16_t>(keyIndex), key);
    QString password = m_codec.Decode(seal.password, key[1], key[2]);
    const WipeGuard wipe(password);
    // Under an empty password the cipher hands its text back unchanged: anybody could then put the
    // bare digest beside a value of his own.
    return password.size() == kPasswordLength &&
           m_aes.DecryptString(seal.digest, password) == Cryptor2::hashString(text);
}

QString SealMaker::branchDaysText(int days, const QDate& end) const {
    return QString::number(m_codec.Mult(days, kBranchExponent, kSealModulus)) + dateText(end);
}

QString SealMaker::originDaysText(int days, const QDate& end, const HardwareTag& origin) const {
    return origin.bios + QString::number(m_codec.Mult(days, kOriginExponent, kSealModulus)) +
           origin.cpu + dateText(end) + origin.disk;
}

QString SealMaker::versionText(const QString& version, const HardwareTag& origin) {
    return origin.bios + QLatin1Char(' ') + version + QLatin1Char(' ') + origin.cpu;
}

}  // namespace keeper
