// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QApplication>

#include "ui/frm_main.h"
#include "workspace/form_size.h"
#include "workspace/workspace_fixture.h"

namespace keeper {

/// The main window over a database of its own: 0101 "邮箱" with the entry 010101 "信箱", 0102
/// "论坛".
class MainWindowTest : public WorkspaceTest {
  protected:
    void SetUp() override {
        WorkspaceTest::SetUp();
        addWeb(u"010101"_s, u"信箱"_s, u"pass-1"_s);
        addWeb(u"0102"_s, u"论坛"_s, u"pass-2"_s);
        m_near.window = &m_window;
        m_window.attach({{m_workspace, m_sheets, m_commands, m_drag}, m_pane, m_disposal, m_size});
        m_sheets.start();
        m_pane.SetEditState(EditState::Browse);
        m_pane.ShowControls(EditPane::kDirectoryType);
        m_window.start();
        m_window.show();
        QApplication::setActiveWindow(&m_window);
    }

    FormSize m_size{m_workspace};
    frmMain m_window;
};

}  // namespace keeper
