// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "crypto/hex_display.h"

#include <array>

namespace keeper {
namespace {

constexpr std::array<std::int16_t, 256> makeDigitValues() {
    std::array<std::int16_t, 256> values{};
    values.fill(-1);
    for (std::size_t i = 0; i < 10; ++i) {
        values['0' + i] = static_cast<std::int16_t>(i);
    }
    for (std::size_t i = 0; i < 6; ++i) {
        values['A' + i] = values['a' + i] = static_cast<std::int16_t>(10 + i);
    }
    return values;
}

constexpr auto digitValues = makeDigitValues();

}  // namespace

QString BytesToHexDisplay(std::span<const std::uint8_t> data, int groupBytes) {
    static constexpr std::u16string_view digits = u"0123456789ABCDEF";
    if (data.empty()) {
        return {};
    }
    const auto count = static_cast<qsizetype>(data.size());
    QString text(2 * count + 2 * ((count - 1) / groupBytes), Qt::Uninitialized);
    QChar* out = text.data();
    int inGroup = 0;
    for (const std::uint8_t byte : data) {
        if (inGroup == groupBytes) {
            *out++ = u' ';
            *out++ = u' ';
            inGroup = 0;
        }
        *out++ = digits[byte >> 4];
        *out++ = digits[byte & 0x0F];
        ++inGroup;
    }
    return text;
}

int HexDisplayToBytes(QStringView text, std::vector<std::uint8_t>& bytes) {
    bytes.clear();
    bytes.reserve(static_cast<std::size_t>(text.size()) / 2);
    int high = -1;
    for (const QChar unit : text) {
        const int value = digitValues[unit.unicode() & 0xFF];
        if (value < 0) {
            continue;
        }
        if (high < 0) {
            high = value;
        } else {
            bytes.push_back(static_cast<std::uint8_t>(high << 4 | value));
            high = -1;
        }
    }
    return static_cast<int>(bytes.size());
}

}  // namespace keeper
