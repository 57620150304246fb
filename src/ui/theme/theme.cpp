// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/theme/theme.h"

#include <QApplication>
#include <QFont>
#include <QLibraryInfo>
#include <QTranslator>

#include "ui/theme/colors.h"
#include "ui/theme/icons.h"
#include "ui/theme/keeper_style.h"

namespace keeper {
namespace {

/// Chinese families by name: left to fallback, the toolkit mixes Chinese and Japanese glyph forms.
QFont programFont(QFont font) {
    font.setFamilies({QStringLiteral("Noto Sans CJK SC"), QStringLiteral("Source Han Sans SC"),
                      QStringLiteral("WenQuanYi Micro Hei"), QStringLiteral("Sans Serif")});
    // Below ten points the strokes of dense characters run into each other.
    constexpr qreal smallest = 10.0;
    if (font.pointSizeF() > 0 && font.pointSizeF() < smallest) {
        font.setPointSizeF(smallest);
    }
    return font;
}

}  // namespace

QFont titleFont(QFont font) {
    font.setPointSizeF(font.pointSizeF() * 1.6);
    font.setWeight(QFont::DemiBold);
    return font;
}

Theme::Theme(const Appearance& appearance)
    : m_appearance(appearance),
      m_toolkitTexts(std::make_unique<QTranslator>()),
      m_isDesktopDark(isDarkPalette(QApplication::palette())) {
    if (m_toolkitTexts->load(QStringLiteral("qtbase_zh_CN"),
                             QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
        QApplication::installTranslator(m_toolkitTexts.get());
    }
    QApplication::setFont(programFont(QApplication::font()));
    QApplication::setStyle(new KeeperStyle);
    connect(&m_appearance, &Appearance::schemeChanged, this, &Theme::refresh);
    m_isDark = !m_isDesktopDark;  // so that the first refresh() sets the palette
    refresh();
}

Theme::~Theme() = default;

void Theme::setChoice(Choice choice) {
    m_choice = choice;
    refresh();
}

void Theme::refresh() {
    bool isDark = m_choice == Choice::Dark;
    if (m_choice == Choice::FollowDesktop) {
        const Appearance::Scheme scheme = m_appearance.scheme();
        isDark = scheme == Appearance::Scheme::Unknown ? m_isDesktopDark
                                                       : scheme == Appearance::Scheme::Dark;
    }
    if (isDark == m_isDark && isDarkPalette(QApplication::palette()) == isDark &&
        QApplication::palette() == themePalette(isDark)) {
        return;
    }
    m_isDark = isDark;
    QApplication::setPalette(themePalette(isDark));
    Q_EMIT changed();
}

}  // namespace keeper
