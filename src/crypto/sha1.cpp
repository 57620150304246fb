// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "crypto/sha1.h"

#include <bit>
#include <utility>

#include "crypto/digest_blocks.h"

namespace keeper {

namespace {

std::uint32_t loadBigEndian(const std::uint8_t* bytes) {
    return std::uint32_t{bytes[0]} << 24U | std::uint32_t{bytes[1]} << 16U |
           std::uint32_t{bytes[2]} << 8U | std::uint32_t{bytes[3]};
}

/// Step I of 80 on the registers in their turn; the schedule is a ring of 16 words.
template <std::size_t I>
[[gnu::always_inline]] inline void step(Sha1State& s, std::uint32_t (&ring)[16]) {
    const std::uint32_t a = s[(80 - I) % 5];
    std::uint32_t& b = s[(81 - I) % 5];
    const std::uint32_t c = s[(82 - I) % 5];
    const std::uint32_t d = s[(83 - I) % 5];
    std::uint32_t& e = s[(84 - I) % 5];
    std::uint32_t& word = ring[I % 16];
    if constexpr (I >= 16) {
        word = std::rotl(ring[(I + 13) % 16] ^ ring[(I + 8) % 16] ^ ring[(I + 2) % 16] ^ word, 1);
    }
    constexpr std::array<std::uint32_t, 4> constants = {0x5A827999, 0x6ED9EBA1, 0x8F1BBCDC,
                                                        0xCA62C1D6};
    e += word + constants[I / 20];
    if constexpr (I < 20) {
        e += ((c ^ d) & b) ^ d;
    } else if constexpr (I >= 40 && I < 60) {
        // The two terms share no bit, so that adding them is the same as joining them.
        e += c & d;
        e += (c ^ d) & b;
    } else {
        e += b ^ c ^ d;
    }
    e += std::rotl(a, 5);
    b = std::rotl(b, 30);
}

}  // namespace

void sha1TransformPortable(Sha1State& state, const std::uint8_t* blocks, std::size_t count) {
    Sha1State s = state;
    for (; count > 0; --count, blocks += kDigestBlock) {
        std::uint32_t ring[16];
        for (std::size_t i = 0; i < 16; ++i) {
            ring[i] = loadBigEndian(blocks + 4 * i);
        }
        const Sha1State before = s;
        [&]<std::size_t... I>(std::index_sequence<I...>) {
            (step<I>(s, ring), ...);
        }
        (std::make_index_sequence<80>());
        for (std::size_t i = 0; i < s.size(); ++i) {
            s[i] += before[i];
        }
    }
    state = s;
}

Sha1Path sha1Path(bool allowHardware) {
    if (allowHardware && sha1NiAvailable()) {
        return {"sha-ni", sha1TransformNi};
    }
    return {"portable", sha1TransformPortable};
}

}  // namespace keeper
