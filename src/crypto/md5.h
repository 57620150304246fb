// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace keeper {

/// The four chaining words of MD5 (RFC 1321).
using Md5State = std::array<std::uint32_t, 4>;

inline constexpr Md5State kMd5Start = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476};

/// Runs `count` blocks of 64 bytes, at any address, through the compression function.
void md5Transform(Md5State& state, const std::uint8_t* blocks, std::size_t count);

}  // namespace keeper
