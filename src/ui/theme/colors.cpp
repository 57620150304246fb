// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/theme/colors.h"

namespace keeper {

QColor themeColor(ThemeColor role, bool isDark) {
    switch (role) {
        case ThemeColor::Accent:
            return isDark ? QColor(0x4fb8aa) : QColor(0x1d7a70);
        case ThemeColor::Info:
            return isDark ? QColor(0x74aef0) : QColor(0x2563b8);
        case ThemeColor::Good:
            return isDark ? QColor(0x6cc28a) : QColor(0x1f7a45);
        case ThemeColor::Warning:
            return isDark ? QColor(0xe3b04b) : QColor(0x8f5f00);
        case ThemeColor::Danger:
            return isDark ? QColor(0xf08a80) : QColor(0xb3261e);
        case ThemeColor::Border:
            return isDark ? QColor(0x4a5356) : QColor(0xc3cccc);
        case ThemeColor::Muted:
            return isDark ? QColor(0xa3aeb0) : QColor(0x56625f);
    }
    Q_UNREACHABLE();
}

QPalette themePalette(bool isDark) {
    const auto pick = [isDark](QRgb light, QRgb dark) { return QColor(isDark ? dark : light); };
    const QColor text = pick(0x1c2524, 0xe4e9e8);
    const QColor ground = pick(0xf4f6f6, 0x1f2426);
    const QColor accent = themeColor(ThemeColor::Accent, isDark);
    QPalette palette;
    palette.setColor(QPalette::Window, ground);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Base, pick(0xffffff, 0x171b1d));
    palette.setColor(QPalette::AlternateBase, pick(0xf3f7f6, 0x1c2123));
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::PlaceholderText, themeColor(ThemeColor::Muted, isDark));
    palette.setColor(QPalette::Button, pick(0xffffff, 0x2b3235));
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::BrightText, themeColor(ThemeColor::Danger, isDark));
    palette.setColor(QPalette::ToolTipBase, pick(0x2a3332, 0x343c3f));
    palette.setColor(QPalette::ToolTipText, QColor(0xf2f5f4));
    palette.setColor(QPalette::Highlight, accent);
    palette.setColor(QPalette::HighlightedText, pick(0xffffff, 0x0d1716));
    palette.setColor(QPalette::Link, accent);
    palette.setColor(QPalette::LinkVisited, accent);
    palette.setColor(QPalette::Light, pick(0xffffff, 0x394144));
    palette.setColor(QPalette::Midlight, pick(0xe9eeed, 0x2f3639));
    palette.setColor(QPalette::Mid, themeColor(ThemeColor::Border, isDark));
    palette.setColor(QPalette::Dark, pick(0x9aa6a4, 0x5d686b));
    palette.setColor(QPalette::Shadow, pick(0x6b7775, 0x0b0d0e));
    const QColor faded = pick(0x97a1a0, 0x6c777a);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, faded);
    }
    palette.setColor(QPalette::Disabled, QPalette::Base, ground);
    palette.setColor(QPalette::Disabled, QPalette::Button, ground);
    palette.setColor(QPalette::Disabled, QPalette::Highlight, faded);
    return palette;
}

bool isDarkPalette(const QPalette& palette) {
    return palette.color(QPalette::Window).lightness() <
           palette.color(QPalette::WindowText).lightness();
}

}  // namespace keeper
