// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "crypto/md5.h"

#include <bit>
#include <cstring>
#include <utility>

#include "crypto/digest_blocks.h"

namespace keeper {

namespace {

static_assert(std::endian::native == std::endian::little, "message words are loaded as they lie");

constexpr std::array<std::uint32_t, 64> kSines = {
    0xD76AA478, 0xE8C7B756, 0x242070DB, 0xC1BDCEEE, 0xF57C0FAF, 0x4787C62A, 0xA8304613, 0xFD469501,
    0x698098D8, 0x8B44F7AF, 0xFFFF5BB1, 0x895CD7BE, 0x6B901122, 0xFD987193, 0xA679438E, 0x49B40821,
    0xF61E2562, 0xC040B340, 0x265E5A51, 0xE9B6C7AA, 0xD62F105D, 0x02441453, 0xD8A1E681, 0xE7D3FBC8,
    0x21E1CDE6, 0xC33707D6, 0xF4D50D87, 0x455A14ED, 0xA9E3E905, 0xFCEFA3F8, 0x676F02D9, 0x8D2A4C8A,
    0xFFFA3942, 0x8771F681, 0x6D9D6122, 0xFDE5380C, 0xA4BEEA44, 0x4BDECFA9, 0xF6BB4B60, 0xBEBFBC70,
    0x289B7EC6, 0xEAA127FA, 0xD4EF3085, 0x04881D05, 0xD9D4D039, 0xE6DB99E5, 0x1FA27CF8, 0xC4AC5665,
    0xF4292244, 0x432AFF97, 0xAB9423A7, 0xFC93A039, 0x655B59C3, 0x8F0CCC92, 0xFFEFF47D, 0x85845DD1,
    0x6FA87E4F, 0xFE2CE6E0, 0xA3014314, 0x4E0811A1, 0xF7537E82, 0xBD3AF235, 0x2AD7D2BB, 0xEB86D391};

constexpr std::array<std::array<int, 4>, 4> kShifts = {
    {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}}};

/// Step I of 64 on the register that is due; everything but the data is known at compile time.
template <std::size_t I>
[[gnu::always_inline]] inline void step(Md5State& s, const std::uint32_t (&words)[16]) {
    std::uint32_t& a = s[(64 - I) % 4];
    const std::uint32_t b = s[(65 - I) % 4];
    const std::uint32_t c = s[(66 - I) % 4];
    const std::uint32_t d = s[(67 - I) % 4];
    constexpr std::size_t round = I / 16;
    constexpr std::array<std::size_t, 4> factor = {1, 5, 3, 7};
    constexpr std::array<std::size_t, 4> offset = {0, 1, 5, 0};
    a += kSines[I] + words[(factor[round] * I + offset[round]) % 16];
    // b is the word of the step before: what does not need it stands outside the chain.
    if constexpr (round == 0) {
        a += ((c ^ d) & b) ^ d;
    } else if constexpr (round == 1) {
        a += c & ~d;
        a += b & d;
    } else if constexpr (round == 2) {
        a += (c ^ d) ^ b;
    } else {
        a += c ^ (b | ~d);
    }
    a = std::rotl(a, kShifts[round][I % 4]) + b;
}

}  // namespace

void md5Transform(Md5State& state, const std::uint8_t* blocks, std::size_t count) {
    Md5State s = state;
    for (; count > 0; --count, blocks += kDigestBlock) {
        std::uint32_t words[16];
        std::memcpy(words, blocks, sizeof words);
        const Md5State before = s;
        [&]<std::size_t... I>(std::index_sequence<I...>) {
            (step<I>(s, words), ...);
        }
        (std::make_index_sequence<64>());
        for (std::size_t i = 0; i < s.size(); ++i) {
            s[i] += before[i];
        }
    }
    state = s;
}

}  // namespace keeper
