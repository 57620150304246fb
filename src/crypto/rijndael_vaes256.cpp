// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later
//
// VAES on 256-bit vectors, for processors without AVX-512: the lanes hold the same half of two
// blocks, so that the permutation is the one of the 128-bit path.

#include "crypto/rijndael.h"
#include "crypto/rijndael_halves.h"
#include "crypto/rijndael_xmm.h"

namespace keeper::rijndael {
namespace {

struct Ymm {
    static constexpr std::size_t lanes = 2;
    __m256i value;

    static Ymm load(const std::uint8_t* bytes) {
        return {_mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes))};
    }
    void store(std::uint8_t* bytes) const {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(bytes), value);
    }
    static Ymm gather(const std::uint8_t* bytes, std::size_t stride) {
        return {_mm256_inserti128_si256(_mm256_castsi128_si256(load128(bytes)),
                                        load128(bytes + stride), 1)};
    }
    void scatter(std::uint8_t* bytes, std::size_t stride) const {
        store128(bytes, _mm256_castsi256_si128(value));
        store128(bytes + stride, _mm256_extracti128_si256(value, 1));
    }
    static Ymm broadcast(const void* bytes) {
        return {_mm256_broadcastsi128_si256(load128(bytes))};
    }
    static Ymm shuffle(Ymm a, Ymm places) { return {_mm256_shuffle_epi8(a.value, places.value)}; }
    static Ymm blend(Ymm a, Ymm b, Ymm mask) {
        return {_mm256_blendv_epi8(a.value, b.value, mask.value)};
    }
    friend Ymm operator^(Ymm a, Ymm b) { return {_mm256_xor_si256(a.value, b.value)}; }
    static Ymm encryptRound(Ymm s, Ymm k) { return {_mm256_aesenc_epi128(s.value, k.value)}; }
    static Ymm decryptRound(Ymm s, Ymm k) { return {_mm256_aesdec_epi128(s.value, k.value)}; }
    static Ymm encryptLastRound(Ymm s, Ymm k) {
        return {_mm256_aesenclast_epi128(s.value, k.value)};
    }
    static Ymm decryptLastRound(Ymm s, Ymm k) {
        return {_mm256_aesdeclast_epi128(s.value, k.value)};
    }
};

template <int Columns>
constexpr std::size_t inFlight = Columns == 4 ? 8 : 4;

template <int Columns, bool Decrypt>
void cipherBlocks(const std::uint32_t* key, int rounds, const std::uint8_t* source,
                  std::uint8_t* destination, std::size_t blocks) {
    cipherGroups<Ymm, Columns, Decrypt, inFlight<Columns>>(key, rounds, source, destination,
                                                           blocks);
    cipherGroups<Ymm, Columns, Decrypt, 1>(key, rounds, source, destination, blocks);
    cipherGroups<Xmm, Columns, Decrypt, 1>(key, rounds, source, destination, blocks);
}

}  // namespace

constexpr Implementation vaes256Implementation{
    Vaes256,
    "vaes_256",
    {cipherBlocks<4, false>, cipherBlocks<5, false>, cipherBlocks<6, false>, cipherBlocks<7, false>,
     cipherBlocks<8, false>},
    {cipherBlocks<4, true>, cipherBlocks<5, true>, cipherBlocks<6, true>, cipherBlocks<7, true>,
     cipherBlocks<8, true>}};

}  // namespace keeper::rijndael
