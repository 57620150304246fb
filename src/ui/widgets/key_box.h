// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QLabel>
#include <QToolButton>
#include <QWidget>

#include "platform/keyboard_state.h"
#include "ui/widgets/key_edit.h"

namespace keeper {

class ScreenKeyboard;

/// Whether a text holds characters that look like those of the keyboard and are not: full-width
/// letters, digits and signs, the wide blank.
[[nodiscard]] bool hasFullWidth(const QString& text);

/// The box for login keys and passwords: the edit, a button that shows the text, a switch that lets
/// input methods in for a key with Chinese characters, a keyboard on the screen, and below them one
/// line that warns while Caps Lock is on, full-width characters were entered, or what was entered
/// did not all find room.
///
/// The warning's line keeps its place when it is empty, so that nothing jumps.
class KeyBox final : public QWidget {
    Q_OBJECT

  public:
    /// `keyboard` must outlive the box. `name` is what assistive programs read out.
    KeyBox(const KeyboardState& keyboard, const QString& name, QWidget* parent = nullptr);
    ~KeyBox() override;

    [[nodiscard]] QString text() const { return m_edit->text(); }
    /// Replaces the text without textEdited().
    void setText(const QString& text);
    void wipe() { m_edit->wipe(); }
    void setMaxLength(int length) { m_edit->setMaxLength(length); }
    void setPlaceholderText(const QString& text) { m_edit->setPlaceholderText(text); }
    /// Tool tip of the edit alone, such as a person's own hint for the key.
    void setHint(const QString& hint) { m_edit->setToolTip(hint); }
    void setShown(bool isShown);
    /// For texts that mostly are Chinese.
    void setInputMethodAllowed(bool isAllowed) { m_language->setChecked(isAllowed); }
    /// Without the button a stored key cannot be brought to light.
    void setShowButtonVisible(bool isVisible);
    void selectAll() { m_edit->selectAll(); }
    [[nodiscard]] QString warning() const { return m_warning->text(); }
    /// For the form's object name, focus chain and event filters.
    [[nodiscard]] KeyEdit* edit() const { return m_edit; }

  Q_SIGNALS:
    /// By the person, not by setText().
    void textEdited();
    void textChanged();
    void returnPressed();

  protected:
    void changeEvent(QEvent* event) override;

  private:
    void updateWarning();
    void showKeyboard();

    const KeyboardState& m_keyboard;
    KeyEdit* m_edit;
    QToolButton* m_show;
    QToolButton* m_language;
    QToolButton* cmdKeyboard;
    ScreenKeyboard* m_screenKeyboard = nullptr;
    QLabel* m_warningIcon;
    QLabel* m_warning;
    bool m_isCut = false;
};

}  // namespace keeper
