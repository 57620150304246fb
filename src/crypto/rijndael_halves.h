// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later
//
// The round by the processor's AES instructions, for vectors of one or more 128-bit lanes.
//
// A block wider than 128 bits lies in two halves: the first four columns and the last four, so that
// blocks of 5 to 7 columns hold some columns twice. The instruction does its own ShiftRows over the
// four columns of a lane; before each round the bytes are permuted so that this makes the ShiftRows
// of the wide block (S. Gueron, "Intel AES New Instructions Set", 2010, on Rijndael-256).
//
// Only for the files that are compiled for a processor's extensions; all is in an unnamed
// namespace, so that no other file can end up with code for a processor that it does not have.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "crypto/rijndael.h"
#include "crypto/rijndael_tables.h"

namespace keeper::rijndael {
namespace {

/// Where the bytes of one half come from: pick by `fromLast` between the halves, then shuffle. For
/// 7 columns two bytes of one place are wanted, and each half has its own shuffle.
struct HalfPlan {
    bool blends = true;
    std::array<std::uint8_t, 16> fromLast{};
    std::array<std::uint8_t, 16> shuffle{};
    std::array<std::uint8_t, 16> shuffleFirst{};
    std::array<std::uint8_t, 16> shuffleLast{};
};

constexpr std::size_t byteIndex(int column, int row) {
    return 4 * static_cast<std::size_t>(column) + static_cast<std::size_t>(row);
}

/// The column of the block that byte `row` of column place `place` of a lane must hold, so that the
/// instruction's ShiftRows moves it to where it belongs. `firstColumn` is the lane's.
constexpr int wantedColumn(int columns, bool decrypt, int firstColumn, int place, int row) {
    const int offset = shiftOffset(columns, row);
    const int goesTo = (decrypt ? place + row : place - row + 4) % 4;
    return (firstColumn + goesTo + (decrypt ? columns - offset : offset)) % columns;
}

constexpr HalfPlan planHalf(int columns, bool decrypt, bool lastHalf) {
    HalfPlan plan;
    const int overlap = columns - 4;
    const int firstColumn = lastHalf ? overlap : 0;
    for (int row = 0; row < 4; ++row) {
        bool found = false;
        // Bit i of `choice`: place i takes its column from the last half.
        for (int choice = 0; choice < 16 && !found; ++choice) {
            std::array<int, 4> from{};
            int used = 0;
            bool fits = true;
            for (int place = 0; place < 4; ++place) {
                const bool last = (choice >> place & 1) != 0;
                const int column = wantedColumn(columns, decrypt, firstColumn, place, row);
                const int in = last ? column - overlap : column;
                fits = fits && in >= 0 && in < 4 && (used >> in & 1) == 0;
                if (!fits) {
                    break;
                }
                used |= 1 << in;
                from[static_cast<std::size_t>(place)] = in;
            }
            if (fits) {
                found = true;
                for (int place = 0; place < 4; ++place) {
                    const int in = from[static_cast<std::size_t>(place)];
                    plan.shuffle[byteIndex(place, row)] = static_cast<std::uint8_t>(4 * in + row);
                    plan.fromLast[byteIndex(in, row)] = (choice >> place & 1) != 0 ? 0xFF : 0;
                }
            }
        }
        plan.blends = plan.blends && found;
        for (int place = 0; place < 4; ++place) {
            const int column = wantedColumn(columns, decrypt, firstColumn, place, row);
            const auto byte = byteIndex(place, row);
            constexpr std::uint8_t nothing = 0x80;
            plan.shuffleFirst[byte] =
                column < 4 ? static_cast<std::uint8_t>(4 * column + row) : nothing;
            plan.shuffleLast[byte] =
                column < 4 ? nothing : static_cast<std::uint8_t>(4 * (column - overlap) + row);
        }
    }
    return plan;
}

/// Calls `body` with 0, 1, ... Count-1 as compile-time constants: the states stay in registers at
/// any optimisation level.
template <std::size_t... I, typename Body>
[[gnu::always_inline]] inline void repeat(std::index_sequence<I...> /*indices*/, const Body& body) {
    (body(I), ...);
}

template <typename Vector, bool Decrypt>
[[gnu::always_inline]] inline Vector aesRound(Vector state, Vector key) {
    return Decrypt ? Vector::decryptRound(state, key) : Vector::encryptRound(state, key);
}

template <typename Vector, bool Decrypt>
[[gnu::always_inline]] inline Vector aesLastRound(Vector state, Vector key) {
    return Decrypt ? Vector::decryptLastRound(state, key) : Vector::encryptLastRound(state, key);
}

/// 128-bit blocks: nothing to permute.
template <typename Vector, bool Decrypt, std::size_t Count>
[[gnu::always_inline]] inline void cipherNarrow(const std::uint32_t* key, int rounds,
                                                const std::uint8_t* source,
                                                std::uint8_t* destination) {
    constexpr auto all = std::make_index_sequence<Count>();
    constexpr std::size_t bytes = 16 * Vector::lanes;
    Vector state[Count];
    const Vector whitening = Vector::broadcast(key);
    repeat(all, [&](std::size_t i) { state[i] = Vector::load(source + i * bytes) ^ whitening; });
    for (int round = 1; round < rounds; ++round) {
        key += 4;
        const Vector roundKey = Vector::broadcast(key);
        repeat(all,
               [&](std::size_t i) { state[i] = aesRound<Vector, Decrypt>(state[i], roundKey); });
    }
    const Vector lastKey = Vector::broadcast(key + 4);
    repeat(all, [&](std::size_t i) {
        aesLastRound<Vector, Decrypt>(state[i], lastKey).store(destination + i * bytes);
    });
}

template <typename Vector, int Columns, bool Decrypt>
struct Permutation {
    static constexpr HalfPlan first = planHalf(Columns, Decrypt, false);
    static constexpr HalfPlan last = planHalf(Columns, Decrypt, true);

