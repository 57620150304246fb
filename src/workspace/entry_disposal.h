// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

#include "workspace/edit_pane.h"
#include "workspace/sheets.h"
#include "workspace/workspace.h"

namespace keeper {

/// Deletes the entry on display, and takes it out of use or back into use.
class EntryDisposal {
  public:
    EntryDisposal(Workspace& workspace, SheetLists& lists, Sheets& sheets, EditPane& pane)
        : m_workspace(workspace), m_lists(lists), m_sheets(sheets), m_pane(pane) {}

    /// In browse only.
    void mn_delete();
    /// Asks, deletes, writes the log. A file on disk goes with its entry when the person says so.
    void DeleteEntry();
    /// A person clicked the box. It goes back when nothing was done.
    void chkEffective_Click();

  private:
    enum class Choice { Nothing, EntryOnly, EntryAndFile };
    [[nodiscard]] Choice ask(const QString& title, bool isFile) const;
    void deleteFile(const QString& number, const QString& location) const;
    void showNeighbour(const QString& number);
    [[nodiscard]] bool confirmEffective(bool isActivating) const;

    Workspace& m_workspace;
    SheetLists& m_lists;
    Sheets& m_sheets;
    EditPane& m_pane;
};

}  // namespace keeper
