// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "store/key_chain.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <stdexcept>

#include "crypto/cryptor1.h"
#include "crypto/cryptor2.h"
#include "crypto/cryptor3.h"
#include "crypto/secure_wipe.h"

namespace keeper {
namespace {

constexpr std::array<std::uint8_t, 90> kCodes{
    116, 110, 84,  43, 109, 124, 105, 126, 99,  94,  112, 97, 46,  40,  64,  47,  81,  91,
    70,  39,  102, 71, 125, 78,  49,  122, 66,  88,  96,  76, 33,  113, 55,  37,  42,  85,
    38,  117, 106, 44, 69,  65,  75,  89,  90,  115, 118, 36, 57,  56,  114, 87,  45,  80,
    68,  61,  108, 74, 54,  63,  79,  41,  100, 119, 60,  53, 86,  67,  50,  107, 123, 77,
    120, 82,  101, 72, 95,  103, 73,  104, 98,  52,  62,  83, 111, 35,  58,  51,  48,  121};
constexpr std::array<std::uint8_t, 20> kFirst{35, 32, 80, 72, 19, 59, 37, 9,  39, 37,
                                              4,  22, 37, 53, 26, 85, 67, 19, 29, 61};
constexpr std::array<std::uint8_t, 20> kSecond{61, 40, 18, 39, 10, 2,  32, 75, 74, 45,
                                               27, 28, 44, 58, 13, 79, 61, 14, 16, 33};
constexpr std::array<std::uint8_t, 32> kThird{65, 56, 17, 41, 31, 25, 27, 87, 15, 57, 77,
                                              17, 13, 51, 23, 5,  18, 14, 76, 79, 79, 71,
                                              10, 79, 41, 80, 76, 55, 12, 4,  1,  52};

QString join(std::span<const std::uint8_t> places) {
    QString text;
    text.reserve(static_cast<qsizetype>(places.size()));
    for (const std::uint8_t place : places) {
        text += QLatin1Char(static_cast<char>(kCodes.at(place)));
    }
    return text;
}

}  // namespace

QString KeyChain::GetBuiltinSecret(int index) {
    switch (index) {
        case 0:
            return join(kFirst);
        case 1:
            return join(kSecond);
        case 2:
            return join(kThird);
        default:
            throw std::out_of_range("GetBuiltinSecret: index");
    }
}

QString KeyChain::GetCryptLgnKey(bool scheme, const QString& key) const {
    if (!scheme) {
        return Cryptor1::hashString(key);
    }
    constexpr qsizetype kLength = 32;
    const qsizetype rest = std::max<qsizetype>(kLength - key.size(), 0);
    QString enciphered = m_cipher.EncryptString(GetBuiltinSecret(0), GetBuiltinSecret(1));
    const WipeGuard wipeEnciphered(enciphered);
    QString mask = Cryptor1::hashString(enciphered).left(rest);
    const WipeGuard wipeMask(mask);
    const qsizetype woven = std::min(key.size(), rest);
    QString result;
    result.reserve(std::max(kLength, key.size()));
    for (qsizetype i = 0; i < woven; ++i) {
        result += key.at(i);
        result += mask.at(i);
    }
    result += QStringView(key).mid(woven);
    result += QStringView(mask).mid(woven);
    return result;
}

QString KeyChain::HashToDBPwd(bool scheme, const QString& text) {
    QString digest = Cryptor2::hashString(text);
    const WipeGuard wipeDigest(digest);
    QString secret = GetBuiltinSecret(1);
    const WipeGuard wipeSecret(secret);
    QString password;
    password.reserve(digest.size() / 2);
    for (qsizetype i = 0; i + 1 < digest.size(); i += 2) {
        if (!scheme) {
            password += digest.at(i);
            continue;
        }
        const ushort code = digest.at(i + 1).unicode() ^ secret.at(i / 2).unicode();
        // What a connection string could not carry.
        constexpr std::array<ushort, 6> kDropped{0, 8, 9, 10, 13, 59};
        if (std::find(kDropped.begin(), kDropped.end(), code) == kDropped.end()) {
            password += QChar(code);
        }
    }
    return password;
}

QString KeyChain::TransformDBPwd(const QString& text) {
    QString result = text;
    return result.replace(u']', u'}').replace(u';', u':');
}

QString KeyChain::GetAccessDBSec(bool scheme, const QString& key) {
    QString raw;
    const WipeGuard wipeRaw(raw);
    if (!key.isEmpty()) {
        raw = HashToDBPwd(scheme, key);
    } else if (scheme) {
        raw = GetBuiltinSecret(0);
    } else {
        raw = HashToDBPwd(false, QStringLiteral("Tarnvale"));
    }
    return TransformDBPwd(raw);
}

}  // namespace keeper
