// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QComboBox>

namespace keeper {

/// A list of names that also takes a value of the entry's own. It offers nothing while its text may
/// only be read. Its text may be an indication: it says that there is such a value, or none, and is
/// no value itself.
class NameBox final : public QComboBox {
  public:
    /// What the logic shows, not what a person typed.
    void present(const QString& text);
    [[nodiscard]] bool isIndicating() const { return m_isIndicating; }
    /// What a person means by the edited text. The context menu and the mouse paste beside an
    /// indication, or into it.
    QString takeEdit(const QString& shown, const QString& text);

    void showPopup() override;

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

  private:
    [[nodiscard]] bool isReader() const;
    /// The first edit replaces an indication as a whole: half of it would become the secret.
    void giveWay();

    bool m_isIndicating = false;
};

}  // namespace keeper
