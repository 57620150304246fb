// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/page_key.h"

#include <openssl/evp.h>
#include <sqlcipher/sqlite3.h>

#include "crypto/secure_wipe.h"
#include "platform/database.h"

namespace keeper {
namespace {

void derive(const void* secret, std::size_t size, const PageKey::Salt& salt, int rounds,
            PageKey::Bytes& out) {
    if (PKCS5_PBKDF2_HMAC_SHA1(static_cast<const char*>(secret), static_cast<int>(size),
                               salt.data(), static_cast<int>(salt.size()), rounds,
                               static_cast<int>(out.size()), out.data()) != 1) {
        throw DatabaseError(SQLITE_NOMEM, QStringLiteral("PKCS5_PBKDF2_HMAC_SHA1: failed"));
    }
}

template <std::size_t size>
QByteArray hexOf(const std::array<std::uint8_t, size>& bytes) {
    return QByteArray::fromRawData(reinterpret_cast<const char*>(bytes.data()), size).toHex();
}

}  // namespace

PageKey::PageKey(const QString& password, const Salt& salt, int rounds) : m_salt(salt) {
    QByteArray secret = password.toUtf8();
    derive(secret.constData(), static_cast<std::size_t>(secret.size()), m_salt, rounds, m_key);
    secureWipe(secret.data(), static_cast<std::size_t>(secret.size()));
}

PageKey::~PageKey() {
    secureWipe(m_key.data(), m_key.size());
}

QByteArray PageKey::readyForm() const {
    QByteArray key = hexOf(m_key);
    QByteArray form = "x'" + key + hexOf(m_salt) + '\'';
    secureWipe(key.data(), static_cast<std::size_t>(key.size()));
    return form;
}

PageKey::Bytes PageKey::codeKey() const {
    constexpr std::uint8_t kSaltMask = 0x3A;
    constexpr int kRounds = 2;
    Salt salt = m_salt;
    for (auto& byte : salt) {
        byte ^= kSaltMask;
    }
    Bytes key{};
    derive(m_key.data(), m_key.size(), salt, kRounds, key);
    return key;
}

}  // namespace keeper
