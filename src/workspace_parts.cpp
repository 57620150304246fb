// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "workspace_parts.h"

#include "app/system.h"

namespace keeper {

WorkspaceParts::WorkspaceParts(const SessionParts& session)
    : m_directories(session.store),
      m_webs(session.store, session.entries),
      m_entLogs(session.store),
      m_assPwds(session.store, m_entLogs),
      m_assNums(session.store),
      workspace({session.prompt, session.clock, session.files, session.system.settings(),
                 m_directories, session.entries, m_webs, session.programs, session.fils, m_assPwds,
                 m_assNums, session.logs, session.gate, m_monitor, m_digest, session.beeper,
                 session.view}),
      lists(workspace),
      pane(workspace, lists),
      sheets(workspace, lists, pane),
      disposal(workspace, lists, sheets, pane),
      directories(workspace, lists, sheets, pane),
      drag(workspace, lists, sheets, pane, directories, disposal),
      size(workspace) {}

}  // namespace keeper
