// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "workspace/item_tree_model.h"

#include "store/numbering.h"

namespace keeper {

QString SetNodeIcon(int itemType, bool isOpen) {
    switch (itemType) {
        case 0:
            return QStringLiteral("webEntry");
        case 1:
            return QStringLiteral("prgEntry");
        case 2:
            return QStringLiteral("filEntry");
        default:
            return isOpen ? QStringLiteral("openFolder") : QStringLiteral("closedFolder");
    }
}

QVariant dataOfItem(const ItemTree& tree, ItemId id, int role) {
    switch (role) {
        case TitleRole:
        case Qt::DisplayRole:
            return tree.title(id);
        case NumberRole:
        case Qt::ToolTipRole:
            return tree.number(id);
        case KeyRole:
            return tree.key(id);
        case IconRole:
            return SetNodeIcon(GetItemKeyType(tree.key(id)));
        case IsDirectoryRole:
            return tree.isDirectory(id);
        default:
            return {};
    }
}

QModelIndex ItemTreeModel::indexOf(ItemId id) const {
    return id == ItemTree::kRoot ? QModelIndex() : createIndex(m_tree.row(id), 0, quintptr{id});
}

ItemId ItemTreeModel::idOf(const QModelIndex& index) const {
    return index.isValid() ? static_cast<ItemId>(index.internalId()) : ItemTree::kRoot;
}

QString ItemTreeModel::text(ItemId id) const {
    if (!m_tree.isDirectory(id)) {
        return m_tree.title(id);
    }
    return m_tree.title(id) + QLatin1Char('(') + m_tree.number(id) + QLatin1Char(')');
}

void ItemTreeModel::assign(ItemTree&& tree) {
    beginResetModel();
    m_tree = std::move(tree);
    endResetModel();
}

ItemId ItemTreeModel::addItem(const QString& number, bool isDir, const QString& title) {
    if (const ItemId known = m_tree.find(number, isDir); known != ItemTree::kRoot) {
        renameItem(known, title);
        return known;
    }
    const QString head = GetParent(number);
    ItemId parentId = ItemTree::kRoot;
    if (!head.isEmpty()) {
        parentId = m_tree.find(head, true);
        if (parentId == ItemTree::kRoot) {
            parentId = addItem(head, true, {});
        }
        if (parentId == ItemTree::kRoot) {
            return parentId;
        }
    }
    const int row = m_tree.rowFor(parentId, isDir, number.right(2).toInt());
    beginInsertRows(indexOf(parentId), row, row);
    const ItemId id = m_tree.add(number, isDir, title);
    endInsertRows();
    return id;
}

void ItemTreeModel::renameItem(ItemId id, const QString& title) {
    m_tree.setTitle(id, title);
    const QModelIndex index = indexOf(id);
    Q_EMIT dataChanged(index, index);
}

void ItemTreeModel::removeItem(ItemId id) {
    const int row = m_tree.row(id);
    beginRemoveRows(indexOf(m_tree.parent(id)), row, row);
    m_tree.remove(id);
    endRemoveRows();
}

void ItemTreeModel::removeChildren(ItemId id) {
    const int count = m_tree.childCount(id);
    if (count == 0) {
        return;
    }
    beginRemoveRows(indexOf(id), 0, count - 1);
    while (m_tree.childCount(id) > 0) {
        m_tree.remove(m_tree.child(id, m_tree.childCount(id) - 1));
    }
    endRemoveRows();
}

bool ItemTreeModel::renumberItem(ItemId id, const QString& number) {
    const bool isDir = m_tree.isDirectory(id);
    const ItemId target = m_tree.find(GetParent(number), true);
    if (target == ItemTree::kRoot || m_tree.find(number, isDir) != ItemTree::kRoot) {
        return false;
    }
    for (ItemId step = target; step != ItemTree::kRoot; step = m_tree.parent(step)) {
        if (step == id) {
            return false;
        }
    }
    const int pair = number.right(2).toInt();
    const int from = m_tree.row(id);
    const int to = m_tree.rowFor(target, isDir, pair);
    const QModelIndex source = indexOf(m_tree.parent(id));
    // Refused when the row stays where it is; the number changes all the same.
    const bool isMoving = beginMoveRows(source, from, from, indexOf(target), to);
    m_tree.move(id, target, pair);
    if (isMoving) {
        endMoveRows();
    }
    const QModelIndex index = indexOf(id);
    Q_EMIT dataChanged(index, index);
    return true;
}

QModelIndex ItemTreeModel::index(int row, int column, const QModelIndex& parent) const {
    const ItemId id = idOf(parent);
    if (column != 0 || row < 0 || row >= m_tree.childCount(id)) {
        return {};
    }
    return createIndex(row, column, quintptr{m_tree.child(id, row)});
}

QModelIndex ItemTreeModel::parent(const QModelIndex& child) const {
    return child.isValid() ? indexOf(m_tree.parent(idOf(child))) : QModelIndex();
}

int ItemTreeModel::rowCount(const QModelIndex& parent) const {
    return m_tree.childCount(idOf(parent));
}

int ItemTreeModel::columnCount(const QModelIndex& /*parent*/) const {
    return 1;
}

bool ItemTreeModel::hasChildren(const QModelIndex& parent) const {
    return rowCount(parent) > 0;
}

QVariant ItemTreeModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) {
        return {};
    }
    return role == Qt::DisplayRole ? text(idOf(index)) : dataOfItem(m_tree, idOf(index), role);
}

QString ItemTreeModel::nodeFormat() {
    return QStringLiteral("application/x-morvane-keeper-node");
}

Qt::ItemFlags ItemTreeModel::flags(const QModelIndex& index) const {
    if (!index.isValid()) {
        // The empty part of the tree takes a drop too: it throws the dragged item away.
        return Qt::ItemIsDropEnabled;
    }
    const Qt::ItemFlags common =
        Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled | Qt::ItemIsDropEnabled;
    return m_tree.isDirectory(idOf(index)) ? common : common | Qt::ItemNeverHasChildren;
}

}  // namespace keeper
