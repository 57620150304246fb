// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QColor>
#include <QPalette>

namespace keeper {

/// Colours with a meaning, beyond those that a palette has.
enum class ThemeColor { Accent, Info, Good, Warning, Danger, Border, Muted };

[[nodiscard]] QColor themeColor(ThemeColor role, bool isDark);
/// Contrast of text on its ground is at least 4.5 : 1 in both palettes, disabled text excepted.
[[nodiscard]] QPalette themePalette(bool isDark);
[[nodiscard]] bool isDarkPalette(const QPalette& palette);

}  // namespace keeper
