// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "crypto/digest_blocks.h"
#include "crypto/sha1.h"

#if defined(__x86_64__)

#include <cpuid.h>
#include <immintrin.h>

#include <utility>

namespace keeper {

namespace {

// The attribute stands on each function, not on the file: inline functions of shared headers must
// not come out of this file with instructions that other processors lack.
#define KEEPER_SHA_NI __attribute__((target("sha,sse4.1,ssse3")))
#define KEEPER_SHA_NI_INLINE KEEPER_SHA_NI __attribute__((always_inline)) inline

struct Schedule {
    __m128i words[4];
    __m128i e[2];
    __m128i abcd;
};

/// Four steps, group G of 20. The words of the groups to come are prepared three groups ahead.
template <int G>
KEEPER_SHA_NI_INLINE void fourSteps(Schedule& s) {
    __m128i& e = s.e[G % 2];
    if constexpr (G == 0) {
        e = _mm_add_epi32(e, s.words[0]);
    } else {
        e = _mm_sha1nexte_epu32(e, s.words[G % 4]);
    }
    s.e[(G + 1) % 2] = s.abcd;
    if constexpr (G >= 3 && G < 19) {
        s.words[(G + 1) % 4] = _mm_sha1msg2_epu32(s.words[(G + 1) % 4], s.words[G % 4]);
    }
    s.abcd = _mm_sha1rnds4_epu32(s.abcd, e, G / 5);
    if constexpr (G >= 1 && G < 17) {
        s.words[(G + 3) % 4] = _mm_sha1msg1_epu32(s.words[(G + 3) % 4], s.words[G % 4]);
    }
    if constexpr (G >= 2 && G < 18) {
        s.words[(G + 2) % 4] = _mm_xor_si128(s.words[(G + 2) % 4], s.words[G % 4]);
    }
}

template <int... G>
KEEPER_SHA_NI_INLINE void allSteps(Schedule& s, std::integer_sequence<int, G...>) {
    (fourSteps<G>(s), ...);
}

}  // namespace

KEEPER_SHA_NI void sha1TransformNi(Sha1State& state, const std::uint8_t* blocks,
                                   std::size_t count) {
    const __m128i byteOrder = _mm_set_epi64x(0x0001020304050607LL, 0x08090A0B0C0D0E0FLL);
    __m128i abcd =
        _mm_shuffle_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(state.data())), 0x1B);
    __m128i e = _mm_set_epi32(static_cast<int>(state[4]), 0, 0, 0);
    for (; count > 0; --count, blocks += kDigestBlock) {
        Schedule s;
        for (int i = 0; i < 4; ++i) {
            s.words[i] = _mm_shuffle_epi8(
                _mm_loadu_si128(reinterpret_cast<const __m128i*>(blocks) + i), byteOrder);
        }
        s.abcd = abcd;
        s.e[0] = e;
        s.e[1] = e;
        allSteps(s, std::make_integer_sequence<int, 20>());
        e = _mm_sha1nexte_epu32(s.e[0], e);
        abcd = _mm_add_epi32(s.abcd, abcd);
    }
    _mm_storeu_si128(reinterpret_cast<__m128i*>(state.data()), _mm_shuffle_epi32(abcd, 0x1B));
    state[4] = static_cast<std::uint32_t>(_mm_extract_epi32(e, 3));
}

bool sha1NiAvailable() {
    unsigned a = 0;
    unsigned b = 0;
    unsigned c = 0;
    unsigned d = 0;
    if (__get_cpuid(1, &a, &b, &c, &d) == 0 || (c & bit_SSSE3) == 0 || (c & bit_SSE4_1) == 0) {
        return false;
    }
    return __get_cpuid_count(7, 0, &a, &b, &c, &d) != 0 && (b & bit_SHA) != 0;
}

}  // namespace keeper

#else

namespace keeper {

bool sha1NiAvailable() {
    return false;
}

void sha1TransformNi(Sha1State& state, const std::uint8_t* blocks, std::size_t count) {
    sha1TransformPortable(state, blocks, count);
}

}  // namespace keeper

#endif
