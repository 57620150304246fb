// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/widgets/item_delegate.h"

#include <QApplication>
#include <QPainter>

#include "ui/theme/icons.h"
#include "workspace/item_tree_model.h"

namespace keeper {

ItemDelegate::ItemDelegate(Number number, QObject* parent)
    : QStyledItemDelegate(parent),
      m_number(number),
      m_web(glyphIcon(Glyph::Website)),
      m_application(glyphIcon(Glyph::Application)),
      m_file(glyphIcon(Glyph::File)),
      m_closedFolder(glyphIcon(Glyph::Folder, IconTint::Accent)),
      m_openFolder(glyphIcon(Glyph::FolderOpen, IconTint::Accent)) {}

void ItemDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const {
    QStyledItemDelegate::initStyleOption(option, index);
    const QString name = index.data(IconRole).toString();
    option->features |= QStyleOptionViewItem::HasDecoration;
    if (name == QLatin1String("webEntry")) {
        option->icon = m_web;
    } else if (name == QLatin1String("prgEntry")) {
        option->icon = m_application;
    } else if (name == QLatin1String("filEntry")) {
        option->icon = m_file;
    } else {
        const bool isOpen = (option->state & QStyle::State_Open) != 0;
        option->icon = isOpen ? m_openFolder : m_closedFolder;
    }
    const int side = QApplication::style()->pixelMetric(QStyle::PM_SmallIconSize);
    option->decorationSize = QSize(side, side);
    option->textElideMode = Qt::ElideRight;
    if (m_number == Number::AtTheRight) {
        option->text = index.data(TitleRole).toString();
    }
}

void ItemDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                         const QModelIndex& index) const {
    if (m_number == Number::Hidden) {
        QStyledItemDelegate::paint(painter, option, index);
        return;
    }
    const QString number = index.data(NumberRole).toString();
    const int gap = option.fontMetrics.averageCharWidth();
    const int width = option.fontMetrics.horizontalAdvance(number) + 2 * gap;
    QStyleOptionViewItem full = option;
    initStyleOption(&full, index);
    // The ground goes across the whole row, the title ends before the number.
    const QStyle* style = option.widget != nullptr ? option.widget->style() : QApplication::style();
    style->drawPrimitive(QStyle::PE_PanelItemViewItem, &full, painter, option.widget);
    QStyleOptionViewItem title = option;
    title.rect.setWidth(std::max(0, option.rect.width() - width));
    QStyledItemDelegate::paint(painter, title, index);
    const bool isSelected = (option.state & QStyle::State_Selected) != 0;
    QRect place = option.rect.adjusted(0, 0, -gap, 0);
    if (isSelected) {
        painter->setPen(option.palette.color(QPalette::HighlightedText));
    } else {
        painter->setPen(option.palette.color(QPalette::PlaceholderText));
    }
    painter->drawText(place, Qt::AlignRight | Qt::AlignVCenter, number);
}

QSize ItemDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const {
    // All rows are alike, so the texts need not be measured.
    Q_UNUSED(index);
    const int height = option.fontMetrics.height();
    return {option.fontMetrics.averageCharWidth() * 40, height + height / 2};
}

}  // namespace keeper
