// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QLabel>
#include <QProgressBar>
#include <QWidget>

namespace keeper {

/// Shows how strong a secret is: a bar in quarters that goes from red over amber and blue to green,
/// and words. What counts as strong is decided elsewhere.
class StrengthMeter final : public QWidget {
    Q_OBJECT

  public:
    explicit StrengthMeter(QWidget* parent = nullptr);
    /// `value` is 0 .. 100; `text` such as "8位：中强".
    void setStrength(int value, const QString& text);

  protected:
    void changeEvent(QEvent* event) override;

  private:
    void applyColor();

    QProgressBar* prgbStrength;
    QLabel* lblStrength;
};

}  // namespace keeper
