// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QAbstractItemModel>
#include <QString>

#include "workspace/item_tree.h"

namespace keeper {

/// What the models tell about an item beside its text.
enum ItemRole {
    NumberRole = Qt::UserRole,
    /// "dir" or "ent" and the number.
    KeyRole,
    /// The title alone; Qt::DisplayRole of a directory has its number behind it.
    TitleRole,
    /// "webEntry", "prgEntry", "filEntry" or "closedFolder".
    IconRole,
    IsDirectoryRole,
};

/// Name of the picture of a node; `itemType` as GetItemKeyType() tells it.
[[nodiscard]] QString SetNodeIcon(int itemType, bool isOpen = false);

/// The directory tree `tvwDirectory`. One change touches one row; an index carries the small id of
/// its item, and entries carry Qt::ItemNeverHasChildren (views probe each leaf otherwise).
class ItemTreeModel final : public QAbstractItemModel {
    Q_OBJECT

  public:
    using QAbstractItemModel::QAbstractItemModel;

    [[nodiscard]] const ItemTree& tree() const { return m_tree; }
    [[nodiscard]] QModelIndex indexOf(ItemId id) const;
    [[nodiscard]] ItemId idOf(const QModelIndex& index) const;
    /// The text of the node as the tree shows it.
    [[nodiscard]] QString text(ItemId id) const;

    /// Takes another tree in one reset.
    void assign(ItemTree&& tree);
    ItemId addItem(const QString& number, bool isDir, const QString& title);
    void renameItem(ItemId id, const QString& title);
    void removeItem(ItemId id);
    void removeChildren(ItemId id);
    /// Gives an entry or a directory a new number; false, and nothing changed, when there is no
    /// directory for it, when the number is in use, or when it lies below the item itself.
    bool renumberItem(ItemId id, const QString& number);

    [[nodiscard]] QModelIndex index(int row, int column,
                                    const QModelIndex& parent = {}) const override;
    [[nodiscard]] QModelIndex parent(const QModelIndex& child) const override;
    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] bool hasChildren(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;
    /// What a drag of a node carries: its key, in UTF-8. Only this program's own tree gives it.
    [[nodiscard]] static QString nodeFormat();
    [[nodiscard]] QStringList mimeTypes() const override { return {nodeFormat()}; }
    [[nodiscard]] Qt::DropActions supportedDropActions() const override { return Qt::MoveAction; }

  private:
    ItemTree m_tree;
};

/// Data of an item for any model over the tree.
[[nodiscard]] QVariant dataOfItem(const ItemTree& tree, ItemId id, int role);

}  // namespace keeper
