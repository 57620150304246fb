// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later
//
// AES-NI with SSSE3 and SSE4.1: processors since 2010.

#include "crypto/rijndael.h"
#include "crypto/rijndael_halves.h"
#include "crypto/rijndael_xmm.h"

namespace keeper::rijndael {
namespace {

/// Blocks in flight, as measured: fewer leave the instruction's latency bare, more spill registers.
template <int Columns>
constexpr std::size_t inFlight = Columns == 4   ? 8
                                 : Columns == 8 ? 5
                                                : 4;

template <int Columns, bool Decrypt>
void cipherBlocks(const std::uint32_t* key, int rounds, const std::uint8_t* source,
                  std::uint8_t* destination, std::size_t blocks) {
    cipherGroups<Xmm, Columns, Decrypt, inFlight<Columns>>(key, rounds, source, destination,
                                                           blocks);
    cipherGroups<Xmm, Columns, Decrypt, 1>(key, rounds, source, destination, blocks);
}

}  // namespace

constexpr Implementation aesNiImplementation{
    AesNi,
    "aes_ni",
    {cipherBlocks<4, false>, cipherBlocks<5, false>, cipherBlocks<6, false>, cipherBlocks<7, false>,
     cipherBlocks<8, false>},
    {cipherBlocks<4, true>, cipherBlocks<5, true>, cipherBlocks<6, true>, cipherBlocks<7, true>,
     cipherBlocks<8, true>}};

}  // namespace keeper::rijndael
