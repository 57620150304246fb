// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/frm_splash.h"

#include <QLabel>
#include <QVBoxLayout>

#include "app/program_info.h"

namespace keeper {

frmSplash::frmSplash(QWidget* parent)
    : QWidget(parent, Qt::SplashScreen | Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus) {
    setObjectName(QStringLiteral("frmSplash"));
    setAccessibleName(QStringLiteral("正在启动"));

    auto* title = new QLabel(programTitle(), this);
    QFont large = title->font();
    large.setPointSizeF(large.pointSizeF() * 2.2);
    large.setWeight(QFont::DemiBold);
    title->setFont(large);
    title->setAlignment(Qt::AlignCenter);

    auto* version = new QLabel(QStringLiteral("版本 %1").arg(programVersion()), this);
    version->setAlignment(Qt::AlignCenter);

    auto* layout = new QVBoxLayout(this);
    const int margin = fontMetrics().height() * 3;
    layout->setContentsMargins(margin * 2, margin, margin * 2, margin);
    layout->addWidget(title);
    layout->addWidget(version);
}

}  // namespace keeper
