// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QLineEdit>

namespace keeper {

/// A one-line edit from which nothing typed gets out: no copy, no cut, no drag, no middle-click
/// selection, and no input method unless that is allowed explicitly.
class KeyEdit final : public QLineEdit {
    Q_OBJECT

  public:
    explicit KeyEdit(QWidget* parent = nullptr);
    ~KeyEdit() override;

    /// Input methods are refused in hidden and shown mode alike: they keep what was typed in their
    /// own history.
    void setInputMethodAllowed(bool isAllowed);
    [[nodiscard]] bool isInputMethodAllowed() const { return m_isInputMethodAllowed; }
    void setShown(bool isShown);
    [[nodiscard]] bool isShown() const { return echoMode() == Normal; }
    /// Overwrites the text's memory as far as the toolkit lets us, then empties the box and its
    /// history of changes.
    void wipe();

    [[nodiscard]] QVariant inputMethodQuery(Qt::InputMethodQuery query) const override;

  Q_SIGNALS:
    void focusChanged();

  protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

  private:
    void applyInputMethod();

    bool m_isInputMethodAllowed = false;
};

}  // namespace keeper
