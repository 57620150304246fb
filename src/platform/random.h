// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <cstdint>
#include <span>

namespace keeper {

/// Random bytes fit for keys. Implementations throw std::runtime_error when the source fails; they
/// never return weaker bytes.
class Random {
  public:
    virtual ~Random() = default;
    virtual void fill(std::span<std::uint8_t> bytes) = 0;

    /// Evenly distributed in 0 .. bound-1. REQUIRES: bound > 0.
    [[nodiscard]] std::uint32_t below(std::uint32_t bound);
};

/// The operating system's generator (getrandom).
class SystemRandom final : public Random {
  public:
    void fill(std::span<std::uint8_t> bytes) override;
};

}  // namespace keeper
