// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>

namespace keeper {

/// What MD5 and SHA-1 have in common: 64-byte blocks, and the padding of the last ones.
inline constexpr std::size_t kDigestBlock = 64;

/// The last one or two blocks of a message: its bytes behind the last whole block, the bit 1,
/// zeros, and the message's length in bits as 64-bit number. Wipes itself.
class PaddedTail {
  public:
    /// REQUIRES: tail.size() < 64 and tail.size() == totalBytes % 64.
    PaddedTail(std::span<const std::uint8_t> tail, std::uint64_t totalBytes,
               std::endian lengthOrder);
    ~PaddedTail();
    PaddedTail(const PaddedTail&) = delete;
    PaddedTail& operator=(const PaddedTail&) = delete;

    [[nodiscard]] const std::uint8_t* data() const { return m_bytes.data(); }
    [[nodiscard]] std::size_t blocks() const { return m_blocks; }

  private:
    std::array<std::uint8_t, 2 * kDigestBlock> m_bytes{};
    std::size_t m_blocks = 1;
};

/// Chaining words as upper-case hexadecimal digits, each word's bytes in `order`.
[[nodiscard]] QString digestText(std::span<const std::uint32_t> words, std::endian order);

}  // namespace keeper
