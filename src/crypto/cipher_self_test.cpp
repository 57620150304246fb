// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "crypto/cipher_self_test.h"

#include <algorithm>
#include <array>

#include "crypto/rijndael.h"

namespace keeper {
namespace {

using namespace rijndael;

/// FIPS 197, appendix B.
constexpr std::array<std::uint8_t, 16> secret{0x2B, 0x7E, 0x15, 0x16, 0x28, 0xAE, 0xD2, 0xA6,
                                              0xAB, 0xF7, 0x15, 0x88, 0x09, 0xCF, 0x4F, 0x3C};
constexpr std::array<std::uint8_t, 16> narrow{0x32, 0x43, 0xF6, 0xA8, 0x88, 0x5A, 0x30, 0x8D,
                                              0x31, 0x31, 0x98, 0xA2, 0xE0, 0x37, 0x07, 0x34};
constexpr std::array<std::uint8_t, 16> narrowAnswer{0x39, 0x25, 0x84, 0x1D, 0x02, 0xDC, 0x09, 0xFB,
                                                    0xDC, 0x11, 0x85, 0x97, 0x19, 0x6A, 0x0B, 0x32};
/// B. Gladman's vector of the same key for a 256-bit block.
constexpr std::array<std::uint8_t, 32> wide{
    0x32, 0x43, 0xF6, 0xA8, 0x88, 0x5A, 0x30, 0x8D, 0x31, 0x31, 0x98, 0xA2, 0xE0, 0x37, 0x07, 0x34,
    0x4A, 0x40, 0x93, 0x82, 0x22, 0x99, 0xF3, 0x1D, 0x00, 0x82, 0xEF, 0xA9, 0x8E, 0xC4, 0xE6, 0xC8};
constexpr std::array<std::uint8_t, 32> wideAnswer{
    0x7D, 0x15, 0x47, 0x90, 0x76, 0xB6, 0x9A, 0x46, 0xFF, 0xB3, 0xB3, 0xBE, 0xAE, 0x97, 0xAD, 0x83,
    0x13, 0xF6, 0x22, 0xF6, 0x7F, 0xED, 0xB4, 0x87, 0xDE, 0x9F, 0x06, 0xB9, 0xED, 0x9C, 0x8F, 0x19};

/// The first 28 bytes of it. The answer is that of an independent byte-wise program, which gives
/// the published ones of the other sizes too.
constexpr std::array<std::uint8_t, 28> odd{
    0x32, 0x43, 0xF6, 0xA8, 0x88, 0x5A, 0x30, 0x8D, 0x31, 0x31, 0x98, 0xA2, 0xE0, 0x37,
    0x07, 0x34, 0x4A, 0x40, 0x93, 0x82, 0x22, 0x99, 0xF3, 0x1D, 0x00, 0x82, 0xEF, 0xA9};
constexpr std::array<std::uint8_t, 28> oddAnswer{
    0xB0, 0xA8, 0xF7, 0x8F, 0x6B, 0x3C, 0x66, 0x21, 0x3F, 0x79, 0x2F, 0xFD, 0x2A, 0x61,
    0x63, 0x1F, 0x79, 0x33, 0x14, 0x07, 0xA5, 0xE5, 0xC8, 0xD3, 0x79, 0x3A, 0xCE, 0xB1};

template <std::size_t Size>
bool answers(const Implementation& path, const std::array<std::uint8_t, Size>& plain,
             const std::array<std::uint8_t, Size>& cipher) {
    // Enough blocks for the widest vectors of every path, and a rest.
    constexpr std::size_t blocks = 37;
    constexpr std::size_t index = Size / 4 - 4;
    KeySchedule key;
    expandKey(key, secret, static_cast<int>(Size / 4));
    std::array<std::uint8_t, Size * blocks> data{};
    const auto holds = [&](const std::array<std::uint8_t, Size>& block) {
        for (std::size_t i = 0; i < data.size(); i += Size) {
            if (!std::equal(block.begin(), block.end(), data.begin() + static_cast<long>(i))) {
                return false;
            }
        }
        return true;
    };
    for (std::size_t i = 0; i < data.size(); ++i) {
        data[i] = plain[i % Size];
    }
    path.encrypt[index](key.forward.data(), key.rounds, data.data(), data.data(), blocks);
    const bool enciphers = holds(cipher);
    path.decrypt[index](key.reverse.data(), key.rounds, data.data(), data.data(), blocks);
    return enciphers && holds(plain);
}

}  // namespace

bool cipherSelfTest() {
    for (const unsigned path : {Portable, AesNi, Vaes256, Vaes512}) {
        const Implementation& implementation = selectImplementation(path);
        if (!answers(implementation, narrow, narrowAnswer) ||
            !answers(implementation, odd, oddAnswer) ||
            !answers(implementation, wide, wideAnswer)) {
            return false;
        }
    }
    return true;
}

}  // namespace keeper
