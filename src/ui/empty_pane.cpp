// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/empty_pane.h"

#include <QImageReader>
#include <QMouseEvent>
#include <QPainter>

#include "ui/theme/icons.h"

namespace keeper {
namespace {

/// Enough for any screen; a larger picture is read at this size, so that none fills the memory.
constexpr int kLongestSide = 4096;

QString hint() {
    return QStringLiteral("在左侧选择一个条目来查看，\n或者双击此处、按 Ctrl+N 添加新条目。");
}

}  // namespace

EmptyPane::EmptyPane(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("imgBG"));
    setAccessibleName(QStringLiteral("没有显示条目"));
    setAccessibleDescription(hint());
}

void EmptyPane::setPicture(const QString& path) {
    m_picture = {};
    if (!path.isEmpty()) {
        QImageReader reader(path);
        reader.setAutoTransform(true);
        const QSize size = reader.size();
        if (size.width() > kLongestSide || size.height() > kLongestSide) {
            reader.setScaledSize(size.scaled(kLongestSide, kLongestSide, Qt::KeepAspectRatio));
        }
        m_picture = QPixmap::fromImageReader(&reader);
    }
    update();
}

void EmptyPane::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    if (!m_picture.isNull()) {
        const QSize size = m_picture.size().scaled(this->size(), Qt::KeepAspectRatioByExpanding);
        QRect place(QPoint(), size);
        place.moveCenter(rect().center());
        painter.drawPixmap(place, m_picture);
        return;
    }
    const int side = fontMetrics().height() * 5;
    QRect mark(0, 0, side, side);
    mark.moveCenter(rect().center() - QPoint(0, side / 2));
    painter.setOpacity(0.35);
    programIcon().paint(&painter, mark);
    painter.setOpacity(1);
    painter.setPen(palette().color(QPalette::PlaceholderText));
    const QRect words(0, mark.bottom() + fontMetrics().height(), width(),
                      fontMetrics().height() * 4);
    painter.drawText(words, Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, hint());
}

void EmptyPane::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) {
        Q_EMIT doubleClicked();
    }
}

}  // namespace keeper
