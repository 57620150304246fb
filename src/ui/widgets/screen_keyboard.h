// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QFrame>
#include <QList>

class QPushButton;

namespace keeper {

/// A keyboard on the screen, for secrets that no key logger shall see and for hands without keys.
/// It never takes the focus, and goes with the window that it belongs to.
class ScreenKeyboard final : public QFrame {
    Q_OBJECT

  public:
    explicit ScreenKeyboard(QWidget* owner);

    /// Below `place`, or above it where the screen ends.
    void showAt(const QWidget& place);

  Q_SIGNALS:
    void typed(const QString& text);
    void backspace();

  private:
    QPushButton* addKey(int row, int column, int width, const QString& text);
    void addCharacters();
    void showCharacters();

    /// A key for each place of the two sets of characters.
    QList<QPushButton*> m_characters;
    bool m_isShifted = false;
};

}  // namespace keeper
