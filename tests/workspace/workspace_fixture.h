// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QFile>
#include <deque>
#include <vector>

#include "store/ent_logs.h"
#include "store/store_fixture.h"
#include "support/temp_home.h"
#include "workspace/directory_commands.h"
#include "workspace/edit_pane.h"
#include "workspace/entry_disposal.h"
#include "workspace/sheets.h"
#include "workspace/tree_drag.h"
#include "workspace/workspace.h"

namespace keeper {

using namespace Qt::StringLiterals;

class TestOwner final : public PrivateFolderOwner {
  public:
    [[nodiscard]] QString p_userName() const override { return u"test"_s; }
    [[nodiscard]] QString p_privateFolder() const override { return u"/nowhere/MORV - test"_s; }
    [[nodiscard]] QString p_lgnKeyTip() const override { return {}; }
};

/// Keeps what the main window asks of its neighbours.
class RecordingNeighbours final : public FillMonitorPort,
                                  public AuthorityGate,
                                  public DigestPort,
                                  public Beeper,
                                  public WorkspaceView {
  public:
    std::vector<int> fills;
    std::vector<Sound> beeps;
    std::vector<bool> gateAsked;
    bool gateOpens = true;
    bool digestRuns = false;
    QStringList calls;
    EditPaneState pane;
    int paneShown = 0;
    /// A real window that shows what is told here, if there is one.
    WorkspaceView* window = nullptr;

    void ActivateMonitor(int state) override { fills.push_back(state); }
    bool CheckAuthority(bool isNeeded) override {
        gateAsked.push_back(isNeeded);
        return !isNeeded || gateOpens;
    }
    [[nodiscard]] bool isComputing() const override { return digestRuns; }
    void StopDigest(bool withBeep) override {
        calls << (withBeep ? u"stop digest, beep"_s : u"stop digest"_s);
        digestRuns = false;
    }
    void MessageBeep(Sound sound) override { beeps.push_back(sound); }
    void showPane(const EditPaneState& state) override {
        pane = state;
        ++paneShown;
        pass(&WorkspaceView::showPane, state);
    }
    void showSheets(const SheetsState& state) override { pass(&WorkspaceView::showSheets, state); }
    void expandNode(const QString& key) override { pass(&WorkspaceView::expandNode, key); }
    void expandSubtree(const QString& key, bool isOpen) override {
        calls << (isOpen ? u"open "_s : u"close "_s) + key;
        pass(&WorkspaceView::expandSubtree, key, isOpen);
    }
    void focusTree() override {
        calls << u"focus tree"_s;
        pass(&WorkspaceView::focusTree);
    }
    void focusSearch() override {
        calls << u"focus search"_s;
        pass(&WorkspaceView::focusSearch);
    }

  private:
    template <typename Operation, typename... Arguments>
    void pass(Operation operation, const Arguments&... arguments) {
        if (window != nullptr) {
            (window->*operation)(arguments...);
        }
    }
};

/// The main window's logic over the data classes.
class WorkspaceTest : public StoreTest {
  protected:
    void SetUp() override {
        StoreTest::SetUp();
        m_settings.p_recentUpdateAmount(10);
        m_settings.p_mainSizeType(1);
        addDirectory(u"0101"_s, u"邮箱"_s);
        addDirectory(u"0301"_s, u"文档"_s);
    }

    /// The first column of all rows.
    QStringList values(const QString& sql) {
        Statement statement(m_database, sql.toUtf8().constData());
        QStringList texts;
        while (statement.step()) {
            texts << statement.text(0);
        }
        return texts;
    }
    QString value(const QString& sql) { return values(sql).value(0); }
    /// The system log since the last look: status, count and description of each row.
    QStringList takeLogs() {
        const QStringList rows = values(
            u"select statusNo||' '||lCount||' '||replace(Description,char(9),'|') "
            u"from tb_SysLog order by rowid"_s);
        m_database.execute("delete from tb_SysLog");
        return rows;
    }
    void addWeb(const QString& number, const QString& title, const QString& password = {}) {
        Web web;
        web.p_No(number);
        web.m_Title = title;
        web.m_pwdName = web.m_numName = kCustomName;
        web.m_customPwd = password;
        web.m_Address = u"https://example.org"_s;
        ASSERT_TRUE(m_webs.Add(web));
    }
    void addFil(const QString& number, const QString& title, const QString& path,
                const QString& password = {}, bool isEncrypted = false) {
        Fil fil;
        fil.p_No(number);
        fil.m_Title = title;
        fil.m_pwdName = kCustomName;
        fil.m_customPwd = password;
        fil.m_filePath = path;
        fil.m_Encrypted = isEncrypted;
        ASSERT_TRUE(m_fils.Add(fil));
    }
    [[nodiscard]] bool hasNode(const QString& key) const {
        return m_workspace.tvwDirectory.tree().findKey(key) != ItemTree::kRoot;
    }
    [[nodiscard]] static QStringList linesOf(const ItemListModel& list) {
        QStringList lines;
        for (int row = 0; row < list.count(); ++row) {
            lines << list.index(row).data(NumberRole).toString() + u' ' +
                         list.index(row).data(TitleRole).toString();
        }
        return lines;
    }
    /// Fills what every save needs.
    void fill(const QString& title) {
        m_pane.editField(PaneField::Title, title);
        m_pane.editField(PaneField::Location, u"https://example.org"_s);
    }

    TempHome m_home;
    EntLogs m_entLogs{m_context};
    SysLogs m_sysLogs{m_context};
    AssPwds m_assPwds{m_context, m_entLogs};
    AssNums m_assNums{m_context};
    Settings m_settings{m_database, m_prompt, m_clock};
    UserFolders m_folders;
    TestOwner m_owner;
    FileOperator m_files{m_folders, m_clock, m_prompt, m_owner};
    RecordingNeighbours m_near;
    Workspace m_workspace{{m_prompt, m_clock, m_files, m_settings, m_directories, m_entries, m_webs,
                           m_prgs, m_fils, m_assPwds, m_assNums, m_sysLogs, m_near, m_near, m_near,
                           m_near, m_near}};
    SheetLists m_lists{m_workspace};
    EditPane m_pane{m_workspace, m_lists};
    Sheets m_sheets{m_workspace, m_lists, m_pane};
    EntryDisposal m_disposal{m_workspace, m_lists, m_sheets, m_pane};
    DirectoryCommands m_commands{m_workspace, m_lists, m_sheets, m_pane};
    TreeDrag m_drag{m_workspace, m_lists, m_sheets, m_pane, m_commands, m_disposal};
};

}  // namespace keeper
