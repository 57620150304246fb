// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <immintrin.h>

#include <cstddef>
#include <cstdint>

namespace keeper::rijndael {
namespace {

inline __m128i load128(const void* bytes) {
    return _mm_loadu_si128(static_cast<const __m128i*>(bytes));
}
inline void store128(void* bytes, __m128i value) {
    _mm_storeu_si128(static_cast<__m128i*>(bytes), value);
}

/// One 128-bit lane.
struct Xmm {
    static constexpr std::size_t lanes = 1;
    __m128i value;

    static Xmm load(const std::uint8_t* bytes) { return {load128(bytes)}; }
    void store(std::uint8_t* bytes) const { store128(bytes, value); }
    static Xmm gather(const std::uint8_t* bytes, std::size_t /*stride*/) { return load(bytes); }
    void scatter(std::uint8_t* bytes, std::size_t /*stride*/) const { store(bytes); }
    static Xmm broadcast(const void* bytes) { return {load128(bytes)}; }
    static Xmm shuffle(Xmm a, Xmm places) { return {_mm_shuffle_epi8(a.value, places.value)}; }
    static Xmm blend(Xmm a, Xmm b, Xmm mask) {
        return {_mm_blendv_epi8(a.value, b.value, mask.value)};
    }
    friend Xmm operator^(Xmm a, Xmm b) { return {_mm_xor_si128(a.value, b.value)}; }
    static Xmm encryptRound(Xmm s, Xmm k) { return {_mm_aesenc_si128(s.value, k.value)}; }
    static Xmm decryptRound(Xmm s, Xmm k) { return {_mm_aesdec_si128(s.value, k.value)}; }
    static Xmm encryptLastRound(Xmm s, Xmm k) { return {_mm_aesenclast_si128(s.value, k.value)}; }
    static Xmm decryptLastRound(Xmm s, Xmm k) { return {_mm_aesdeclast_si128(s.value, k.value)}; }
};

}  // namespace
}  // namespace keeper::rijndael
