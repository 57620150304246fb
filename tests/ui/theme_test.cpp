// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/theme/theme.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QImage>
#include <algorithm>
#include <cmath>

#include "support/fake_desktop.h"
#include "ui/theme/colors.h"
#include "ui/theme/icons.h"

namespace keeper {
namespace {

/// Relative luminance and contrast as WCAG 2.1 defines them.
double luminance(const QColor& color) {
    const auto linear = [](double c) {
        return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}

double contrast(const QColor& a, const QColor& b) {
    const auto [low, high] = std::minmax({luminance(a), luminance(b)});
    return (high + 0.05) / (low + 0.05);
}

TEST(Theme, EveryTextStandsOutFromItsGround) {
    for (const bool isDark : {false, true}) {
        const QPalette palette = themePalette(isDark);
        EXPECT_EQ(isDarkPalette(palette), isDark);
        for (const auto& [ink, ground] : {std::pair{QPalette::WindowText, QPalette::Window},
                                          std::pair{QPalette::Text, QPalette::Base},
                                          std::pair{QPalette::Text, QPalette::AlternateBase},
                                          std::pair{QPalette::PlaceholderText, QPalette::Base},
                                          std::pair{QPalette::ButtonText, QPalette::Button},
                                          std::pair{QPalette::HighlightedText, QPalette::Highlight},
                                          std::pair{QPalette::ToolTipText, QPalette::ToolTipBase},
                                          std::pair{QPalette::Link, QPalette::Window}}) {
            EXPECT_GE(contrast(palette.color(ink), palette.color(ground)), 4.5)
                << isDark << ' ' << ink << '/' << ground;
        }
        for (const auto role : {ThemeColor::Good, ThemeColor::Warning, ThemeColor::Danger,
                                ThemeColor::Muted, ThemeColor::Accent}) {
            EXPECT_GE(contrast(themeColor(role, isDark), palette.color(QPalette::Window)), 4.5)
                << isDark << ' ' << static_cast<int>(role);
        }
    }
}

QColor middleOfPlus() {
    return glyphIcon(Glyph::Add).pixmap(QSize(48, 48), 1.0).toImage().pixelColor(24, 24);
}

TEST(Theme, FollowsTheDesktopUntilAPersonChooses) {
    FakeAppearance desktop;
    Theme theme(desktop);
    desktop.set(Appearance::Scheme::Dark);
    EXPECT_TRUE(theme.isDark());
    EXPECT_TRUE(isDarkPalette(QApplication::palette()));
    EXPECT_GT(middleOfPlus().lightness(), 180);
    theme.setChoice(Theme::Choice::Light);
    EXPECT_FALSE(theme.isDark());
    EXPECT_LT(middleOfPlus().lightness(), 80);
    desktop.set(Appearance::Scheme::Dark);
    EXPECT_FALSE(theme.isDark());
    theme.setChoice(Theme::Choice::FollowDesktop);
    EXPECT_TRUE(theme.isDark());
    desktop.set(Appearance::Scheme::Light);
    EXPECT_FALSE(isDarkPalette(QApplication::palette()));
}

TEST(Icons, EachGlyphDrawsSomething) {
    for (int i = 0; i <= static_cast<int>(Glyph::Website); ++i) {
        const QImage image = glyphIcon(static_cast<Glyph>(i)).pixmap(QSize(24, 24), 1.0).toImage();
        QImage blank(image.size(), image.format());
        blank.fill(Qt::transparent);
        EXPECT_NE(image, blank) << i;
    }
    EXPECT_NE(programIcon().pixmap(64, 64).toImage(), lockedProgramIcon().pixmap(64, 64).toImage());
}

}  // namespace
}  // namespace keeper
