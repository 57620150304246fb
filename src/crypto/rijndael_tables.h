// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace keeper::rijndael {

using WordTable = std::array<std::uint32_t, 256>;

/// Lookup tables of the Rijndael proposal (section 5.2.1), computed by the compiler from the field
/// arithmetic. Words are little-endian: the first byte of a column is the lowest.
struct Tables {
    /// [r][x]: what the byte x of row r adds to its column in a full round.
    std::array<WordTable, 4> encrypt{};
    std::array<WordTable, 4> decrypt{};
    /// S-boxes with the byte in all four positions, so that a mask picks the one that is needed.
    WordTable sbox{};
    WordTable inverseSbox{};
    /// Powers of x; a 128-bit key with a 256-bit block uses all of them.
    std::array<std::uint8_t, 29> roundConstants{};
};

constexpr std::uint8_t fieldDouble(std::uint8_t value) {
    return static_cast<std::uint8_t>((value << 1) ^ ((value & 0x80) != 0 ? 0x1B : 0));
}

constexpr std::uint8_t fieldMultiply(std::uint8_t a, std::uint8_t b) {
    std::uint8_t product = 0;
    for (; b != 0; b = static_cast<std::uint8_t>(b >> 1)) {
        if ((b & 1) != 0) {
            product = static_cast<std::uint8_t>(product ^ a);
        }
        a = fieldDouble(a);
    }
    return product;
}

constexpr std::uint32_t columnWord(std::uint8_t b0, std::uint8_t b1, std::uint8_t b2,
                                   std::uint8_t b3) {
    return b0 | static_cast<std::uint32_t>(b1) << 8 | static_cast<std::uint32_t>(b2) << 16 |
           static_cast<std::uint32_t>(b3) << 24;
}

constexpr std::uint32_t rotateLeft(std::uint32_t word, int bits) {
    return bits == 0 ? word : (word << bits) | (word >> (32 - bits));
}

/// The S-box entry of the element whose multiplicative inverse is `inverse`: the affine map.
constexpr std::uint8_t affineMap(std::uint8_t inverse) {
    std::uint8_t result = 0x63;
    for (int i = 0; i < 5; ++i) {
        result = static_cast<std::uint8_t>(result ^ (inverse << i) ^ (inverse >> (8 - i)));
    }
    return result;
}

constexpr std::array<std::uint8_t, 256> makeSbox() {
    std::array<std::uint8_t, 256> sbox{};
    sbox[0] = affineMap(0);
    // 3 generates the field and F6 is its inverse: the two walk the pairs (x, 1/x).
    std::uint8_t element = 1;
    std::uint8_t inverse = 1;
    for (int i = 0; i < 255; ++i) {
        sbox[element] = affineMap(inverse);
        element = static_cast<std::uint8_t>(element ^ fieldDouble(element));
        inverse = fieldMultiply(inverse, 0xF6);
    }
    return sbox;
}

constexpr Tables makeTables() {
    Tables tables;
    const auto sbox = makeSbox();
    for (std::size_t x = 0; x < 256; ++x) {
        const std::uint8_t s = sbox[x];
        const std::uint8_t s2 = fieldDouble(s);
        const auto s3 = static_cast<std::uint8_t>(s ^ s2);
        const auto plain = static_cast<std::uint8_t>(x);
        const std::uint32_t forward = columnWord(s2, s, s, s3);
        const std::uint32_t backward =
            columnWord(fieldMultiply(plain, 0x0E), fieldMultiply(plain, 0x09),
                       fieldMultiply(plain, 0x0D), fieldMultiply(plain, 0x0B));
        for (std::size_t row = 0; row < 4; ++row) {
            tables.encrypt[row][x] = rotateLeft(forward, static_cast<int>(8 * row));
            tables.decrypt[row][s] = rotateLeft(backward, static_cast<int>(8 * row));
        }
        tables.sbox[x] = columnWord(s, s, s, s);
        tables.inverseSbox[s] = columnWord(plain, plain, plain, plain);
    }
    std::uint8_t power = 1;
    for (auto& constant : tables.roundConstants) {
        constant = power;
        power = fieldDouble(power);
    }
    return tables;
}

/// ShiftRows offset of row `row` (0 .. 3), in columns, for blocks of `columns` columns.
constexpr int shiftOffset(int columns, int row) {
    if (columns == 8 && row >= 2) {
        return row + 1;
    }
    return columns == 7 && row == 3 ? 4 : row;
}

/// One object in the whole program, in read-only memory.
extern const Tables tables;

}  // namespace keeper::rijndael
