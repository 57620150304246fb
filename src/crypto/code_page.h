// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QChar>
#include <QString>
#include <QStringView>
#include <cstdint>
#include <span>
#include <vector>

namespace keeper {

/// The ANSI code page of all stored data: GBK (936).
///
/// Bytes 0x81 to 0xFE start a double-byte character and mean nothing alone. So that no byte is ever
/// lost, a byte that starts no character is the private-use character U+F700 + byte, and that
/// character is the byte again: ansiBytes(ansiText(b)) is b for every sequence b. Single bytes are
/// therefore characters too (random passwords are made of them).

/// A UTF-16 unit that the page does not hold becomes "?" (each half of a surrogate pair one). The
/// result may hold secrets: the caller wipes it.
[[nodiscard]] std::vector<std::uint8_t> ansiBytes(QStringView text);

/// Whether the page holds every unit, so that no two such texts have the same bytes.
[[nodiscard]] bool isInCodePage(QStringView text);

/// The reverse. No byte vanishes, not even a lead byte at the end.
[[nodiscard]] QString ansiText(std::span<const std::uint8_t> bytes);

/// Code of one unit: 0 to 255 for a single byte, lead * 256 + trail for a double-byte character.
[[nodiscard]] std::uint16_t ansiCode(QChar character);

/// The character that a single byte stands for when it is alone; ansiCode() gives the byte back.
[[nodiscard]] QChar ansiCharacter(std::uint8_t code);

}  // namespace keeper
