// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <algorithm>

#include "crypto/rijndael.h"
#include "crypto/rijndael_tables.h"
#include "crypto/secure_wipe.h"

namespace keeper::rijndael {

constexpr Tables tables = makeTables();

namespace {

static_assert(tables.encrypt[0][0] == 0xA56363C6 && tables.roundConstants.back() == 0xC5);

constexpr std::uint32_t substituteWord(std::uint32_t word) {
    return (tables.sbox[word & 0xFF] & 0xFF) | (tables.sbox[word >> 8 & 0xFF] & 0xFF00) |
           (tables.sbox[word >> 16 & 0xFF] & 0xFF0000) | (tables.sbox[word >> 24] & 0xFF000000);
}

constexpr std::uint32_t inverseMixColumn(std::uint32_t word) {
    return tables.decrypt[0][tables.sbox[word & 0xFF] & 0xFF] ^
           tables.decrypt[1][tables.sbox[word >> 8 & 0xFF] & 0xFF] ^
           tables.decrypt[2][tables.sbox[word >> 16 & 0xFF] & 0xFF] ^
           tables.decrypt[3][tables.sbox[word >> 24] & 0xFF];
}

}  // namespace

void KeySchedule::wipe() noexcept {
    secureWipe(this, sizeof *this);
}

void expandKey(KeySchedule& schedule, std::span<const std::uint8_t> key, int blockColumns) {
    schedule.wipe();
    const std::size_t keyWords = key.size() / 4;
    const auto columns = static_cast<std::size_t>(blockColumns);
    const std::size_t rounds = std::max(columns, keyWords) + 6;
    const std::size_t words = columns * (rounds + 1);
    auto& forward = schedule.forward;
    for (std::size_t i = 0; i < keyWords; ++i) {
        forward[i] = columnWord(key[4 * i], key[4 * i + 1], key[4 * i + 2], key[4 * i + 3]);
    }
    std::size_t inGroup = 0;
    std::size_t group = 0;
    for (std::size_t i = keyWords; i < words; ++i) {
        std::uint32_t word = forward[i - 1];
        if (inGroup == 0) {
            // A rotation to the right of a little-endian word is RotWord.
            word = substituteWord(rotateLeft(word, 24)) ^ tables.roundConstants[group++];
        } else if (keyWords > 6 && inGroup == 4) {
            word = substituteWord(word);
        }
        forward[i] = forward[i - keyWords] ^ word;
        inGroup = inGroup + 1 == keyWords ? 0 : inGroup + 1;
    }
    for (std::size_t round = 0; round <= rounds; ++round) {
        const bool outer = round == 0 || round == rounds;
        for (std::size_t c = 0; c < columns; ++c) {
            const std::uint32_t word = forward[(rounds - round) * columns + c];
            schedule.reverse[round * columns + c] = outer ? word : inverseMixColumn(word);
        }
    }
    schedule.rounds = static_cast<int>(rounds);
    schedule.columns = blockColumns;
}

}  // namespace keeper::rijndael
