// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "workspace/sheet_lists.h"

#include "store/failure.h"
#include "store/numbering.h"

namespace keeper {

void SheetLists::show() {
    m_workspace.services.view.showSheets(m_state);
}

void SheetLists::countLines() {
    m_state.lblTotal = QString::number(m_workspace.lsbSearch.count());
    m_state.lblBookmark = QStringLiteral("书签:（%1）").arg(m_workspace.lsbBookmark.count());
    m_state.lblRecentUpdates =
        QStringLiteral("最近更新:（%1）").arg(m_workspace.lsbRecentUpdate.count());
}

QString SheetLists::FindItemNo(const QString& number, bool asSibling, bool findUsed,
                               bool isDir) const {
    const ItemTree& tree = m_workspace.tvwDirectory.tree();
    return keeper::FindItemNo(number, asSibling, findUsed, isDir, [&tree](const QString& key) {
        return tree.findKey(key) != ItemTree::kRoot;
    });
}

QString SheetLists::FindItemNoSkipZero(const QString& number, bool asSibling, bool findUsed,
                                       bool isDir) const {
    const ItemTree& tree = m_workspace.tvwDirectory.tree();
    return keeper::FindItemNoSkipZero(
        number, asSibling, findUsed, isDir,
        [&tree](const QString& key) { return tree.findKey(key) != ItemTree::kRoot; });
}

void SheetLists::toTopOfRecentUpdates(ItemId id) {
    m_workspace.lsbRecentUpdate.removeItem(id);
    m_workspace.lsbRecentUpdate.prepend(id);
}

void SheetLists::ItemAdd(const QString& number, const QString& title) {
    guardedRun(m_workspace.services.prompt, QStringLiteral("frmMain.ItemAdd"), [&] {
        const ItemId id = m_workspace.tvwDirectory.addItem(number, false, title);
        if (id == ItemTree::kRoot) {
            throw KeeperError(5, QStringLiteral("SheetLists"),
                              QStringLiteral("编号无效：") + number);
        }
        select(ConcatenateNo(number, false));
        m_workspace.lsbSearch.append(id);
        toTopOfRecentUpdates(id);
        countLines();
    });
}

ItemId SheetLists::renumber(const QString& oldNo, const QString& number, const QString& title) {
    ItemTreeModel& tree = m_workspace.tvwDirectory;
    const ItemId id = tree.tree().find(oldNo, false);
    if (id == ItemTree::kRoot) {
        return tree.addItem(number, false, title);
    }
    if (oldNo != number && !tree.renumberItem(id, number)) {
        throw KeeperError(5, QStringLiteral("SheetLists"), QStringLiteral("编号无效：") + number);
    }
    if (tree.tree().title(id) != title) {
        tree.renameItem(id, title);
    }
    if (m_state.selectedKey == ConcatenateNo(oldNo, false)) {
        select(ConcatenateNo(number, false));
    }
    return id;
}

void SheetLists::ItemModify(const QString& oldNo, const QString& number, const QString& title) {
    guardedRun(m_workspace.services.prompt, QStringLiteral("frmMain.ItemModify"), [&] {
        const ItemId id = renumber(oldNo, number, title);
        m_workspace.lsbSearch.itemChanged(id);
        m_workspace.lsbBookmark.itemChanged(id);
        toTopOfRecentUpdates(id);
        countLines();
    });
}

void SheetLists::ItemDelete(const QString& number) {
    guardedRun(m_workspace.services.prompt, QStringLiteral("frmMain.ItemDelete"), [&] {
        const ItemId id = m_workspace.tvwDirectory.tree().find(number, false);
        if (id == ItemTree::kRoot) {
            return;
        }
        dropLinesUnder(id);
        m_workspace.tvwDirectory.removeItem(id);
        if (m_state.selectedKey == ConcatenateNo(number, false)) {
            select(ConcatenateNo(GetParent(number), true));
        }
    });
}

void SheetLists::ChangeLsbNo(const QString& oldNo, const QString& number) {
    guardedRun(m_workspace.services.prompt, QStringLiteral("frmMain.ChangeLsbNo"), [&] {
        const ItemTree& tree = m_workspace.tvwDirectory.tree();
        const ItemId id = renumber(oldNo, number, tree.title(tree.find(oldNo, false)));
        m_workspace.lsbSearch.itemChanged(id);
        m_workspace.lsbBookmark.itemChanged(id);
        toTopOfRecentUpdates(id);
        countLines();
    });
}

void SheetLists::dropLinesUnder(ItemId id) {
    const std::vector<ItemId> entries = m_workspace.tvwDirectory.tree().entriesUnder(id);
    m_workspace.lsbSearch.removeItems(entries);
    m_workspace.lsbBookmark.removeItems(entries);
    m_workspace.lsbRecentUpdate.removeItems(entries);
    m_state.searchRow = ItemListModel::kNoRow;
    countLines();
}

}  // namespace keeper
