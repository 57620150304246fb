// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <cstdint>
#include <optional>

#include "workspace/workspace.h"

namespace keeper {

enum class SheetTab { Directory = 0, Search = 1, Favourite = 2 };

/// What the navigation sheets show beside their models.
struct SheetsState {
    /// Node selected in the tree; empty while the tree is.
    QString selectedKey;
    SheetTab tab = SheetTab::Directory;
    /// Selected line of `lsbSearch`, or ItemListModel::kNoRow.
    int searchRow = ItemListModel::kNoRow;
    QString lblTotal;
    QString lblRecentUpdates;
    QString lblBookmark;
    bool isToolbarEnabled = true;
    /// Toolbar button `Delete`.
    bool canDelete = false;
    /// Selecting a node opens it and closes the branch that was open.
    bool isSingleExpansion = false;
    /// Back and text colour of the tree as the settings hold them; none: those of the desktop.
    std::optional<std::int32_t> treeBackground;
    std::optional<std::int32_t> treeForeground;
};

/// Keeps tree and lists in step with single changes, without reading the database, and searches
/// free and used numbers in the tree. Touches no stored data.
class SheetLists {
  public:
    explicit SheetLists(Workspace& workspace) : m_workspace(workspace) {}

    [[nodiscard]] const SheetsState& state() const { return m_state; }
    [[nodiscard]] SheetsState& state() { return m_state; }
    /// Hands the state to the view.
    void show();
    void select(const QString& key) { m_state.selectedKey = key; }
    /// Writes the three counts.
    void countLines();

    /// store/numbering.h, with the tree as judge of what is taken.
    [[nodiscard]] QString FindItemNo(const QString& number, bool asSibling, bool findUsed,
                                     bool isDir) const;
    [[nodiscard]] QString FindItemNoSkipZero(const QString& number, bool asSibling, bool findUsed,
                                             bool isDir) const;

    /// The new node becomes the selected one.
    void ItemAdd(const QString& number, const QString& title);
    /// A changed entry goes to the top of the recent updates, whatever was changed.
    void ItemModify(const QString& oldNo, const QString& number, const QString& title);
    void ItemDelete(const QString& number);
    /// After a move: the lists show the new number, and the entry counts as recently updated.
    void ChangeLsbNo(const QString& oldNo, const QString& number);
    /// Takes the lines of everything below a node out of the lists; the tree stays.
    void dropLinesUnder(ItemId id);

  private:
    [[nodiscard]] ItemId renumber(const QString& oldNo, const QString& number,
                                  const QString& title);
    void toTopOfRecentUpdates(ItemId id);

    Workspace& m_workspace;
    SheetsState m_state;
};

}  // namespace keeper
