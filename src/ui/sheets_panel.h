// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QStackedWidget>
#include <QTabWidget>

#include "workspace/sheet_lists.h"

class QMenu;

namespace keeper {

class DirectoryCommands;
class DirectoryTreeView;
class MainActions;
class Sheets;
class TreeDrag;
class Workspace;

/// What the sheets work with; all outlive the panel.
struct SheetsLogic {
    Workspace& workspace;
    Sheets& sheets;
    DirectoryCommands& directories;
    TreeDrag& drag;
};

/// The navigation sheets `stSheets`: tree, search list, recent updates and bookmarks, as views over
/// the models of the workspace.
class SheetsPanel final : public QTabWidget {
    Q_OBJECT

  public:
    SheetsPanel(const SheetsLogic& logic, const MainActions& actions, QWidget* parent = nullptr);

    void showSheets(const SheetsState& state);
    void expandNode(const QString& key);
    void expandSubtree(const QString& key, bool isOpen);
    void focusTree();
    /// Enables the directory commands that fit the node.
    void fitDirectoryCommands(const QString& key);
    void focusSearch();
    /// The keyboard goes to what the sheet is about.
    void focusSheet(SheetTab tab);
    /// Selected line of `lsbBookmark`; ItemListModel::kNoRow when none is.
    [[nodiscard]] int bookmarkRow() const;

  private:
    [[nodiscard]] QWidget* buildTree(const MainActions& actions);
    [[nodiscard]] QWidget* buildSearch();
    [[nodiscard]] QWidget* buildFavourites(const MainActions& actions);
    [[nodiscard]] QListView* buildList(const char* name, const QString& accessibleName,
                                       ItemListModel& model);
    [[nodiscard]] QWidget* withHint(QListView* list, const QString& hint);
    void buildPopup(const MainActions& actions);
    void showPopup(const QString& key, QPoint at);
    void showWhetherFound();
    void colourTree(const SheetsState& state);
    [[nodiscard]] QModelIndex indexOf(const QString& key) const;

    SheetsLogic m_logic;
    bool m_isShowing = false;
    QString m_branchAlone;
    int m_searchRow = -1;
    DirectoryTreeView* tvwDirectory;
    QLineEdit* txtSearch;
    QListView* lsbSearch;
    QLabel* lblTotal;
    QLabel* lblRecentUpdates;
    QListView* lsbRecentUpdate;
    QLabel* lblBookmark;
    QListView* lsbBookmark;
    QMenu* mn_DirPopup;
};

}  // namespace keeper
