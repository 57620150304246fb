// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

#include "workspace/edit_pane.h"
#include "workspace/sheet_lists.h"
#include "workspace/workspace.h"

namespace keeper {

/// Which items of the tree's pop-up `mn_DirPopup` can be used.
struct DirPopup {
    bool mn_dirDeleteEntry = false;
    /// `mn_dirAddEntry` and `mn_dirModifyEntry`: the compact window has no room for the pane.
    bool areEditItemsVisible = false;
    bool mn_dirNewSub = false;
    bool mn_dirRename = false;
    bool mn_dirDelete = false;
    bool mn_dirClear = false;
    bool mn_dirExpand = false;
    bool mn_dirCollapse = false;
};

/// The three navigation sheets: they fill from the database, and a choice in any of them brings an
/// entry into the pane, or a number when one is added or moved.
class Sheets {
  public:
    Sheets(Workspace& workspace, SheetLists& lists, EditPane& pane)
        : m_workspace(workspace), m_lists(lists), m_pane(pane) {}

    [[nodiscard]] const SheetsState& state() const { return m_lists.state(); }

    /// The sheets as the settings left them, filled.
    void start();
    /// Rebuilds tree and lists from the database; "dir01" becomes the selected node. Does nothing
    /// within a refresh.
    void RefreshSheets();
    /// The colours of the tree follow the settings.
    void RefreshTrvDirectory();
    void mn_refreshMain();

    // The tree
    /// The mouse went up on a node; an empty key stands for the empty part.
    void clickTree(const QString& key);
    /// Enter or Space on the selected node.
    void pressTree();
    /// The arrow keys moved the selection, which opens nothing.
    void selectNode(const QString& key);
    /// What a click on a node means in the present state.
    void ClickNode(const QString& key);
    /// The node is the entry in the pane.
    [[nodiscard]] bool isShown(const QString& key) const;
    /// Asks before an entry takes the place of one that is being changed.
    [[nodiscard]] bool mayShow(const QString& key);
    [[nodiscard]] DirPopup SetDirPopup(const QString& key) const;
    void mn_dirExpand();
    void mn_dirCollapse();
    /// Double click on the background: modifies the entry clicked last, or adds to the directory.
    void doubleClickBackground();
    /// The node last hit by the mouse; empty for none.
    [[nodiscard]] const QString& m_clickedNode() const { return m_clickedKey; }

    // The flat lists
    /// A line was chosen by click, Enter or Space.
    void ShowListEntry(const QString& number);
    /// The right button on a line: shows where the entry lies.
    void showInTree(const QString& number);
    /// `txtSearch` has a new text.
    void searchFor(const QString& text);
    void AddBookmark();
    /// `row` of `lsbBookmark`; ItemListModel::kNoRow when none is selected.
    void RemoveBookmark(int row);

    void selectTab(SheetTab tab);

  private:
    void fillTree();
    void fillRecentUpdates();
    void goToTab(SheetTab tab);
    void proposeNo(const QString& directory);
    void openOrCloseSubtree(bool isOpen);
    void showNothing();
    void takeColours();

    Workspace& m_workspace;
    SheetLists& m_lists;
    EditPane& m_pane;
    QString m_clickedKey;
    bool m_isRefreshing = false;
    bool m_isPressing = false;
};

}  // namespace keeper
