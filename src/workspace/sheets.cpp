// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "workspace/sheets.h"

#include <QScopedValueRollback>
#include <algorithm>
#include <string>

#include "store/failure.h"
#include "store/numbering.h"

namespace keeper {

void Sheets::start() {
    const int tab = m_workspace.services.settings.p_mainTabNo();
    m_lists.state().tab = static_cast<SheetTab>(std::clamp(tab, 0, 2));
    RefreshSheets();
}

void Sheets::RefreshSheets() {
    if (m_isRefreshing) {
        return;
    }
    const QScopedValueRollback<bool> refreshing(m_isRefreshing, true);
    SheetsState& state = m_lists.state();
    state.isToolbarEnabled = false;
    m_lists.show();
    guardedRun(m_workspace.services.prompt, QStringLiteral("frmMain.RefreshSheets"), [&] {
        takeColours();
        m_pane.RefreshAssNames();
        fillTree();
        fillRecentUpdates();
        m_lists.countLines();
        state.searchRow = ItemListModel::kNoRow;
        m_clickedKey.clear();
        const bool isEmpty = m_workspace.tvwDirectory.rowCount() == 0;
        m_lists.select(isEmpty ? QString() : QStringLiteral("dir01"));
    });
    state.isToolbarEnabled = true;
    m_lists.show();
    for (const QString& key :
         {QStringLiteral("dir01"), QStringLiteral("dir02"), QStringLiteral("dir03")}) {
        m_workspace.services.view.expandNode(key);
    }
}

void Sheets::fillTree() {
    const auto& services = m_workspace.services;
    // The lines go first: they point into the tree.
    for (ItemListModel* list :
         {&m_workspace.lsbSearch, &m_workspace.lsbBookmark, &m_workspace.lsbRecentUpdate}) {
        list->assign({});
    }
    m_workspace.tvwDirectory.assign({});
    ItemTree tree;
    std::vector<ItemId> all;
    std::vector<ItemId> marked;
    std::vector<Directory> directories;
    services.directories.Display(directories);
    for (const Directory& directory : directories) {
        tree.add(directory.p_dirPath(), true, directory.m_Title);
    }
    std::string path;
    ItemId directory = ItemTree::kRoot;
    services.entries.Display([&](const EntryLine& line) {
        // They come in the order of their directories.
        if (line.dirPath != path) {
            path = line.dirPath;
            directory = tree.find(EntryLine::text(path), true);
        }
        const ItemId id = directory == ItemTree::kRoot
                              ? tree.add(line.number(), false, EntryLine::text(line.title))
                              : tree.addEntry(directory, line.entNo, line.title);
        if (id == ItemTree::kRoot) {
            return;
        }
        all.push_back(id);
        if (line.isMarked) {
            marked.push_back(id);
        }
    });
    m_workspace.tvwDirectory.assign(std::move(tree));
    m_workspace.lsbSearch.assign(std::move(all));
    m_workspace.lsbBookmark.assign(std::move(marked));
}

void Sheets::fillRecentUpdates() {
    const auto& services = m_workspace.services;
    QStringList lines;
    services.entries.GetRecentUpdates(lines, services.settings.p_recentUpdateAmount());
    std::vector<ItemId> ids;
    for (const QString& line : lines) {
        const ItemId id = m_workspace.tvwDirectory.tree().find(GetLsbNo(line), false);
        if (id != ItemTree::kRoot) {
            ids.push_back(id);
        }
    }
    m_workspace.lsbRecentUpdate.assign(std::move(ids));
}

void Sheets::takeColours() {
    const Settings& settings = m_workspace.services.settings;
    SheetsState& state = m_lists.state();
    state.isSingleExpansion = settings.p_contentSingle();
    state.treeBackground.reset();
    state.treeForeground.reset();
    if (settings.p_themeBackground()) {
        state.treeBackground = settings.p_backgroundColor();
        state.treeForeground = settings.p_foregroundColor();
    }
}

void Sheets::RefreshTrvDirectory() {
    takeColours();
    m_lists.show();
}

void Sheets::mn_refreshMain() {
    if (m_pane.isDirty()) {
        m_workspace.tell(workspacetext::browseOnly());
        return;
    }
    const EditPane::Showing showing(m_pane);
    m_pane.SetEditState(EditState::Browse);
    RefreshSheets();
    m_pane.ClearDetails();
    m_pane.ShowControls(EditPane::kDirectoryType);
    m_lists.state().canDelete = false;
    m_workspace.services.monitor.ActivateMonitor(kFillEnded);
    m_lists.show();
}

void Sheets::clickTree(const QString& key) {
    m_clickedKey = key;
    if (key.isEmpty()) {
        return;
    }
    if (mayShow(key)) {
        m_lists.select(key);
        ClickNode(key);
    }
    m_lists.show();
}

bool Sheets::isShown(const QString& key) const {
    return m_workspace.m_entry &&
           key == ConcatenateNo(m_workspace.m_entry->common.p_No(), /*isDir=*/false);
}

bool Sheets::mayShow(const QString& key) {
    const bool isReplacing = m_workspace.m_editState == EditState::Modify && TestEntDir(key);
    return !isReplacing || m_pane.mayReplaceFields();
}

void Sheets::pressTree() {
    const QString key = state().selectedKey;
    // A message box of the click runs the event loop, and a held key would come in again.
    if (m_isPressing || key.isEmpty()) {
        return;
    }
    const QScopedValueRollback<bool> pressing(m_isPressing, true);
    if (mayShow(key)) {
        ClickNode(key);
    }
}

void Sheets::selectNode(const QString& key) {
    m_lists.select(key);
    m_lists.show();
}

void Sheets::ClickNode(const QString& key) {
    const EditPane::Showing showing(m_pane);
    guardedRun(m_workspace.services.prompt, QStringLiteral("frmMain.ClickNode"), [&] {
        const QString no = GetItemKeyNo(key);
        const int type = GetItemKeyType(key);
        const bool isEntry = TestEntDir(key);
        const bool isBrowsing = m_workspace.m_editState == EditState::Browse;
        m_lists.state().canDelete = isEntry;
        if (isEntry) {
            m_pane.showNo(no);
            m_pane.ShowControls(type);
        } else if (isBrowsing) {
            m_pane.ClearDetails();
            m_pane.ShowControls(EditPane::kDirectoryType);
        } else {
            m_pane.ShowControls(type % 3);
        }
        if (isBrowsing && isEntry) {
            m_lists.select(key);
            m_pane.DisplayEntry(no);
            m_pane.monitorShownEntry();
        } else if (isBrowsing) {
            m_workspace.services.monitor.ActivateMonitor(kFillEnded);
        } else if (m_workspace.m_editState == EditState::Modify && isEntry) {
            m_pane.DisplayEntry(no);
        } else {
            proposeNo(isEntry ? GetParent(no) : no);
        }
    });
    m_lists.show();
}

void Sheets::proposeNo(const QString& directory) {
    const QString no = m_lists.FindItemNo(directory, /*asSibling=*/false, /*findUsed=*/false,
                                          /*isDir=*/false);
    m_pane.showNo(no);
    if (no.isEmpty()) {
        m_workspace.tell(QStringLiteral("本层目录所能容纳的条目数量已达饱和！"));
    }
}

DirPopup Sheets::SetDirPopup(const QString& key) const {
    DirPopup popup;
    const bool isEntry = TestEntDir(key);
    const bool isDeeper = !isEntry && GetItemKeyNo(key).size() > 2;
    popup.mn_dirDeleteEntry = isEntry;
    popup.areEditItemsVisible = m_workspace.services.settings.p_mainSizeType() != 0;
    popup.mn_dirRename = popup.mn_dirDelete = isDeeper;
    popup.mn_dirNewSub = popup.mn_dirClear = !isEntry;
    popup.mn_dirExpand = popup.mn_dirCollapse = !isEntry;
    return popup;
}

void Sheets::openOrCloseSubtree(bool isOpen) {
    const QString key = state().selectedKey;
    if (key.isEmpty()) {
        return;
    }
    guardedRun(m_workspace.services.prompt,
               isOpen ? QStringLiteral("frmMain.TvwSingleExpand")
                      : QStringLiteral("frmMain.TvwSingleCollapse"),
               [&] { m_workspace.services.view.expandSubtree(key, isOpen); });
}

void Sheets::mn_dirExpand() {
    openOrCloseSubtree(/*isOpen=*/true);
}

void Sheets::mn_dirCollapse() {
    openOrCloseSubtree(/*isOpen=*/false);
}

void Sheets::doubleClickBackground() {
    const ItemTree& tree = m_workspace.tvwDirectory.tree();
    // A node that was clicked may be gone by now; keys alone may have chosen one.
    if (tree.findKey(m_clickedKey) == ItemTree::kRoot) {
        m_clickedKey = state().selectedKey;
    }
    if (m_clickedKey.isEmpty()) {
        return;
    }
    if (TestEntDir(m_clickedKey)) {
        m_pane.EnterModify(/*isSingle=*/true);
        return;
    }
    const QString title = tree.title(tree.findKey(m_clickedKey));
    m_lists.select(m_clickedKey);
    m_lists.show();
    m_pane.EnterAdd(/*isSingle=*/true, title);
}

void Sheets::goToTab(SheetTab tab) {
    m_lists.state().tab = tab;
    m_workspace.services.settings.p_mainTabNo(static_cast<std::uint8_t>(tab));
}

void Sheets::selectTab(SheetTab tab) {
    goToTab(tab);
    m_lists.show();
    if (tab == SheetTab::Search) {
        m_workspace.services.view.focusSearch();
    }
}

}  // namespace keeper
