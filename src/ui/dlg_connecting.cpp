// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/dlg_connecting.h"

#include <QCloseEvent>
#include <QGridLayout>
#include <QKeyEvent>
#include <QPainter>

#include "app/program_info.h"
#include "ui/theme/colors.h"
#include "ui/theme/icons.h"

namespace keeper {
dlgConnecting::dlgConnecting(QWidget* parent)
    : QWidget(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::FramelessWindowHint |
                          Qt::WindowDoesNotAcceptFocus),
      lblMsg(new QLabel(this)),
      prgbAES(new QProgressBar(this)),
      lblPercent(new QLabel(this)) {
    setObjectName(QStringLiteral("dlgConnecting"));
    setWindowTitle(programTitle());
    setAttribute(Qt::WA_ShowWithoutActivating);
    // Work on the database turns the event loop, and bears no other command meanwhile.
    setWindowModality(Qt::ApplicationModal);
    setAttribute(Qt::WA_TranslucentBackground);
    lblMsg->setObjectName(QStringLiteral("lblMsg"));
    lblMsg->setTextFormat(Qt::PlainText);
    prgbAES->setObjectName(QStringLiteral("prgbAES"));
    prgbAES->setAccessibleName(QStringLiteral("进度"));
    prgbAES->setRange(0, 100);
    prgbAES->setTextVisible(false);
    lblPercent->setObjectName(QStringLiteral("lblPercent"));
    lblPercent->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    lblPercent->setFixedWidth(fontMetrics().horizontalAdvance(QStringLiteral("100%")));

    const int unit = fontMetrics().height();
    auto* icon = new QLabel(this);
    icon->setPixmap(programIcon().pixmap(QSize(unit * 3, unit * 3), devicePixelRatioF()));
    auto* grid = new QGridLayout(this);
    // What lies in the middle of an ellipse: a rectangle of 1/sqrt(2) of its width and height.
    grid->setContentsMargins(unit * 9 / 2, unit * 5 / 2, unit * 9 / 2, unit * 5 / 2);
    grid->setHorizontalSpacing(unit);
    grid->setVerticalSpacing(unit / 3);
    grid->addWidget(icon, 0, 0, 2, 1);
    grid->addWidget(lblMsg, 0, 1, 1, 2, Qt::AlignBottom);
    grid->addWidget(prgbAES, 1, 1);
    grid->addWidget(lblPercent, 1, 2);
    grid->setColumnStretch(1, 1);
    setMinimumWidth(unit * 27);
    setProgress(0);
}

void dlgConnecting::SetMsg(CryptMode mode) {
    const bool isFailure = mode == CryptMode::SealAfterFailedBackup;
    QFont letters = font();
    QPalette colors = palette();
    if (isFailure) {
        letters.setPointSize(15);
        colors.setColor(QPalette::WindowText,
                        themeColor(ThemeColor::Danger, isDarkPalette(colors)));
    }
    lblMsg->setFont(letters);
    lblMsg->setPalette(colors);
    lblMsg->setText(connectingText(mode).replace(QStringLiteral("\r\n"), QStringLiteral("\n")));
    setAccessibleName(lblMsg->text());
    setProgress(0);
    adjustSize();
    show();
    // The work that is announced may not turn the loop for a while.
    repaint();
}

void dlgConnecting::setProgress(int percent) {
    prgbAES->setValue(qBound(0, percent, 100));
    lblPercent->setText(QString::number(prgbAES->value()) + u'%');
}

void dlgConnecting::close() {
    hide();
}

void dlgConnecting::closeEvent(QCloseEvent* event) {
    // Only close() of the work's owner ends it, which hides.
    event->ignore();
}

void dlgConnecting::keyPressEvent(QKeyEvent* event) {
    event->accept();
}

/// Where nothing composes the screen the corners would be black.
void dlgConnecting::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    setMask(QRegion(rect(), QRegion::Ellipse));
}

void dlgConnecting::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(palette().color(QPalette::Mid));
    painter.setBrush(palette().color(QPalette::Window));
    painter.drawEllipse(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5));
}

}  // namespace keeper
