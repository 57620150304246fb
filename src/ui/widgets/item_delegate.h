// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QIcon>
#include <QStyledItemDelegate>

namespace keeper {

/// Draws a row of tree or list: the icon of its kind, the title, and in lists the number at the
/// right in a quiet colour.
class ItemDelegate final : public QStyledItemDelegate {
    Q_OBJECT

  public:
    enum class Number { Hidden, AtTheRight };

    explicit ItemDelegate(Number number, QObject* parent = nullptr);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option,
                                 const QModelIndex& index) const override;

  protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;

  private:
    Number m_number;
    QIcon m_web;
    QIcon m_application;
    QIcon m_file;
    QIcon m_closedFolder;
    QIcon m_openFolder;
};

}  // namespace keeper
