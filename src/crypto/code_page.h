// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <QStringView>
#include <cstdint>
#include <span>
#include <vector>

namespace keeper {

/// The ANSI code page of all stored data: GBK (936).
///
/// A UTF-16 unit that the page does not hold becomes "?" (each half of a surrogate pair one). The
/// result may hold secrets: the caller wipes it.
[[nodiscard]] std::vector<std::uint8_t> ansiBytes(QStringView text);

/// The reverse. A byte that starts no character of the page becomes U+FFFD; no byte vanishes
/// silently, not even a lead byte at the end.
[[nodiscard]] QString ansiText(std::span<const std::uint8_t> bytes);

}  // namespace keeper
