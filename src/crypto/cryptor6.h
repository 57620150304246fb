// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <cstdint>
#include <span>
#include <vector>

namespace keeper {

/// Base64 (RFC 4648, standard alphabet, "=" padding) of whole byte arrays.
class Cryptor6 {
  public:
    [[nodiscard]] static QString Encode(std::span<const std::uint8_t> data);
    /// The padding may be missing; anything else outside the alphabet gives an empty result.
    [[nodiscard]] static std::vector<std::uint8_t> Decode(const QString& text);
};

}  // namespace keeper
