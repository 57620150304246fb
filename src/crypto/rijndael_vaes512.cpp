// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later
//
// VAES on 512-bit vectors with the byte permutation of AVX-512 VBMI. A vector holds the 16 columns
// of as many whole blocks as fit, one after the other as in memory; one permutation of all 64 bytes
// before each round makes every ShiftRows.

#if defined(__GNUC__) && !defined(__clang__)
// GCC 12 warns about the undefined operands inside its own intrinsics.
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <immintrin.h>

#include "crypto/rijndael.h"
#include "crypto/rijndael_halves.h"

namespace keeper::rijndael {
namespace {

constexpr std::size_t vectorColumns = 16;

template <int Columns>
constexpr std::size_t vectorBlocks = vectorColumns / Columns;
template <int Columns>
constexpr std::size_t vectorBytes = vectorBlocks<Columns>* Columns * 4;

struct alignas(64) Places {
    std::array<std::uint8_t, 64> byte{};
};

constexpr Places planVector(int columns, bool decrypt) {
    Places places;
    const int used = 16 / columns * columns;
    for (int column = 0; column < 16; ++column) {
        for (int row = 0; row < 4; ++row) {
            const int lane = column / 4 * 4;
            const int goesTo = lane + (decrypt ? column + row : column - row + 4) % 4;
            int from = column;
            if (goesTo < used) {
                const int offset = shiftOffset(columns, row);
                const int inBlock = goesTo % columns + (decrypt ? columns - offset : offset);
                from = goesTo / columns * columns + inBlock % columns;
            }
            places.byte[byteIndex(column, row)] = static_cast<std::uint8_t>(4 * from + row);
        }
    }
    return places;
}

template <int Columns, bool Decrypt>
constexpr Places placesFor = planVector(Columns, Decrypt);

/// The round keys, each repeated for all blocks of a vector.
template <int Columns>
class VectorKeys {
  public:
    VectorKeys(const std::uint32_t* words, int rounds) : m_rounds(rounds) {
        alignas(64) std::uint32_t index[vectorColumns] = {};
        for (std::size_t i = 0; i < vectorColumns; ++i) {
            index[i] = static_cast<std::uint32_t>(i % Columns);
        }
        const __m512i repeatBlock = _mm512_load_si512(index);
        constexpr auto mask = static_cast<__mmask16>((1U << Columns) - 1);
        for (int round = 0; round <= rounds; ++round) {
            const __m512i key = _mm512_maskz_loadu_epi32(mask, words + round * Columns);
            m_keys[round] = _mm512_permutexvar_epi32(repeatBlock, key);
        }
    }
    ~VectorKeys() {
        for (int round = 0; round <= m_rounds; ++round) {
            m_keys[round] = _mm512_setzero_si512();
        }
        // The stores must happen although nothing reads them.
        __asm__ volatile("" : : "r"(m_keys) : "memory");
    }
    VectorKeys(const VectorKeys&) = delete;
    VectorKeys& operator=(const VectorKeys&) = delete;

    __m512i operator[](int round) const { return m_keys[round]; }
    [[nodiscard]] int rounds() const { return m_rounds; }

  private:
    __m512i m_keys[maxRounds + 1];
    int m_rounds;
};

/// `Count` vectors in flight. `mask` names the columns of the last one that are there; those before
/// it are whole.
template <int Columns, bool Decrypt, std::size_t Count>
[[gnu::always_inline]] inline void cipherVectors(const VectorKeys<Columns>& keys,
                                                 const std::uint8_t* source,
                                                 std::uint8_t* destination, __mmask16 mask) {
    constexpr auto all = std::make_index_sequence<Count>();
    constexpr std::size_t bytes = vectorBytes<Columns>;
    const __m512i places = _mm512_load_si512(placesFor<Columns, Decrypt>.byte.data());
    const auto permuted = [&](__m512i state) {
        return Columns == 4 ? state : _mm512_permutexvar_epi8(places, state);
    };
    __m512i state[Count];
    repeat(all, [&](std::size_t i) {
        const std::uint8_t* from = source + i * bytes;
        state[i] = _mm512_xor_si512(_mm512_maskz_loadu_epi32(mask, from), keys[0]);
    });
    for (int round = 1; round < keys.rounds(); ++round) {
        const __m512i key = keys[round];
        repeat(all, [&](std::size_t i) {
            state[i] = Decrypt ? _mm512_aesdec_epi128(permuted(state[i]), key)
                               : _mm512_aesenc_epi128(permuted(state[i]), key);
        });
    }
    const __m512i key = keys[keys.rounds()];
    repeat(all, [&](std::size_t i) {
        state[i] = Decrypt ? _mm512_aesdeclast_epi128(permuted(state[i]), key)
                           : _mm512_aesenclast_epi128(permuted(state[i]), key);
        if (i + 1 < Count) {
            // What this writes behind its blocks, the next vector writes over. Masked stores that
            // miss the caches are several times slower.
            _mm512_storeu_si512(destination + i * bytes, state[i]);
        } else {
            _mm512_mask_storeu_epi32(destination + i * bytes, mask, state[i]);
        }
    });
}

template <int Columns, bool Decrypt>
void cipherBlocks(const std::uint32_t* roundKeys, int rounds, const std::uint8_t* source,
                  std::uint8_t* destination, std::size_t blocks) {
    constexpr std::size_t inVector = vectorBlocks<Columns>;
    constexpr std::size_t inFlight = 8;
    constexpr auto whole = static_cast<__mmask16>((1U << (inVector * Columns)) - 1);
    const VectorKeys<Columns> keys(roundKeys, rounds);
    for (; blocks >= inFlight * inVector; blocks -= inFlight * inVector) {
        cipherVectors<Columns, Decrypt, inFlight>(keys, source, destination, whole);
        source += inFlight * vectorBytes<Columns>;
        destination += inFlight * vectorBytes<Columns>;
    }
    for (; blocks >= inVector; blocks -= inVector) {
        cipherVectors<Columns, Decrypt, 1>(keys, source, destination, whole);
        source += vectorBytes<Columns>;
        destination += vectorBytes<Columns>;
    }
    if (blocks > 0) {
        const auto rest = static_cast<__mmask16>((1U << (blocks * Columns)) - 1);
        cipherVectors<Columns, Decrypt, 1>(keys, source, destination, rest);
    }
}

}  // namespace

constexpr Implementation vaes512Implementation{
    Vaes512,
    "vaes_512",
    {cipherBlocks<4, false>, cipherBlocks<5, false>, cipherBlocks<6, false>, cipherBlocks<7, false>,
     cipherBlocks<8, false>},
    {cipherBlocks<4, true>, cipherBlocks<5, true>, cipherBlocks<6, true>, cipherBlocks<7, true>,
     cipherBlocks<8, true>}};

}  // namespace keeper::rijndael
