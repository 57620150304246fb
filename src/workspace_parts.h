// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "store/ent_logs.h"
#include "workspace/directory_commands.h"
#include "workspace/edit_pane.h"
#include "workspace/entry_disposal.h"
#include "workspace/form_size.h"
#include "workspace/sheets.h"
#include "workspace/tree_drag.h"
#include "workspace/workspace.h"

namespace keeper {

class ColumnKey;
class System;

/// What the workspace takes from the session; all outlive the parts.
struct SessionParts {
    Prompt& prompt;
    Clock& clock;
    System& system;
    StoreContext& store;
    FileOperator& files;
    Entries& entries;
    Prgs& programs;
    Fils& fils;
    SysLogs& logs;
    AuthorityGate& gate;
    Beeper& beeper;
    WorkspaceView& view;
};

/// The object graph behind the main window.
class WorkspaceParts {
  public:
    explicit WorkspaceParts(const SessionParts& session);

  private:
    Directories m_directories;
    Webs m_webs;
    EntLogs m_entLogs;
    AssPwds m_assPwds;
    AssNums m_assNums;
    NoFillMonitor m_monitor;
    NoDigest m_digest;

  public:
    Workspace workspace;
    SheetLists lists;
    EditPane pane;
    Sheets sheets;
    EntryDisposal disposal;
    DirectoryCommands directories;
    TreeDrag drag;
    FormSize size;
};

}  // namespace keeper
