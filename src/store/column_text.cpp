// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "store/column_text.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <vector>

#include "crypto/cryptor3.h"
#include "crypto/hex_display.h"
#include "crypto/secure_wipe.h"

namespace keeper {
namespace {

// The wide form before its enciphering: a 0, the number of UTF-16 units in 4 bytes, the units, all
// with the high byte first, and at least one 0 to the end of the block. The text form reads what
// begins and ends with 0 as the empty text, whose cell is empty: no other cell looks like this.
constexpr std::size_t kCountAt = 1;
constexpr std::size_t kUnitsAt = 5;
constexpr std::size_t kLeastTail = 1;

constexpr std::size_t wideBytes(std::size_t units) {
    return kUnitsAt + units * 2 + kLeastTail;
}

QString wideCell(Cryptor3& cryptor, const QString& plain, const QString& key) {
    const auto units = static_cast<std::size_t>(plain.size());
    if (units > std::numeric_limits<std::uint32_t>::max()) {
        return {};
    }
    std::vector<std::uint8_t> bytes(wideBytes(units), 0);
    const WipeGuard wipe(bytes);
    for (std::size_t i = 0; i < 4; ++i) {
        bytes[kCountAt + i] = static_cast<std::uint8_t>(units >> (24 - 8 * i));
    }
    for (std::size_t i = 0; i < units; ++i) {
        const char16_t unit = plain.at(static_cast<qsizetype>(i)).unicode();
        bytes[kUnitsAt + 2 * i] = static_cast<std::uint8_t>(unit >> 8);
        bytes[kUnitsAt + 2 * i + 1] = static_cast<std::uint8_t>(unit & 0xFF);
    }
    const int bits = Cryptor3::sizeForKey(key.size());
    std::vector<std::uint8_t> cipher;
    const ForgetKey forget(cryptor);
    cryptor.SetCipherKeyString(key, bits, bits, /*isHex=*/false);
    cryptor.ArrayEncrypt(bytes, cipher, /*appendSize=*/false, bits);
    return BytesToHexDisplay(cipher, bits / 8);
}

QString wideText(Cryptor3& cryptor, const QString& cell, const QString& key) {
    const int bits = Cryptor3::sizeForKey(key.size());
    const auto block = static_cast<std::size_t>(bits) / 8;
    std::vector<std::uint8_t> cipher;
    if (HexDisplayToBytes(cell, cipher) == 0 || cipher.size() % block != 0) {
        return {};
    }
    std::vector<std::uint8_t> bytes;
    const WipeGuard wipe(bytes);
    const ForgetKey forget(cryptor);
    cryptor.SetCipherKeyString(key, bits, bits, /*isHex=*/false);
    cryptor.ArrayDecrypt(bytes, cipher, /*appendSize=*/false, bits);
    std::size_t units = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        units = units << 8 | bytes[kCountAt + i];
    }
    const std::size_t used = wideBytes(units);
    if (bytes.front() != 0 || bytes.size() < used || bytes.size() - used >= block ||
        std::any_of(bytes.begin() + static_cast<std::ptrdiff_t>(used - kLeastTail), bytes.end(),
                    [](std::uint8_t byte) { return byte != 0; })) {
        return {};
    }
    QString text(static_cast<qsizetype>(units), Qt::Uninitialized);
    for (std::size_t i = 0; i < units; ++i) {
        text[static_cast<qsizetype>(i)] = QChar(
            static_cast<char16_t>(bytes[kUnitsAt + 2 * i] << 8 | bytes[kUnitsAt + 2 * i + 1]));
    }
    return text;
}

}  // namespace

QString encipheredCell(Cryptor3& cryptor, const QString& plain, const QString& key) {
    QString cell = cryptor.EncryptString(plain, key);
    QString again = cryptor.DecryptString(cell, key);
    const WipeGuard wipe(again);
    // A failure was told, and is no verdict on the text.
    if (cell.isEmpty() || again == plain) {
        return cell;
    }
    cell = wideCell(cryptor, plain, key);
    secureWipe(again);
    again = wideText(cryptor, cell, key);
    return again == plain ? cell : QString();
}

QString decipheredCell(Cryptor3& cryptor, const QString& cell, const QString& key) {
    QString text = cryptor.DecryptString(cell, key);
    return text.isEmpty() && !cell.isEmpty() ? wideText(cryptor, cell, key) : text;
}

}  // namespace keeper
