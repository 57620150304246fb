// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QSpinBox>

namespace keeper {

/// A number with arrows into which any digits can be typed, so that a number outside the range is
/// answered with words and not swallowed in silence.
class NumberBox final : public QSpinBox {
    Q_OBJECT

  public:
    explicit NumberBox(QWidget* parent = nullptr);

  Q_SIGNALS:
    /// Each change of the text, by keys and by arrows.
    void typed(const QString& text);
    /// The person went away from a text outside the range; value() is on display again.
    void leftUnfinished();

  protected:
    QValidator::State validate(QString& text, int& position) const override;
    void fixup(QString& text) const override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    mutable bool m_isUnfinished = false;
};

}  // namespace keeper
