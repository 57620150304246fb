// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "workspace/workspace_fixture.h"

namespace keeper {
namespace {

class SheetsTest : public WorkspaceTest {
  protected:
    void SetUp() override {
        WorkspaceTest::SetUp();
        addWeb(u"0101"_s, u"甲"_s, u"pw"_s);
        addWeb(u"010101"_s, u"乙"_s);
        addWeb(u"010103"_s, u"丙 0102"_s);
        addFil(u"0301"_s, u"丁"_s, u"/no/such"_s);
        ASSERT_TRUE(m_entries.SetBookmark(u"010103"_s, true));
        m_database.execute("delete from tb_SysLog");
        m_sheets.RefreshSheets();
    }
    QString shown() const { return m_near.pane.txtNo; }
    /// Scripts one answer to a question.
    void answer(Prompt::Answer answer) { m_prompt.answers.push_back(answer); }
    /// The lists agree with the database, tree and search list in every line.
    void expectFresh() {
        QStringList before = linesOf(m_workspace.lsbSearch);
        QStringList marked = linesOf(m_workspace.lsbBookmark);
        QStringList expected =
            values(u"select dirPath||entNo||' '||Title from tb_Entry order by 1"_s);
        before.sort();
        marked.sort();
        EXPECT_EQ(before, expected);
        EXPECT_EQ(marked, values(u"select dirPath||entNo||' '||Title from tb_Entry "
                                 u"where Bookmark order by 1"_s));
        EXPECT_EQ(m_sheets.state().lblTotal, QString::number(expected.size()));
    }
};

TEST_F(SheetsTest, fillsFromTheDatabase) {
    m_settings.p_mainTabNo(2);
    m_settings.p_recentUpdateAmount(2);
    m_sheets.start();
    EXPECT_EQ(m_sheets.state().tab, SheetTab::Favourite);
    EXPECT_EQ(m_sheets.state().selectedKey, u"dir01");
    EXPECT_EQ(m_sheets.state().lblTotal, u"4");
    EXPECT_EQ(m_sheets.state().lblBookmark, u"书签:（1）");
    EXPECT_EQ(m_sheets.state().lblRecentUpdates, u"最近更新:（2）");
    EXPECT_TRUE(m_sheets.state().isToolbarEnabled);
    expectFresh();
    const ItemTreeModel& tree = m_workspace.tvwDirectory;
    EXPECT_EQ(tree.text(tree.tree().findKey(u"dir0101")), u"邮箱(0101)");
    m_sheets.selectTab(SheetTab::Search);
    EXPECT_EQ(m_near.calls.takeLast(), u"focus search");
    EXPECT_EQ(m_settings.p_mainTabNo(), 1);
    m_settings.p_themeBackground(true);
    m_sheets.RefreshTrvDirectory();
    EXPECT_TRUE(m_sheets.state().treeBackground.has_value());
}

TEST_F(SheetsTest, aClickMeansWhatTheStateSays) {
    m_sheets.clickTree(u"ent0101"_s);
    EXPECT_EQ(shown(), u"0101");
    EXPECT_EQ(m_near.fills.back(), kArmFill);
    EXPECT_TRUE(m_sheets.state().canDelete);
    m_sheets.clickTree(u"dir0101"_s);
    EXPECT_EQ(shown(), QString());
    EXPECT_EQ(m_near.fills.back(), kFillEnded);
    EXPECT_FALSE(m_sheets.state().canDelete || m_near.pane.isPicDetailVisible);
    m_sheets.doubleClickBackground();
    EXPECT_EQ(m_workspace.m_editState, EditState::Add);
    EXPECT_EQ(m_near.pane.txtTitle, u"邮箱");
    EXPECT_EQ(shown(), u"010102");
    m_sheets.clickTree(u"ent0301"_s);
    EXPECT_EQ(shown(), u"0302") << "the first free number beside the entry";
    EXPECT_EQ(m_near.pane.p_optType, 2);
    m_sheets.ShowListEntry(u"010103"_s);
    EXPECT_EQ(shown(), u"010102");
    EXPECT_EQ(m_sheets.state().selectedKey, u"ent010103");
    EXPECT_EQ(m_near.calls.takeLast(), u"focus tree");
    m_pane.mn_cancel();
    EXPECT_EQ(m_near.pane.txtTitle, u"丙 0102");
    m_pane.EnterModify(true);
    m_sheets.clickTree(u"dir01"_s);
    EXPECT_EQ(shown(), u"0102") << "where the save will move it";
    EXPECT_EQ(m_near.pane.txtTitle, u"丙 0102");
    EXPECT_TRUE(hasNode(u"ent010103"_s));
    m_pane.mn_save();
    EXPECT_TRUE(hasNode(u"ent0102"_s) && !hasNode(u"ent010103"_s));
    expectFresh();
    m_sheets.showInTree(u"0301"_s);
    EXPECT_EQ(m_sheets.state().selectedKey, u"ent0301");
    m_sheets.pressTree();
    EXPECT_EQ(shown(), u"0301");
}

TEST_F(SheetsTest, searchesByWholeTitleOrByNumber) {
    const auto found = [this](const QString& text) {
        m_sheets.searchFor(text);
        return shown();
    };
    EXPECT_EQ(found(u"乙"_s), u"010101");
    EXPECT_EQ(m_sheets.state().searchRow, 1);
    EXPECT_EQ(found(u"丙"_s), QString()) << "a part of a title finds nothing";
    EXPECT_EQ(m_near.fills.back(), kFillEnded);
    EXPECT_EQ(found(u"010103"_s), u"010103");
    EXPECT_EQ(found(u"0102"_s), u"010103") << "digits in a title count";
    EXPECT_EQ(found(u"0101"_s), u"0101");
    EXPECT_EQ(found(u"010"_s), QString());
    EXPECT_EQ(found(u"0301"_s), u"0301");
    EXPECT_EQ(found({}), QString());
    EXPECT_EQ(m_sheets.state().searchRow, ItemListModel::kNoRow);
}

TEST_F(SheetsTest, fitsThePopupToTheNode) {
    const DirPopup entry = m_sheets.SetDirPopup(u"ent0101"_s);
    EXPECT_TRUE(entry.mn_dirDeleteEntry && entry.areEditItemsVisible);
    EXPECT_FALSE(entry.mn_dirNewSub || entry.mn_dirRename || entry.mn_dirClear);
    const DirPopup big = m_sheets.SetDirPopup(u"dir01"_s);
    EXPECT_TRUE(big.mn_dirNewSub && big.mn_dirClear && big.mn_dirExpand);
    EXPECT_FALSE(big.mn_dirRename || big.mn_dirDelete || big.mn_dirDeleteEntry);
    m_settings.p_mainSizeType(0);
    const DirPopup deeper = m_sheets.SetDirPopup(u"dir0101"_s);
    EXPECT_TRUE(deeper.mn_dirRename && deeper.mn_dirDelete && deeper.mn_dirCollapse);
    EXPECT_FALSE(deeper.areEditItemsVisible);
    m_sheets.mn_dirExpand();
    EXPECT_EQ(m_near.calls.takeLast(), u"open dir01");
}

TEST_F(SheetsTest, bookmarks) {
    m_sheets.AddBookmark();
    m_sheets.RemoveBookmark(ItemListModel::kNoRow);
    EXPECT_EQ(m_prompt.takeTexts(),
              QStringList({u"请选择要添加书签的条目！"_s, u"请选择要移除的书签！"_s}));
    m_sheets.clickTree(u"ent010103"_s);
    m_sheets.AddBookmark();
    m_pane.EnterModify(true);
    m_sheets.AddBookmark();
    EXPECT_EQ(m_prompt.takeTexts(),
              QStringList({u"已收藏本条目！"_s, u"请在浏览查找状态下执行！"_s}));
    m_pane.mn_cancel();
    m_sheets.clickTree(u"ent0301"_s);
    m_sheets.AddBookmark();
    EXPECT_EQ(m_sheets.state().lblBookmark, u"书签:（2）");
    answer(Prompt::Answer::No);
    m_sheets.RemoveBookmark(0);
    answer(Prompt::Answer::Yes);
    m_sheets.RemoveBookmark(0);
    EXPECT_EQ(m_prompt.takeTexts(),
              QStringList({u"是否要移除该书签？"_s, u"是否要移除该书签？"_s}));
    EXPECT_EQ(linesOf(m_workspace.lsbBookmark), QStringList(u"0301 丁"_s));
    expectFresh();
}

TEST_F(SheetsTest, deletesAnEntryAndGoesToTheOneBefore) {
    m_disposal.mn_delete();
    EXPECT_EQ(m_prompt.takeTexts(), QStringList(u"请选择要删除的条目。"_s));
    m_sheets.clickTree(u"ent010103"_s);
    answer(Prompt::Answer::No);
    m_disposal.mn_delete();
    answer(Prompt::Answer::Yes);
    m_disposal.mn_delete();
    EXPECT_EQ(m_prompt.takeTexts(),
              QStringList({u"是否要删除条目【丙 0102】？"_s, u"是否要删除条目【丙 0102】？"_s}));
    EXPECT_EQ(m_near.beeps.back(), Beeper::Sound::Warning);
    EXPECT_EQ(shown(), u"010101");
    EXPECT_EQ(m_sheets.state().selectedKey, u"ent010101");
    EXPECT_EQ(takeLogs(), QStringList(u"40 0 010103|丙 0102"_s));
    answer(Prompt::Answer::Yes);
    m_disposal.mn_delete();
    m_prompt.takeTexts();
    EXPECT_EQ(shown(), QString()) << "ent0101 is an entry of another directory";
    EXPECT_EQ(m_sheets.state().selectedKey, u"dir0101");
    EXPECT_TRUE(m_near.gateAsked.empty());
    expectFresh();
    m_sheets.clickTree(u"ent0101"_s);
    m_pane.EnterModify(true);
    m_disposal.mn_delete();
    EXPECT_EQ(m_prompt.takeTexts(), QStringList(workspacetext::browseOnly()));
}

TEST_F(SheetsTest, deletesAFileWithItsEntryOrLeavesIt) {
    const QString question =
        u"是否要删除条目【戊】，以及其所对应的文件？\r\n是：删除条目和文件；\r\n否：仅删除条目；"
        u"\r\n取消：两者都不删除。"_s;
    const QString path = m_home.path(u"a.txt"_s);
    const auto makeEntry = [&] {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        addFil(u"0305"_s, u"戊"_s, path, u"pw"_s);
        m_sheets.RefreshSheets();
        m_sheets.clickTree(u"ent0305"_s);
        takeLogs();
    };
    m_settings.SetAuthority(1, kDeleteProtectedFile);
    makeEntry();
    answer(Prompt::Answer::Cancel);
    m_disposal.DeleteEntry();
    EXPECT_TRUE(m_near.gateAsked.empty());
    answer(Prompt::Answer::Yes);
    m_near.gateOpens = false;
    m_disposal.DeleteEntry();
    m_workspace.m_cryptNo = u"0305"_s;
    m_disposal.DeleteEntry();
    m_workspace.m_cryptNo.clear();
    EXPECT_EQ(m_prompt.takeTexts(),
              QStringList({question, question, workspacetext::fileInCipher()}));
    EXPECT_TRUE(hasNode(u"ent0305"_s) && QFile::exists(path));
    m_near.gateOpens = true;
    answer(Prompt::Answer::No);
    m_disposal.DeleteEntry();
    EXPECT_TRUE(QFile::exists(path));
    EXPECT_EQ(takeLogs(), QStringList(u"40 0 0305|戊"_s));
    EXPECT_EQ(shown(), u"0301");
    makeEntry();
    answer(Prompt::Answer::Yes);
    m_disposal.DeleteEntry();
    EXPECT_FALSE(QFile::exists(path));
    EXPECT_EQ(takeLogs(), QStringList(u"41 1 0305|"_s + path));
    m_prompt.takeTexts();
    expectFresh();
}

TEST_F(SheetsTest, discardsAndActivates) {
    m_database.execute("update tb_Entry set modPwdDays=30");
    m_sheets.clickTree(u"ent0101"_s);
    answer(Prompt::Answer::Cancel);
    m_disposal.chkEffective_Click();
    EXPECT_TRUE(m_near.pane.chkEffective);
    answer(Prompt::Answer::Ok);
    m_disposal.chkEffective_Click();
    EXPECT_FALSE(m_near.pane.chkEffective);
    EXPECT_EQ(m_near.pane.txtModPwdDays, u"0");
    EXPECT_EQ(m_near.fills.back(), kFillDiscarded);
    m_settings.SetAuthority(1, kActivateDiscarded);
    m_near.gateOpens = false;
    answer(Prompt::Answer::Ok);
    m_disposal.chkEffective_Click();
    EXPECT_FALSE(m_near.pane.chkEffective);
    m_near.gateOpens = true;
    answer(Prompt::Answer::Ok);
    m_disposal.chkEffective_Click();
    EXPECT_TRUE(m_near.pane.chkEffective);
    EXPECT_EQ(m_near.fills.back(), kFillEnded);
    EXPECT_EQ(takeLogs(), QStringList({u"50 1 0101|甲"_s, u"50 2 0101|甲"_s}));
    const QString discard = u"你确定要废弃本条目吗？"_s;
    const QString activate = u"你确定要激活本条目吗？"_s;
    EXPECT_EQ(m_prompt.takeTexts(), QStringList({discard, discard, activate, activate}));
}

TEST_F(SheetsTest, keepsDirectories) {
    m_sheets.clickTree(u"dir01"_s);
    m_prompt.inputs = {u"新"_s, QString(21, u'长'), std::nullopt, QString()};
    for (int i = 0; i < 4; ++i) {
        m_commands.mn_dirNewSub();
    }
    EXPECT_TRUE(hasNode(u"dir0102"_s) && !hasNode(u"dir0103"_s));
    EXPECT_EQ(m_prompt.dialogs, QStringList({u"创建子目录|请输入新目录的名字：|新建目录1"_s,
                                             u"创建子目录|请输入新目录的名字：|新建目录2"_s,
                                             u"创建子目录|请输入新目录的名字：|新建目录2"_s,
                                             u"创建子目录|请输入新目录的名字：|新建目录2"_s}));
    m_commands.mn_dirRename();
    m_commands.mn_dirDelete();
    EXPECT_EQ(m_prompt.takeTexts(),
              QStringList({u"目录名字不得多于20个字符！"_s, u"不能重命名分类目录。"_s,
                           u"禁止删除分类目录！"_s}));
    m_sheets.clickTree(u"dir0102"_s);
    m_prompt.inputs = {u"O'Neil"_s, QString(21, u'长')};
    m_commands.mn_dirRename();
    m_commands.mn_dirRename();
    EXPECT_EQ(value(u"select Title from tb_Directory where dirPath='0102'"_s), u"O'Neil");
    m_commands.mn_dirClear();
    answer(Prompt::Answer::Cancel);
    m_commands.mn_dirDelete();
    answer(Prompt::Answer::Ok);
    m_commands.mn_dirDelete();
    EXPECT_EQ(m_prompt.takeTexts(), QStringList({u"目录标题不得多于20个字符！"_s, u"该目录已空。"_s,
                                                 u"确实要删除空目录【O'Neil】吗？"_s,
                                                 u"确实要删除空目录【O'Neil】吗？"_s}));
    EXPECT_EQ(m_sheets.state().selectedKey, u"dir01");
    EXPECT_EQ(takeLogs(),
              QStringList({u"35 0 0102|新"_s, u"36 0 0102|新|O'Neil"_s, u"37 1 0102|O'Neil"_s}));
}

TEST_F(SheetsTest, deletesAndClearsWhatLiesBelow) {
    addDirectory(u"030101"_s, u"深"_s);
    addFil(u"03010101"_s, u"底"_s, u"/x"_s);
    m_sheets.RefreshSheets();
    m_sheets.clickTree(u"ent010101"_s);
    m_pane.EnterModify(true);
    m_sheets.selectNode(u"dir0101"_s);
    m_commands.mn_dirDelete();
    EXPECT_EQ(m_prompt.takeTexts(), QStringList(workspacetext::browseOnly()))
        << "an entry below it is being edited";
    m_pane.mn_cancel();
    answer(Prompt::Answer::Ok);
    m_commands.mn_dirDelete();
    EXPECT_EQ(m_prompt.takeTexts(),
              QStringList(u"【邮箱】非空，删除的话将会把其下的所有子目录和条目删除。"_s));
    EXPECT_EQ(linesOf(m_workspace.lsbBookmark), QStringList());
    expectFresh();
    m_sheets.clickTree(u"dir03"_s);
    answer(Prompt::Answer::Yes);
    m_commands.mn_dirClear();
    EXPECT_EQ(m_prompt.takeTexts(), QStringList(u"其下所对应的实际文件必须手动删除。\r\n"
                                                u"是否真的要清空该目录？"_s));
    EXPECT_EQ(takeLogs(), QStringList({u"37 1 0101|邮箱"_s, u"37 -1 03|用户文件"_s}));
    EXPECT_EQ(linesOf(m_workspace.lsbRecentUpdate), QStringList(u"0101 甲"_s));
    expectFresh();
}

TEST_F(SheetsTest, dragsWithAllQuestions) {
    const auto refused = [this](const QString& source, const QString& target) {
        m_drag.drop(source, target);
        return m_prompt.takeTexts().join(u'|');
    };
    EXPECT_EQ(refused({}, u"dir01"_s), QString());
    EXPECT_EQ(refused(u"ent0101"_s, u"ent0101"_s), QString());
    EXPECT_EQ(refused(u"dir01"_s, u"dir02"_s), u"禁止移动分类目录！");
    EXPECT_EQ(refused(u"dir01"_s, {}), u"禁止删除分类目录！");
    EXPECT_EQ(refused(u"ent0101"_s, u"dir03"_s), u"网络类和文件类的条目或目录不能互相移动。");
    EXPECT_EQ(refused(u"ent0101"_s, u"ent010103"_s),
              u"要改变条目之间的顺序，可以通过修改条目的编号来实现。");
    answer(Prompt::Answer::No);
    EXPECT_EQ(refused(u"ent010103"_s, u"dir02"_s),
              u"是否要把【丙 0102】移动到【应用程序(02)】之中？");
    m_sheets.clickTree(u"ent010103"_s);
    answer(Prompt::Answer::Yes);
    refused(u"ent010103"_s, u"dir02"_s);
    EXPECT_EQ(shown(), u"0201") << "the pane follows";
    EXPECT_EQ(m_near.pane.lblLocation.caption, u"程序路径");
    EXPECT_EQ(linesOf(m_workspace.lsbBookmark), QStringList(u"0201 丙 0102"_s));
    EXPECT_EQ(linesOf(m_workspace.lsbRecentUpdate).first(), u"0201 丙 0102");
    expectFresh();
    m_pane.EnterModify(true);
    m_pane.editField(PaneField::Title, u"moved"_s);
    m_pane.mn_save();
    EXPECT_EQ(m_prgs.Search(u"0201"_s).m_Title, u"moved");

    m_sheets.clickTree(u"ent010101"_s);
    answer(Prompt::Answer::Yes);
    EXPECT_EQ(refused(u"dir0101"_s, u"ent0201"_s),
              u"是否要把【邮箱(0101)】移动到【moved】所在目录之中？");
    EXPECT_EQ(shown(), u"020101");
    EXPECT_TRUE(hasNode(u"ent020101"_s) && !hasNode(u"dir0101"_s));
    EXPECT_EQ(m_near.calls.last(), u"focus tree");
    expectFresh();

    m_sheets.clickTree(u"ent0201"_s);
    m_sheets.ShowListEntry(u"0101"_s);
    answer(Prompt::Answer::Yes);
    EXPECT_EQ(refused(u"ent0201"_s, {}), u"是否要删除条目【moved】？") << "what was dragged";
    EXPECT_TRUE(hasNode(u"ent0101"_s) && !hasNode(u"ent0201"_s));
}

TEST_F(SheetsTest, saysThatADirectoryIsFull) {
    for (int pair = 1; pair <= 99; ++pair) {
        addDirectory(QStringLiteral("02%1").arg(pair, 2, 10, QLatin1Char('0')), u"x"_s);
        addWeb(QStringLiteral("02%1").arg(pair, 2, 10, QLatin1Char('0')), u"x"_s);
    }
    m_sheets.RefreshSheets();
    m_sheets.clickTree(u"dir02"_s);
    m_commands.mn_dirNewSub();
    EXPECT_EQ(m_prompt.takeTexts(),
              QStringList(u"本层子目录数目已达到本层目录的最大容纳值，无法继续创建！"_s));
    answer(Prompt::Answer::Yes);
    m_drag.drop(u"ent0101"_s, u"dir02"_s);
    EXPECT_EQ(m_prompt.takeTexts().last(), u"该层目录所能容纳的条目数量已经达到极限！");
    answer(Prompt::Answer::Yes);
    m_drag.drop(u"dir0101"_s, u"dir02"_s);
    EXPECT_EQ(m_prompt.takeTexts().last(), u"该层目录所能容纳的子目录数量已经达到极限！");
    m_drag.drop(u"ent0101"_s, u"ent0204"_s);
    EXPECT_EQ(m_prompt.takeTexts().last(), u"编号为[02]的目录所能容纳的条目数量已经达到极限！");
}

}  // namespace
}  // namespace keeper
