// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

namespace keeper {

class Cryptor3;

/// The enciphered cells of the columns that hold passwords and numbers: the cipher's text form, and
/// for a text that its code page does not hold a wide form, which the text form never gives. Every
/// text has one cell, so that none stands in the way of column encryption.

/// The cell of a text; empty when the cipher failed. REQUIRES: neither is empty.
[[nodiscard]] QString encipheredCell(Cryptor3& cryptor, const QString& plain, const QString& key);

/// The text of a cell. A wrong key, or what is no cell, gives a wrong text or none.
[[nodiscard]] QString decipheredCell(Cryptor3& cryptor, const QString& cell, const QString& key);

}  // namespace keeper
