// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

#include "workspace/edit_pane.h"
#include "workspace/sheets.h"
#include "workspace/workspace.h"

namespace keeper {

/// The commands of the tree's pop-up for the selected directory.
class DirectoryCommands {
  public:
    static constexpr int kMaxTitle = 20;

    DirectoryCommands(Workspace& workspace, SheetLists& lists, Sheets& sheets, EditPane& pane)
        : m_workspace(workspace), m_lists(lists), m_sheets(sheets), m_pane(pane) {}

    void mn_dirNewSub();
    void mn_dirRename();
    void mn_dirDelete();
    /// Deletes what is in the directory and leaves the directory itself.
    void mn_dirClear();
    /// Moves a directory with all below it into another; asks nothing.
    void move(const QString& number, const QString& targetNumber);

    /// Deleting or moving the directory now would take the ground from an entry that is being
    /// edited or whose file is in the cipher; says so then.
    [[nodiscard]] bool isBusyUnder(const QString& number) const;

  private:
    [[nodiscard]] QString selectedDirectory() const;
    [[nodiscard]] bool isTooLong(const QString& title, const QString& what) const;
    void leaveNodes(const QString& number);

    Workspace& m_workspace;
    SheetLists& m_lists;
    Sheets& m_sheets;
    EditPane& m_pane;
    /// Names the next directory; lasts for the life of the window.
    int m_newDirectories = 0;
};

}  // namespace keeper
