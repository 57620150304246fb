// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/random.h"
#include "workspace/workspace_fixture.h"

namespace keeper {
namespace {

class EditPaneTest : public WorkspaceTest {
  protected:
    void SetUp() override {
        WorkspaceTest::SetUp();
        m_database.execute("delete from tb_SysLog");
    }
    void openBrowsing(const QString& key) {
        m_sheets.RefreshSheets();
        m_sheets.clickTree(key);
    }
    int state() const { return static_cast<int>(m_workspace.m_editState); }
};

TEST_F(EditPaneTest, passesBetweenStatesAsTheTableSays) {
    addWeb(u"0101"_s, u"甲"_s);
    openBrowsing(u"ent0101"_s);
    EXPECT_EQ(m_near.pane.operation, u"浏览查找");

    m_pane.EnterModify(true);
    EXPECT_EQ(m_near.pane.operation, u"单条修改");
    m_pane.EnterAdd(true);
    EXPECT_EQ(m_prompt.takeTexts(), QStringList(u"请先结束当前的修改状态，再切换到添加状态。"_s));
    m_pane.EnterModify(false);
    EXPECT_EQ(m_near.pane.operation, u"批量修改");
    EXPECT_EQ(m_near.pane.txtNo, u"0101");
    EXPECT_TRUE(m_near.pane.focus.selectAll);
    m_near.digestRuns = true;
    m_pane.mn_cancel();
    EXPECT_EQ(m_near.calls.takeLast(), u"stop digest, beep");
    EXPECT_EQ(state(), 0);
    EXPECT_EQ(m_near.pane.txtTitle, u"甲");

    m_pane.EnterAdd(true, u"起名"_s);
    EXPECT_EQ(m_near.pane.operation, u"单条添加");
    EXPECT_EQ(m_near.pane.txtNo, u"0102") << "beside the selected entry";
    EXPECT_EQ(m_near.pane.txtTitle, u"起名");
    EXPECT_EQ(m_near.fills.back(), kFillEnded);
    m_pane.EnterModify(true);
    EXPECT_EQ(m_prompt.takeTexts(), QStringList(u"请先结束当前的添加状态，再切换到修改状态。"_s));
    m_pane.EnterAdd(false);
    EXPECT_EQ(m_near.pane.operation, u"批量添加");
    EXPECT_EQ(m_near.pane.txtTitle, QString()) << "an add may start over";
    m_pane.mn_cancel();
    EXPECT_EQ(state(), 0);
}

TEST_F(EditPaneTest, showsTheControlsOfStateAndClass) {
    struct Row {
        QString key;
        QString location;
        QString command;
        QString tip;
        QString picture;
        bool canUseNumber;
    };
    addWeb(u"0101"_s, u"甲"_s);
    addFil(u"0301"_s, u"乙"_s, u"/no/such"_s);
    Prg prg;
    prg.p_No(u"0201"_s);
    prg.m_Title = u"丙"_s;
    prg.m_pwdName = prg.m_numName = kCustomName;
    ASSERT_TRUE(m_prgs.Add(prg));
    m_sheets.RefreshSheets();
    const std::vector<Row> reading{
        {u"ent0101"_s, u"ＵＲＬ(&R)"_s, u"显示号码(&M)"_s, u"复制URL"_s, u"copy"_s, true},
        {u"ent0201"_s, u"程序路径"_s, u"显示号码(&M)"_s, u"打开源目录"_s, u"open"_s, true},
        {u"ent0301"_s, u"文件路径"_s, u"比对摘要(&N)"_s, u"打开源目录"_s, u"open"_s, false}};
    const std::vector<Row> editing{
        {u"ent0101"_s, u"ＵＲＬ(&R)"_s, u"自定义(&N)"_s, u"粘贴URL"_s, u"paste"_s, false},
        {u"ent0201"_s, u"程序路径"_s, u"自定义(&N)"_s, u"选择程序路径"_s, u"open"_s, false},
        {u"ent0301"_s, u"文件路径"_s, u"比对摘要(&N)"_s, u"选择文件路径"_s, u"open"_s, false}};
    const auto check = [this](const Row& row) {
        const EditPaneState& pane = m_near.pane;
        EXPECT_EQ(pane.lblLocation.caption, row.location);
        EXPECT_EQ(pane.Command2.caption, row.command);
        EXPECT_EQ(pane.cmdLocation.toolTip, row.tip);
        EXPECT_EQ(pane.cmdLocationPicture, row.picture);
        EXPECT_EQ(pane.canUseNumber, row.canUseNumber);
        EXPECT_EQ(pane.isChkEncryptedVisible, row.key == u"ent0301");
        EXPECT_TRUE(pane.isPicDetailVisible);
    };
    for (const Row& row : reading) {
        m_sheets.clickTree(row.key);
        check(row);
        EXPECT_FALSE(m_near.pane.canSave || m_near.pane.areFieldsEditable);
        EXPECT_TRUE(m_near.pane.canUsePassword && m_near.pane.isChkEffectiveUsable);
    }
    for (const Row& row : editing) {
        m_sheets.clickTree(row.key);
        m_pane.EnterModify(true);
        check(row);
        EXPECT_TRUE(m_near.pane.canSave && m_near.pane.isTxtNoEditable);
        EXPECT_EQ(m_near.pane.Command2.isEnabled, row.key != u"ent0301");
        EXPECT_EQ(m_near.pane.cmdPassword.caption, u"自定义(&P)");
        EXPECT_EQ(m_near.pane.mn_cancel.caption, u"取消(&C)");
        m_pane.mn_cancel();
    }
    m_pane.EnterAdd(false);
    EXPECT_FALSE(m_near.pane.isTxtNoEditable) << "a new number comes from the tree";
    EXPECT_EQ(m_near.pane.toolbarCancel, u"结　束");
    m_pane.mn_cancel();
    m_sheets.clickTree(u"dir0101"_s);
    EXPECT_FALSE(m_near.pane.isPicDetailVisible || m_near.pane.canUsePassword);
}

/// Each row breaks what it names and everything that is looked at later: the first fault speaks.
TEST_F(EditPaneTest, checksInOrderAndMovesTheFocus) {
    addWeb(u"0101"_s, u"甲"_s);
    openBrowsing(u"ent0101"_s);
    m_pane.EnterModify(true);
    m_pane.editField(PaneField::Location, QString(201, u'x'));
    m_pane.typeNumber(u"1"_s);
    m_pane.typePassword(u"p"_s);
    m_pane.editField(PaneField::ModPwdDays, u"1x"_s);
    m_pane.editField(PaneField::Title, {});
    const auto expectRefused = [this](const QString& message, PaneField field, bool selectAll) {
        EXPECT_FALSE(m_pane.CheckValid());
        EXPECT_EQ(m_prompt.takeTexts(), QStringList(message));
        EXPECT_EQ(m_near.pane.focus.field, field);
        EXPECT_EQ(m_near.pane.focus.selectAll, selectAll);
    };
    const QString format = u"条目编号格式有误！"_s;
    m_pane.editField(PaneField::No, {});
    expectRefused(u"条目编号不能为空！"_s, PaneField::No, false);
    m_pane.editField(PaneField::No, u"01"_s);
    expectRefused(u"禁止在分类目录之外创建条目！"_s, PaneField::No, true);
    for (const QString& number : {u"010"_s, u"01a1"_s, u"-101"_s, u"０１０１"_s}) {
        m_pane.editField(PaneField::No, number);
        expectRefused(format, PaneField::No, true);
    }
    m_pane.editField(PaneField::No, u"0100"_s);
    expectRefused(u"条目编号无效，每层目录最大只能容纳99条条目。"_s, PaneField::No, true);
    m_pane.editField(PaneField::No, u"0101"_s);
    expectRefused(u"请填写条目标题！"_s, PaneField::Title, false);
    m_pane.editField(PaneField::Title, u"题"_s);
    expectRefused(u"网络类条目的“URL/程序路径”长度不能超过200个字符！"_s, PaneField::Location,
                  false);
    m_pane.editField(PaneField::Location, QString(200, u'x'));
    expectRefused(u"号码非空时不能为一个字符！"_s, PaneField::Number, false);
    m_pane.chooseNumberName(kCustomName);
    expectRefused(u"密码非空时不能为一个字符！"_s, PaneField::Password, false);
    m_pane.choosePasswordName(kCustomName);
    expectRefused(u"密码非空时不能为一个字符！"_s, PaneField::Password, false);
    m_pane.typePassword(u"pp"_s);
    for (const QString& days : {u"1x"_s, u""_s, u"1.5"_s, u"-"_s}) {
        m_pane.editField(PaneField::ModPwdDays, days);
        expectRefused(u"改密提醒周期必须输入数字！"_s, PaneField::ModPwdDays, false);
    }
    for (const QString& days : {u"-1"_s, u"1000"_s, u"99999999999"_s}) {
        m_pane.editField(PaneField::ModPwdDays, days);
        expectRefused(u"改密提醒周期天数的取值范围为 0~999！"_s, PaneField::ModPwdDays, false);
    }
    m_pane.editField(PaneField::ModPwdDays, u"999"_s);
    EXPECT_TRUE(m_pane.CheckValid());
    m_pane.mn_cancel();
    ASSERT_TRUE(m_entries.SetEffective(u"0101"_s, false));
    m_sheets.clickTree(u"ent0101"_s);
    EXPECT_EQ(m_near.fills.back(), kFillDiscarded);
    m_pane.EnterModify(true);
    m_pane.editField(PaneField::No, {});
    m_pane.mn_save();
    EXPECT_EQ(m_prompt.takeTexts(), QStringList(u"本条目已废弃！"_s));
    m_pane.mn_cancel();
}

TEST_F(EditPaneTest, takesADigestOrDropsIt) {
    addFil(u"0301"_s, u"甲"_s, u"/no/such"_s);
    openBrowsing(u"ent0301"_s);
    m_pane.EnterModify(true);
    m_near.digestRuns = true;
    for (const int length : {0, 31, 33}) {
        m_pane.typeNumber(QString(length, u'A'));
        EXPECT_TRUE(m_pane.CheckValid());
        EXPECT_EQ(m_pane.GetDigestText(), QString());
    }
    EXPECT_EQ(m_near.calls, QStringList(u"stop digest"_s));
    m_pane.typeNumber(QString(31, u'A') + u'-');
    EXPECT_FALSE(m_pane.CheckValid());
    EXPECT_EQ(m_prompt.takeTexts(), QStringList(u"MD5摘要格式有误！"_s));
    m_pane.typeNumber(QString(32, u'f'));
    m_pane.mn_save();
    EXPECT_EQ(value(u"select hashCode from tb_Fil"_s), QString(32, u'f'));
}

TEST_F(EditPaneTest, addsOneEntryWithItsLogs) {
    openBrowsing(u"dir0101"_s);
    m_pane.mn_save();
    EXPECT_EQ(m_prompt.takeTexts().size(), 1) << "an empty pane fails its checks first";
    m_pane.EnterAdd(true);
    fill(u"新条目"_s);
    m_pane.typeNumber(u"me@example.org"_s);
    m_pane.typePassword(u"secret"_s);
    m_pane.editField(PaneField::ModPwdDays, u"30"_s);
    m_pane.mn_save();
    EXPECT_EQ(state(), 0);
    EXPECT_EQ(m_near.pane.txtTitle, QString());
    EXPECT_EQ(m_pane.GetPasswordText(), QString());
    const Web web = m_webs.Search(u"010101"_s);
    EXPECT_EQ(web.m_Title, u"新条目");
    EXPECT_EQ(web.m_customNum, u"me@example.org");
    EXPECT_EQ(web.m_customPwd, u"secret");
    EXPECT_EQ(web.m_modPwdDays, 30);
    EXPECT_EQ(web.m_recentModPwd, m_clock.today());
    EXPECT_EQ(takeLogs(), QStringList(u"38 0 010101|新条目"_s));
    EXPECT_EQ(values(u"select dirPath||entNo||statusNo||originalPwd from tb_EntLog"_s),
              QStringList(u"0101011"_s));
    EXPECT_EQ(m_near.beeps, std::vector<Beeper::Sound>{Beeper::Sound::Done});
    EXPECT_EQ(m_sheets.state().selectedKey, u"ent010101");
    EXPECT_EQ(m_sheets.state().lblTotal, u"1");
    EXPECT_EQ(m_sheets.state().lblRecentUpdates, u"最近更新:（1）");
    EXPECT_EQ(linesOf(m_workspace.lsbSearch), QStringList(u"010101 新条目"_s));
}

TEST_F(EditPaneTest, aBatchOfAdditionsFillsTheDirectory) {
    for (int pair = 1; pair <= 97; ++pair) {
        addWeb(QStringLiteral("0101%1").arg(pair, 2, 10, QLatin1Char('0')), u"x"_s);
    }
    ASSERT_TRUE(m_entries.MoveTo(u"010150"_s, u"010199"_s));
    openBrowsing(u"dir0101"_s);
    m_pane.EnterAdd(false);
    EXPECT_EQ(m_near.pane.txtNo, u"010150") << "the lowest free number";
    fill(u"一"_s);
    m_pane.mn_save();
    EXPECT_EQ(m_near.pane.txtNo, u"010198");
    EXPECT_EQ(m_near.pane.focus.field, PaneField::Title);
    fill(u"二"_s);
    m_pane.mn_save();
    EXPECT_EQ(m_prompt.takeTexts(), QStringList(u"本层目录的条目数量已达到最大容纳值！"_s));
    EXPECT_EQ(state(), 2);
    fill(u"三"_s);
    m_pane.mn_save();
    EXPECT_EQ(m_prompt.takeTexts(), QStringList(u"条目编号不能为空！"_s));
    m_pane.EnterAdd(true);
    EXPECT_EQ(m_prompt.takeTexts(),
              QStringList(u"本层目录的条目数量已达到最大容纳值，请选择其它目录新增条目！"_s));
    m_sheets.clickTree(u"ent010150"_s);
    EXPECT_EQ(m_prompt.takeTexts(), QStringList(u"本层目录所能容纳的条目数量已达饱和！"_s));
    EXPECT_EQ(m_near.pane.txtNo, QString());
    m_sheets.clickTree(u"dir01"_s);
    EXPECT_EQ(m_near.pane.txtNo, u"0101") << "another directory has room";
}

TEST_F(EditPaneTest, aChangedPasswordGoesToTheHistoryAndAKeptOneDoesNot) {
    addWeb(u"0101"_s, u"甲"_s, u"old"_s);
    openBrowsing(u"ent0101"_s);
    m_clock.advanceDays(3);
    m_pane.EnterModify(true);
    m_pane.editField(PaneField::Title, u"甲二"_s);
    m_pane.mn_save();
    EXPECT_EQ(state(), 0);
    EXPECT_EQ(value(u"select count(*) from tb_EntLog"_s), u"0");
    EXPECT_NE(m_webs.Search(u"0101"_s).m_recentModPwd, m_clock.today());
    m_sheets.clickTree(u"ent0101"_s);
    m_pane.EnterModify(true);
    m_pane.typePassword(u"new"_s);
    m_pane.editField(PaneField::No, u"020207"_s);
    m_pane.mn_save();
    EXPECT_EQ(m_prompt.takeTexts().last(), u"修改条目失败！") << "there is no such directory";
    EXPECT_EQ(state(), 1);
    m_pane.editField(PaneField::No, u"0207"_s);
    m_database.execute(
        "create trigger full before insert on tb_EntLog begin select raise(abort, 'full'); end");
    m_pane.mn_save();
    EXPECT_TRUE(m_prompt.takeTexts().first().contains(u"]EntLogs.Add:\r\n"_s));
    EXPECT_EQ(m_webs.Search(u"0101"_s).m_customPwd, u"old"_s) << "the only copy of the old one";
    m_database.execute("drop trigger full");
    m_pane.mn_save();
    EXPECT_EQ(values(u"select dirPath||entNo||statusNo||pwdName||originalPwd from tb_EntLog"_s),
              QStringList(u"02072自定义old"_s));
    EXPECT_EQ(m_prgs.Search(u"0207"_s).m_recentModPwd, m_clock.today());
    EXPECT_EQ(takeLogs(), QStringList({u"39 0 0101|甲二"_s, u"39 0 0207|甲二"_s}));
    EXPECT_EQ(linesOf(m_workspace.lsbSearch), QStringList(u"0207 甲二"_s));
    EXPECT_EQ(linesOf(m_workspace.lsbRecentUpdate), QStringList(u"0207 甲二"_s));
    EXPECT_TRUE(hasNode(u"ent0207"_s) && !hasNode(u"ent0101"_s));
}

TEST_F(EditPaneTest, whatIsEditedLeavesTheMemoryAndComesBackAsItStood) {
    SystemRandom random;
    addWeb(u"0101"_s, u"甲"_s, u"stored secret"_s);
    openBrowsing(u"ent0101"_s);
    m_pane.EnterModify(true);
    m_pane.editField(PaneField::Remarks, u"半句𠮷"_s);
    m_pane.typeNumber(u"4711-0815"_s);
    m_near.paneShown = 0;
    m_pane.conceal(random);
    m_pane.conceal(random);  // a second lock must not hide the emptiness over it
    EXPECT_GT(m_near.paneShown, 0);
    for (const QString& text :
         {m_near.pane.txtTitle, m_near.pane.txtRemarks, m_near.pane.ComboBox2,
          m_near.pane.cboPassword, m_pane.GetNumberText(), m_pane.GetPasswordText(),
          m_workspace.m_entry->password, m_workspace.m_entry->common.m_customPwd}) {
        EXPECT_EQ(text, QString());
    }
    EXPECT_EQ(state(), 1);
    m_pane.reveal();
    EXPECT_EQ(m_near.pane.txtRemarks, u"半句𠮷");
    EXPECT_EQ(m_pane.GetPasswordText(), u"stored secret");
    m_pane.mn_save();
    const Web saved = m_webs.Search(u"0101"_s);
    EXPECT_EQ(saved.m_Remarks, u"半句𠮷");
    EXPECT_EQ(saved.m_customNum, u"4711-0815");
    EXPECT_EQ(saved.m_customPwd, u"stored secret");
    EXPECT_EQ(value(u"select count(*) from tb_EntLog"_s), u"0") << "the password was not changed";
}

TEST_F(EditPaneTest, refusesChangesThatMustNotBe) {
    addWeb(u"0101"_s, u"甲"_s);
    addFil(u"0301"_s, u"乙"_s, u"/no/such"_s, u"key"_s, true);
    openBrowsing(u"dir01"_s);
    m_pane.EnterModify(true);
    EXPECT_FALSE(m_pane.AllowModify());
    EXPECT_EQ(m_prompt.takeTexts(), QStringList(u"请选择要修改的条目。"_s));
    m_sheets.clickTree(u"ent0101"_s);
    m_pane.editField(PaneField::No, u"0302"_s);
    EXPECT_FALSE(m_pane.AllowModify());
    EXPECT_EQ(m_prompt.takeTexts(), QStringList(u"网络类和文件类条目不能互相转换！"_s));
    m_pane.editField(PaneField::No, u"0202"_s);
    EXPECT_TRUE(m_pane.AllowModify());
    const QString question = u"当前的编辑尚未保存，是否放弃？"_s;
    m_prompt.answers = {Prompt::Answer::No, Prompt::Answer::Yes};
    m_sheets.clickTree(u"ent0301"_s);
    EXPECT_EQ(m_near.pane.txtNo, u"0202") << "an edit is not lost by a click";
    EXPECT_EQ(m_sheets.state().selectedKey, u"ent0101");
    m_sheets.searchFor(u"x"_s);
    m_sheets.mn_refreshMain();
    EXPECT_EQ(m_near.pane.txtNo, u"0202");
    m_sheets.clickTree(u"ent0301"_s);
    EXPECT_EQ(m_prompt.takeTexts(), QStringList({question, workspacetext::browseOnly(), question}));
    EXPECT_TRUE(m_pane.AllowModify());
    m_pane.typePassword(u"other"_s);
    EXPECT_FALSE(m_pane.AllowModify());
    EXPECT_EQ(m_prompt.takeTexts(), QStringList(u"本条目的文件已经加密，不可以修改密码！"_s));
    m_pane.setEncrypted(false, {});
    EXPECT_TRUE(m_pane.AllowModify());
    m_workspace.m_cryptNo = u"0301"_s;
    EXPECT_FALSE(m_pane.AllowModify());
    EXPECT_EQ(m_prompt.takeTexts(), QStringList(workspacetext::fileInCipher()));
}

TEST_F(EditPaneTest, aBatchOfChangesWalksRoundTheDirectory) {
    for (const QString& number : {u"010102"_s, u"010105"_s, u"010109"_s}) {
        addWeb(number, number);
    }
    addWeb(u"0101"_s, u"alone"_s);
    openBrowsing(u"ent010105"_s);
    m_pane.EnterModify(false);
    m_pane.mn_save();
    EXPECT_EQ(m_near.pane.txtTitle, u"010109");
    EXPECT_EQ(m_sheets.state().selectedKey, u"ent010109");
    m_pane.mn_save();
    EXPECT_EQ(m_near.pane.txtTitle, u"010102") << "round to the first";
    m_pane.editField(PaneField::No, u"010103"_s);
    m_pane.mn_save();
    EXPECT_EQ(m_near.pane.txtNo, u"010103") << "the next used number behind the old one";
    m_sheets.clickTree(u"ent0101"_s);
    m_pane.mn_save();
    EXPECT_EQ(m_near.pane.txtNo, QString()) << "a directory of one ends the walk";
    EXPECT_EQ(state(), 1);
}

TEST_F(EditPaneTest, bindsByNameAndKeepsSecretsOutOfSight) {
    AssPwd pwd;
    pwd.m_Name = u"常用"_s;
    pwd.m_Content = u"shared-secret"_s;
    ASSERT_TRUE(m_assPwds.Add(pwd));
    AssNum num;
    num.m_Name = u"手机"_s;
    num.m_Content = u"13800000000"_s;
    ASSERT_TRUE(m_assNums.Add(num));
    addWeb(u"0101"_s, u"甲"_s, u"own-secret"_s);
    openBrowsing(u"ent0101"_s);
    EXPECT_EQ(m_near.pane.cboPassword, kCustomName);
    EXPECT_EQ(m_near.pane.ComboBox2, u"(无号码)");
    EXPECT_EQ(m_pane.GetPasswordText(), u"own-secret");
    m_pane.typePassword(u"ignored while reading"_s);
    EXPECT_EQ(m_pane.GetPasswordText(), u"own-secret");
    EXPECT_FALSE(m_pane.IsAssPwdName(kCustomName));

    m_pane.EnterModify(true);
    m_pane.choosePasswordName(u"常用"_s);
    EXPECT_EQ(m_pane.GetPasswordText(), u"shared-secret");
    m_pane.choosePasswordName(kCustomName);
    EXPECT_EQ(m_pane.GetPasswordText(), u"own-secret") << "choosing back loses nothing";
    m_pane.choosePasswordName(u"常用"_s);
    m_pane.typeNumber(u"手机"_s);
    m_pane.mn_save();
    EXPECT_EQ(value(u"select pwdName||customPwd from tb_Entry"_s), u"常用");
    EXPECT_EQ(value(u"select numName||customNum from tb_Net"_s), u"手机");

    const AssPwd before = m_assPwds.Search(u"常用"_s);
    AssPwd after = before;
    after.m_Effective = false;
    ASSERT_TRUE(m_assPwds.Modify(before, after));
    m_sheets.RefreshSheets();
    EXPECT_FALSE(m_near.pane.passwordNames.contains(u"常用"_s));
    m_sheets.clickTree(u"ent0101"_s);
    EXPECT_EQ(m_pane.GetPasswordText(), u"shared-secret");
    m_pane.EnterModify(true);
    m_sheets.RefreshSheets();
    m_pane.mn_save();
    EXPECT_EQ(value(u"select pwdName from tb_Entry"_s), u"常用")
        << "a name that is offered no more still binds its entries";
}

TEST_F(EditPaneTest, showsADeadTarget) {
    const QString path = m_home.path(u"a.txt"_s);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("abc");
    file.close();
    addFil(u"0301"_s, u"甲"_s, path);
    addFil(u"0302"_s, u"乙"_s, u"/no/such"_s, {}, true);
    addWeb(u"0101"_s, u"丙"_s);
    openBrowsing(u"ent0301"_s);
    EXPECT_EQ(m_near.pane.locationColour, LocationColour::Window);
    EXPECT_TRUE(m_near.pane.chkEncryptedCaption.startsWith(u"已加密 ("));
    m_sheets.clickTree(u"ent0302"_s);
    EXPECT_EQ(m_near.pane.locationColour, LocationColour::Dead);
    EXPECT_EQ(m_near.pane.chkEncryptedCaption, u"已加密");
    m_settings.p_themeBackground(true);
    m_pane.EnterModify(true);
    EXPECT_EQ(m_near.pane.locationColour, LocationColour::Theme) << "no test while editing";
    m_pane.mn_cancel();
    m_sheets.clickTree(u"ent0101"_s);
    EXPECT_EQ(m_near.pane.locationColour, LocationColour::Theme);
    EXPECT_EQ(m_near.pane.txtCreateDate, u"2026年05月20日，星期三");
    EXPECT_EQ(m_near.pane.txtRecentUpdate, u"2026年05月20日 12:00:00，星期三");
}

}  // namespace
}  // namespace keeper
