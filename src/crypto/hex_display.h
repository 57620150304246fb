// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <QStringView>
#include <cstdint>
#include <span>
#include <vector>

namespace keeper {

/// Two upper-case hexadecimal digits a byte, two blanks between groups of `groupBytes` bytes and
/// none at the end. REQUIRES: groupBytes > 0.
[[nodiscard]] QString BytesToHexDisplay(std::span<const std::uint8_t> data, int groupBytes);

/// Reads the digits of `text`, in either case, pairwise from the left; an odd digit at the end is
/// dropped. A unit counts by its low byte, and one that is no digit is skipped. Returns the number
/// of bytes.
int HexDisplayToBytes(QStringView text, std::vector<std::uint8_t>& bytes);

}  // namespace keeper
