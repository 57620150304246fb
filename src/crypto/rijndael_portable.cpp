// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later
//
// The table-driven path: one lookup a byte, four lookups and four xors a column. It is complete
// alone, and the yardstick of the others.

#include <bit>
#include <cstring>
#include <utility>

#include "crypto/rijndael.h"
#include "crypto/rijndael_tables.h"

namespace keeper::rijndael {
namespace {

inline std::uint32_t littleEndian(std::uint32_t word) {
    if constexpr (std::endian::native == std::endian::big) {
        return __builtin_bswap32(word);
    }
    return word;
}

inline std::uint32_t loadColumn(const std::uint8_t* bytes) {
    std::uint32_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return littleEndian(word);
}

inline void storeColumn(std::uint8_t* bytes, std::uint32_t word) {
    word = littleEndian(word);
    std::memcpy(bytes, &word, sizeof word);
}

/// The column whose byte of row `row` enters column `column` of the next state.
template <int Columns, bool Decrypt>
constexpr std::size_t sourceColumn(std::size_t column, int row) {
    const int offset = shiftOffset(Columns, row);
    return (column + static_cast<std::size_t>(Decrypt ? Columns - offset : offset)) % Columns;
}

template <std::size_t Columns>
using State = std::array<std::uint32_t, Columns>;

/// Columns as a pack: the compiler sees every index as a constant, at any optimisation level.
template <int Columns, bool Decrypt, std::size_t... C>
[[gnu::always_inline]] inline State<Columns> fullRound(const State<Columns>& s,
                                                       const std::uint32_t* key,
                                                       std::index_sequence<C...> /*columns*/) {
    const auto& t = Decrypt ? tables.decrypt : tables.encrypt;
    return {(t[0][s[C] & 0xFF] ^ t[1][s[sourceColumn<Columns, Decrypt>(C, 1)] >> 8 & 0xFF] ^
             t[2][s[sourceColumn<Columns, Decrypt>(C, 2)] >> 16 & 0xFF] ^
             t[3][s[sourceColumn<Columns, Decrypt>(C, 3)] >> 24] ^ key[C])...};
}

template <int Columns, bool Decrypt, std::size_t... C>
[[gnu::always_inline]] inline State<Columns> lastRound(const State<Columns>& s,
                                                       const std::uint32_t* key,
                                                       std::index_sequence<C...> /*columns*/) {
    const auto& box = Decrypt ? tables.inverseSbox : tables.sbox;
    return {(((box[s[C] & 0xFF] & 0xFF) |
              (box[s[sourceColumn<Columns, Decrypt>(C, 1)] >> 8 & 0xFF] & 0xFF00) |
              (box[s[sourceColumn<Columns, Decrypt>(C, 2)] >> 16 & 0xFF] & 0xFF0000) |
              (box[s[sourceColumn<Columns, Decrypt>(C, 3)] >> 24] & 0xFF000000)) ^
             key[C])...};
}

template <int Columns, bool Decrypt, typename AfterRound>
[[gnu::always_inline]] inline void cipherBlock(const std::uint32_t* key, int rounds,
                                               const std::uint8_t* source,
                                               std::uint8_t* destination, AfterRound&& afterRound) {
    constexpr auto columns = std::make_index_sequence<Columns>();
    State<Columns> state;
    for (std::size_t c = 0; c < Columns; ++c) {
        state[c] = loadColumn(source + 4 * c) ^ key[c];
    }
    for (int round = 1; round < rounds; ++round) {
        key += Columns;
        state = fullRound<Columns, Decrypt>(state, key, columns);
        afterRound();
    }
    state = lastRound<Columns, Decrypt>(state, key + Columns, columns);
    for (std::size_t c = 0; c < Columns; ++c) {
        storeColumn(destination + 4 * c, state[c]);
    }
}

template <int Columns, bool Decrypt>
void cipherBlocks(const std::uint32_t* roundKeys, int rounds, const std::uint8_t* source,
                  std::uint8_t* destination, std::size_t blocks) {
    for (; blocks > 0; --blocks) {
        cipherBlock<Columns, Decrypt>(roundKeys, rounds, source, destination, [] {});
        source += 4 * Columns;
        destination += 4 * Columns;
    }
}

template <int Columns>
void cipherOne(const KeySchedule& schedule, bool decrypt, const std::uint8_t* source,
               std::uint8_t* destination, void (*afterRound)(void*), void* context) {
    const auto look = [&] { afterRound(context); };
    if (decrypt) {
        cipherBlock<Columns, true>(schedule.reverse.data(), schedule.rounds, source, destination,
                                   look);
    } else {
        cipherBlock<Columns, false>(schedule.forward.data(), schedule.rounds, source, destination,
                                    look);
    }
}

}  // namespace

constexpr Implementation portableImplementation{
    Portable,
    "portable",
    {cipherBlocks<4, false>, cipherBlocks<5, false>, cipherBlocks<6, false>, cipherBlocks<7, false>,
     cipherBlocks<8, false>},
    {cipherBlocks<4, true>, cipherBlocks<5, true>, cipherBlocks<6, true>, cipherBlocks<7, true>,
     cipherBlocks<8, true>}};

void cipherBlockByRounds(const KeySchedule& schedule, int columns, bool decrypt,
                         const std::uint8_t* source, std::uint8_t* destination,
                         void (*afterRound)(void* context), void* context) {
    switch (columns) {
        case 4:
            return cipherOne<4>(schedule, decrypt, source, destination, afterRound, context);
        case 5:
            return cipherOne<5>(schedule, decrypt, source, destination, afterRound, context);
        case 6:
            return cipherOne<6>(schedule, decrypt, source, destination, afterRound, context);
        case 7:
            return cipherOne<7>(schedule, decrypt, source, destination, afterRound, context);
        default:
            return cipherOne<8>(schedule, decrypt, source, destination, afterRound, context);
    }
}

}  // namespace keeper::rijndael
