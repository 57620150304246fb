// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/widgets/status_panel_bar.h"

#include <QPainter>
#include <QStyle>

namespace keeper {
namespace {

QString spokenName(StatusPanel panel) {
    switch (panel) {
        case StatusPanel::Message:
            return QStringLiteral("消息");
        case StatusPanel::DeadCount:
            return QStringLiteral("分机存活期");
        case StatusPanel::Operation:
            return QStringLiteral("操作状态");
        case StatusPanel::FillState:
            return QStringLiteral("填写状态");
        case StatusPanel::RunTime:
            return QStringLiteral("运行时间");
        case StatusPanel::AEStatus:
            return QStringLiteral("自动退出倒计时");
    }
    Q_UNREACHABLE();
}

/// A label that may become narrower than its text.
class ElidedLabel final : public QLabel {
  public:
    using QLabel::QLabel;
    [[nodiscard]] QSize minimumSizeHint() const override {
        return {fontMetrics().averageCharWidth() * 4, QLabel::minimumSizeHint().height()};
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        const QString shown =
            fontMetrics().elidedText(text(), Qt::ElideRight, contentsRect().width());
        style()->drawItemText(&painter, contentsRect(), Qt::AlignVCenter | Qt::AlignLeft, palette(),
                              isEnabled(), shown, foregroundRole());
    }
};

}  // namespace

StatusPanelBar::StatusPanelBar(QWidget* parent) : QStatusBar(parent) {
    setObjectName(QStringLiteral("stbMain"));
    const int unit = fontMetrics().height();
    setContentsMargins(unit / 2, unit / 5, unit / 3, unit / 5);
    for (const StatusPanel panel :
         {StatusPanel::Message, StatusPanel::DeadCount, StatusPanel::Operation,
          StatusPanel::FillState, StatusPanel::RunTime, StatusPanel::AEStatus}) {
        auto* text = new ElidedLabel(this);
        text->setObjectName(statusPanelKey(panel));
        text->setTextFormat(Qt::PlainText);
        m_labels.at(static_cast<std::size_t>(panel)) = text;
        const bool isMessage = panel == StatusPanel::Message;
        if (!isMessage) {
            text->setContentsMargins(unit / 2, 0, 0, 0);
        }
        addWidget(text, isMessage ? 1 : 0);
        text->setVisible(isMessage);
        setPanel(panel, {});
    }
}

void StatusPanelBar::setPanel(StatusPanel panel, const QString& text) {
    QLabel* target = label(panel);
    if (target->text() == text && !target->accessibleName().isEmpty()) {
        return;
    }
    target->setText(text);
    target->setToolTip(text);
    target->setAccessibleName(text.isEmpty() ? spokenName(panel)
                                             : spokenName(panel) + QStringLiteral("：") + text);
    if (panel != StatusPanel::Message) {
        target->setVisible(!text.isEmpty());
    }
}

QString StatusPanelBar::panelText(StatusPanel panel) const {
    return label(panel)->text();
}

void StatusPanelBar::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawLine(rect().topLeft(), rect().topRight());
    // Hairlines between the panels that show something.
    for (const QLabel* panel : m_labels) {
        if (panel->isVisible() && panel != m_labels.front()) {
            const int x = panel->x();
            const int inset = height() / 4;
            painter.drawLine(x, inset, x, height() - inset);
        }
    }
}

}  // namespace keeper
