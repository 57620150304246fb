// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/widgets/strength_meter.h"

#include <QEvent>
#include <QHBoxLayout>

#include "ui/theme/colors.h"

namespace keeper {

StrengthMeter::StrengthMeter(QWidget* parent)
    : QWidget(parent), prgbStrength(new QProgressBar(this)), lblStrength(new QLabel(this)) {
    prgbStrength->setObjectName(QStringLiteral("prgbStrength"));
    prgbStrength->setAccessibleName(QStringLiteral("强度"));
    prgbStrength->setRange(0, 100);
    prgbStrength->setTextVisible(false);
    lblStrength->setObjectName(QStringLiteral("lblStrength"));
    lblStrength->setMinimumWidth(fontMetrics().horizontalAdvance(QStringLiteral("00位：中强")));

    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(prgbStrength, 1);
    row->addWidget(lblStrength);
    setStrength(0, {});
}

void StrengthMeter::setStrength(int value, const QString& text) {
    prgbStrength->setValue(qBound(0, value, 100));
    lblStrength->setText(text);
    prgbStrength->setAccessibleDescription(text);
    applyColor();
}

void StrengthMeter::applyColor() {
    const int value = prgbStrength->value();
    const ThemeColor role = value <= 25   ? ThemeColor::Danger
                            : value <= 50 ? ThemeColor::Warning
                            : value <= 75 ? ThemeColor::Info
                                          : ThemeColor::Good;
    QPalette colors = palette();
    colors.setColor(QPalette::Highlight, themeColor(role, isDarkPalette(colors)));
    prgbStrength->setPalette(colors);
}

void StrengthMeter::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        applyColor();
    }
}

}  // namespace keeper
