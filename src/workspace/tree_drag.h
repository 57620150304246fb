// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

#include "workspace/directory_commands.h"
#include "workspace/entry_disposal.h"
#include "workspace/sheets.h"

namespace keeper {

/// Dragging in the tree moves entries and directories, and throws away what is dropped on nothing.
class TreeDrag {
  public:
    TreeDrag(Workspace& workspace, SheetLists& lists, Sheets& sheets, EditPane& pane,
             DirectoryCommands& directories, EntryDisposal& disposal)
        : m_workspace(workspace),
          m_lists(lists),
          m_sheets(sheets),
          m_pane(pane),
          m_directories(directories),
          m_disposal(disposal) {}

    /// The node `source` was dropped on `target`; an empty target is the empty part of the tree.
    void drop(const QString& source, const QString& target);

  private:
    void DeleteDroppedNode(const QString& key);
    void dropOnEntry(const QString& targetNo) const;
    void moveEntry(const QString& source, const QString& target);
    void moveDirectory(const QString& source, const QString& target);
    [[nodiscard]] QString textOf(const QString& key) const;
    [[nodiscard]] bool confirm(const QString& source, const QString& target,
                               const QString& ending) const;

    Workspace& m_workspace;
    SheetLists& m_lists;
    Sheets& m_sheets;
    EditPane& m_pane;
    DirectoryCommands& m_directories;
    EntryDisposal& m_disposal;
};

}  // namespace keeper
