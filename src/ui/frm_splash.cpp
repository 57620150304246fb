// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/frm_splash.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>

#include "app/program_info.h"
#include "ui/theme/colors.h"
#include "ui/theme/icons.h"
#include "ui/theme/theme.h"

namespace keeper {

frmSplash::frmSplash(QWidget* parent)
    : QWidget(parent, Qt::SplashScreen | Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus) {
    setObjectName(QStringLiteral("frmSplash"));
    setAccessibleName(QStringLiteral("正在启动"));
    setAttribute(Qt::WA_TranslucentBackground);
    const int unit = fontMetrics().height();

    auto* icon = new QLabel(this);
    icon->setPixmap(programIcon().pixmap(QSize(unit * 5, unit * 5), devicePixelRatioF()));

    auto* title = new QLabel(programTitle(), this);
    title->setFont(titleFont(title->font()));

    auto* version = new QLabel(QStringLiteral("版本 %1").arg(programVersion()), this);
    QPalette quiet = palette();
    quiet.setColor(QPalette::WindowText, themeColor(ThemeColor::Muted, isDarkPalette(quiet)));
    version->setPalette(quiet);

    auto* words = new QVBoxLayout;
    words->setSpacing(unit / 4);
    words->addStretch();
    words->addWidget(title);
    words->addWidget(version);
    words->addStretch();

    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(unit * 3, unit * 5 / 2, unit * 4, unit * 5 / 2);
    row->setSpacing(unit * 3 / 2);
    row->addWidget(icon);
    row->addLayout(words);
}

void frmSplash::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(palette().color(QPalette::Mid));
    painter.setBrush(palette().color(QPalette::Base));
    const qreal radius = fontMetrics().height();
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
}

}  // namespace keeper
