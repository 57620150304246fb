// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/lock_window.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/program_info.h"
#include "ui/theme/icons.h"
#include "ui/widgets/named.h"

namespace keeper {

LockWindow::LockWindow(const QString& userName, std::function<void()> unlock,
                       std::function<void()> exit) {
    setObjectName(QStringLiteral("lockWindow"));
    setWindowTitle(programTitle() + QStringLiteral(" - 已锁定"));
    setWindowIcon(lockedProgramIcon());
    const int unit = fontMetrics().height();
    auto* picture = new QLabel(this);
    picture->setPixmap(lockedProgramIcon().pixmap(QSize(unit * 3, unit * 3), devicePixelRatioF()));
    auto* text = new QLabel(userName + QStringLiteral(" - 管理器已经锁定。"), this);
    text->setTextFormat(Qt::PlainText);
    cmdUnlock = named(new QPushButton(QStringLiteral("解锁(&U)"), this), "cmdUnlock");
    auto* exitButton = named(new QPushButton(QStringLiteral("退出(&Q)"), this), "cmdExit");
    cmdUnlock->setIcon(glyphIcon(Glyph::Unlock));
    cmdUnlock->setDefault(true);
    cmdUnlock->setAutoDefault(true);
    connect(cmdUnlock, &QPushButton::clicked, this, std::move(unlock));
    connect(exitButton, &QPushButton::clicked, this, std::move(exit));

    auto* top = new QHBoxLayout;
    top->setSpacing(unit);
    top->addWidget(picture);
    top->addWidget(text, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(cmdUnlock);
    buttons->addWidget(exitButton);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(unit, unit, unit, unit);
    layout->setSpacing(unit);
    layout->addLayout(top);
    layout->addLayout(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);
}

void LockWindow::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    cmdUnlock->setFocus();
}

void LockWindow::closeEvent(QCloseEvent* event) {
    if (event->spontaneous()) {
        event->ignore();
        showMinimized();
    }
}

}  // namespace keeper
