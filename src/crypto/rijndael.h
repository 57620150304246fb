// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

/// The Rijndael block cipher (Daemen and Rijmen, "AES Proposal: Rijndael", 1999; FIPS 197) for keys
/// and blocks of 4 to 8 columns of 32 bits: key schedule and runs of blocks. Nothing here knows of
/// stops, messages or files.
namespace keeper::rijndael {

inline constexpr int maxColumns = 8;
inline constexpr int maxRounds = 14;
inline constexpr std::size_t maxKeyWords = 120;

/// An expanded key. Words behind the schedule's end are 0.
struct KeySchedule {
    int rounds = 0;
    int columns = 0;
    std::array<std::uint32_t, maxKeyWords> forward{};
    /// For the equivalent inverse cipher: groups in reverse order, the inner ones through
    /// InvMixColumns.
    std::array<std::uint32_t, maxKeyWords> reverse{};

    void wipe() noexcept;
};

/// REQUIRES: key of 16, 20, 24, 28 or 32 bytes; 4 to 8 block columns.
void expandKey(KeySchedule& schedule, std::span<const std::uint8_t> key, int blockColumns);

/// Enciphers or deciphers `blocks` blocks from `source` to `destination`, at any address; the two
/// are the same buffer or do not overlap. `roundKeys` are the forward or the reverse words.
using BlocksFunction = void (*)(const std::uint32_t* roundKeys, int rounds,
                                const std::uint8_t* source, std::uint8_t* destination,
                                std::size_t blocks);

/// The paths, slowest first. Each gives the same bytes.
enum Path : unsigned {
    Portable = 1U << 0U,
    AesNi = 1U << 1U,
    Vaes256 = 1U << 2U,
    Vaes512 = 1U << 3U,
    AllPaths = Portable | AesNi | Vaes256 | Vaes512,
};

struct Implementation {
    Path path;
    /// As benchmarks and tests print it.
    const char* name;
    /// By block columns - 4.
    std::array<BlocksFunction, 5> encrypt;
    std::array<BlocksFunction, 5> decrypt;
};

/// The fastest path that this processor has among the allowed ones, a union of Path values. The
/// portable path is always allowed. The processor is asked once.
[[nodiscard]] const Implementation& selectImplementation(unsigned allowed = AllPaths);

/// One block by the portable path, which looks at the caller at the end of every full round:
/// `afterRound` may throw, the destination is then untouched.
/// REQUIRES: columns is 4 to 8.
void cipherBlockByRounds(const KeySchedule& schedule, int columns, bool decrypt,
                         const std::uint8_t* source, std::uint8_t* destination,
                         void (*afterRound)(void* context), void* context);

extern const Implementation portableImplementation;
#ifdef KEEPER_X86_64
extern const Implementation aesNiImplementation;
extern const Implementation vaes256Implementation;
extern const Implementation vaes512Implementation;
#endif

}  // namespace keeper::rijndael
