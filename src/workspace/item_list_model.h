// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QAbstractListModel>
#include <QString>
#include <vector>

#include "workspace/item_tree_model.h"

namespace keeper {

/// One of the flat lists (`lsbSearch`, `lsbRecentUpdate`, `lsbBookmark`): entries of the tree in an
/// order of its own. A line holds the id of its entry alone and shows what the tree knows of it.
class ItemListModel final : public QAbstractListModel {
    Q_OBJECT

  public:
    static constexpr int kNoRow = -1;

    /// REQUIRES: `tree` outlives this object, and items leave the lists before they leave the tree.
    explicit ItemListModel(const ItemTreeModel& tree, QObject* parent = nullptr)
        : QAbstractListModel(parent), m_tree(tree) {}

    void assign(std::vector<ItemId>&& ids);
    void append(ItemId id) { insert(static_cast<int>(m_ids.size()), id); }
    void prepend(ItemId id) { insert(0, id); }
    void removeItem(ItemId id);
    /// Many at once, in one reset.
    void removeItems(const std::vector<ItemId>& ids);
    /// The entry has a new title or number.
    void itemChanged(ItemId id);

    [[nodiscard]] int count() const { return static_cast<int>(m_ids.size()); }
    [[nodiscard]] ItemId idAt(int row) const { return m_ids.at(static_cast<std::size_t>(row)); }
    [[nodiscard]] const std::vector<ItemId>& ids() const { return m_ids; }
    /// kNoRow when the entry has no line.
    [[nodiscard]] int rowOf(ItemId id) const;
    [[nodiscard]] bool contains(ItemId id) const { return rowOf(id) != kNoRow; }
    /// Title and number in the form of CatTitleNo().
    [[nodiscard]] QString line(int row) const;

    /// The first line that has `digits` in its text, title or number; kNoRow when none has.
    [[nodiscard]] int findDigits(const QString& digits) const;
    /// The first line whose title, without blanks at its end, is `title`.
    [[nodiscard]] int findTitle(const QString& title) const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;

  private:
    void insert(int row, ItemId id);

    const ItemTreeModel& m_tree;
    std::vector<ItemId> m_ids;
};

}  // namespace keeper