    [[gnu::always_inline]] static Vector half(const HalfPlan& plan, Vector a, Vector b) {
        if constexpr (first.blends && last.blends) {
            return Vector::shuffle(Vector::blend(a, b, Vector::broadcast(plan.fromLast.data())),
                                   Vector::broadcast(plan.shuffle.data()));
        } else {
            return Vector::shuffle(a, Vector::broadcast(plan.shuffleFirst.data())) ^
                   Vector::shuffle(b, Vector::broadcast(plan.shuffleLast.data()));
        }
    }
    [[gnu::always_inline]] static void apply(Vector& a, Vector& b) {
        const Vector permuted = half(first, a, b);
        b = half(last, a, b);
        a = permuted;
    }
};

/// `Count` vectors of `Vector::lanes` blocks each, all in flight at once.
template <typename Vector, int Columns, bool Decrypt, std::size_t Count>
[[gnu::always_inline]] inline void cipherWide(const std::uint32_t* key, int rounds,
                                              const std::uint8_t* source,
                                              std::uint8_t* destination) {
    constexpr auto all = std::make_index_sequence<Count>();
    constexpr std::size_t block = 4 * Columns;
    constexpr std::size_t bytes = block * Vector::lanes;
    using Permute = Permutation<Vector, Columns, Decrypt>;
    Vector a[Count];
    Vector b[Count];
    Vector keyA = Vector::broadcast(key);
    Vector keyB = Vector::broadcast(key + Columns - 4);
    repeat(all, [&](std::size_t i) {
        a[i] = Vector::gather(source + i * bytes, block) ^ keyA;
        b[i] = Vector::gather(source + i * bytes + block - 16, block) ^ keyB;
    });
    for (int round = 1; round < rounds; ++round) {
        key += Columns;
        keyA = Vector::broadcast(key);
        keyB = Vector::broadcast(key + Columns - 4);
        repeat(all, [&](std::size_t i) {
            Permute::apply(a[i], b[i]);
            a[i] = aesRound<Vector, Decrypt>(a[i], keyA);
            b[i] = aesRound<Vector, Decrypt>(b[i], keyB);
        });
    }
    key += Columns;
    keyA = Vector::broadcast(key);
    keyB = Vector::broadcast(key + Columns - 4);
    repeat(all, [&](std::size_t i) {
        Permute::apply(a[i], b[i]);
        // Columns that stand in both halves are written twice, with the same bytes.
        aesLastRound<Vector, Decrypt>(a[i], keyA).scatter(destination + i * bytes, block);
        aesLastRound<Vector, Decrypt>(b[i], keyB)
            .scatter(destination + i * bytes + block - 16, block);
    });
}

template <typename Vector, int Columns, bool Decrypt, std::size_t Count>
[[gnu::always_inline]] inline void cipherGroups(const std::uint32_t* key, int rounds,
                                                const std::uint8_t*& source,
                                                std::uint8_t*& destination, std::size_t& blocks) {
    constexpr std::size_t group = Count * Vector::lanes;
    for (; blocks >= group; blocks -= group) {
        if constexpr (Columns == 4) {
            cipherNarrow<Vector, Decrypt, Count>(key, rounds, source, destination);
        } else {
            cipherWide<Vector, Columns, Decrypt, Count>(key, rounds, source, destination);
        }
        source += group * 4 * Columns;
        destination += group * 4 * Columns;
    }
}

}  // namespace
}  // namespace keeper::rijndael
