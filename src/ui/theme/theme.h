// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QObject>
#include <memory>

#include "platform/appearance.h"

class QFont;
class QTranslator;

namespace keeper {

/// `font` as the program's name is set in. One size for all windows: the first use of each costs
/// milliseconds.
[[nodiscard]] QFont titleFont(QFont font);

/// The program's look: style, palette, fonts, and the toolkit's own texts in Chinese.
class Theme final : public QObject {
    Q_OBJECT

  public:
    /// What a person may choose over the desktop's wish.
    enum class Choice { FollowDesktop, Light, Dark };

    /// Dresses the application at once. `appearance` must outlive this object.
    explicit Theme(const Appearance& appearance);
    ~Theme() override;

    void setChoice(Choice choice);
    [[nodiscard]] Choice choice() const { return m_choice; }
    [[nodiscard]] bool isDark() const { return m_isDark; }

  Q_SIGNALS:
    void changed();

  private:
    void refresh();

    const Appearance& m_appearance;
    std::unique_ptr<QTranslator> m_toolkitTexts;
    Choice m_choice = Choice::FollowDesktop;
    bool m_isDesktopDark = false;
    bool m_isDark = false;
};

}  // namespace keeper
