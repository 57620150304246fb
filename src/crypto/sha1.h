// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace keeper {

/// The five chaining words of SHA-1 (FIPS 180-1).
using Sha1State = std::array<std::uint32_t, 5>;

inline constexpr Sha1State kSha1Start = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476,
                                         0xC3D2E1F0};

/// Runs `count` blocks of 64 bytes, at any address, through the compression function.
using Sha1Transform = void (*)(Sha1State& state, const std::uint8_t* blocks, std::size_t count);

struct Sha1Path {
    const char* name;
    Sha1Transform transform;
};

/// The fastest path of this processor; without hardware when that is not allowed.
[[nodiscard]] Sha1Path sha1Path(bool allowHardware = true);

void sha1TransformPortable(Sha1State& state, const std::uint8_t* blocks, std::size_t count);

/// The SHA extensions of x86-64 processors. REQUIRES: sha1NiAvailable().
void sha1TransformNi(Sha1State& state, const std::uint8_t* blocks, std::size_t count);
[[nodiscard]] bool sha1NiAvailable();

}  // namespace keeper
