// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "guard/branch_commands.h"

#include <QFile>

#include "guard/branch_manage.h"
#include "guard/guard_fixture.h"
#include "store/sys_logs.h"
#include "support/store_ground.h"

namespace keeper {
namespace {

class BranchCommandsTest : public GuardTest {
  protected:
    BranchCommands commands() {
        return BranchCommands({.prompt = prompt,
                               .clock = clock,
                               .osInfo = *osInfo,
                               .guard = *guard,
                               .sysLogs = m_sysLogs,
                               .demandAuthority =
                                   [this](int number) {
                                       authorities.push_back(number);
                                       return isAuthorised;
                                   },
                               .sealDispatchCopy =
                                   [this](const QString& target) {
                                       dispatched << target;
                                       return isSealed;
                                   },
                               .refreshDisplay = [this] { ++refreshed; },
                               .dispatchFolder = [] { return u"/media"_s; }});
    }
    /// Sentences of the log, oldest first, emptied by the call.
    QStringList takeLog() {
        std::vector<SysLogLine> lines;
        int count = 0;
        m_sysLogs.Display(lines, {}, {}, u"0"_s, count);
        m_sysLogs.Clear(0);
        QStringList sentences;
        for (const SysLogLine& line : lines) {
            sentences.prepend(line.status);
        }
        return sentences;
    }

    std::vector<int> authorities;
    bool isAuthorised = true;
    bool isSealed = true;
    QStringList dispatched;
    int refreshed = 0;
    StoreGround m_ground{database, prompt, clock};
    SysLogs m_sysLogs{m_ground.context};
};

TEST_F(BranchCommandsTest, ConfinementAsksIsGatedAndLogged) {
    ASSERT_TRUE(login(branch).ok);
    prompt.answers = {Prompt::Answer::Cancel};
    EXPECT_FALSE(commands().mn_confineBranch());
    EXPECT_TRUE(authorities.empty());
    EXPECT_EQ(prompt.boxes.at(0).buttons, Prompt::Buttons::OkCancel);
    EXPECT_EQ(prompt.takeTexts(),
              QStringList(u"您确定要限定数据库的登录机器？限定后数据库存活期不再递减，"
                          "但只能在此分机和原新建机器上登录。"_s));

    prompt.answers = {Prompt::Answer::Ok};
    isAuthorised = false;
    EXPECT_FALSE(commands().mn_confineBranch());
    EXPECT_FALSE(guard->p_isBrchConfined());
    EXPECT_EQ(authorities, std::vector<int>{12});

    prompt.answers = {Prompt::Answer::Ok};
    isAuthorised = true;
    EXPECT_TRUE(commands().mn_confineBranch());
    EXPECT_TRUE(guard->p_isBrchConfined());
    EXPECT_EQ(takeLog(), QStringList(u"限定密码数据库到【HOST】上；IP:【10.0.0.2】"_s));

    branch.address = {u"A4:C3:F0:00:00:02"_s, true};
    prompt.takeTexts();
    prompt.answers = {Prompt::Answer::No};
    EXPECT_FALSE(commands().mn_confineBranch());
    prompt.answers = {Prompt::Answer::Yes};
    EXPECT_TRUE(commands().mn_confineBranch());
    EXPECT_EQ(prompt.takeTexts().value(0), u"是否解除限定？解除后本数据库可以在所有分机上登录。"_s);
    EXPECT_FALSE(guard->p_isBrchConfined());
    EXPECT_EQ(takeLog(),
              QStringList(u"解除密码数据库在【HOST】上的限定；MAC:【A4:C3:F0:00:00:02】"_s));
    EXPECT_EQ(refreshed, 2);
}

TEST_F(BranchCommandsTest, TheLifetimeIsSetOnTheOriginAlone) {
    QStringList told;
    for (FakeMachine* machine : {&origin, &branch}) {
        ASSERT_TRUE(login(*machine).ok);
        BranchManage form({clock, *guard, m_sysLogs, [&](const QString& text) { told << text; }});
        form.load();
        const bool isOnOrigin = machine == &origin;
        EXPECT_EQ(form.state().isOnOrigin, isOnOrigin);
        EXPECT_EQ(form.state().daysLeft, isOnOrigin ? 99 : 30);
        form.setDays(isOnOrigin ? 30 : 90);
        form.setAutoRenew(!isOnOrigin);
        EXPECT_TRUE(form.cmdOK());
        EXPECT_EQ(guard->deadCount(), 30);
        EXPECT_FALSE(guard->p_autoRenew());
    }
    EXPECT_EQ(told, QStringList(u"本数据库在分机上的存活期还有30天。"_s));
    EXPECT_EQ(takeLog(), told);
}

TEST_F(BranchCommandsTest, ConfinementThatCannotBeWrittenIsToldAsSuch) {
    ASSERT_TRUE(login(origin).ok);
    stopGuardWrites(database);
    prompt.answers = {Prompt::Answer::Ok};
    EXPECT_FALSE(commands().mn_confineBranch());
    const QStringList told = prompt.takeTexts();
    ASSERT_EQ(told.size(), 3);
    EXPECT_EQ(told.at(0),
              u"您正在在原新建机器上限定数据库登录，限定后数据库只可在本计算机上登录，"
              "确定继续？"_s);
    EXPECT_EQ(told.at(2), u"限定登录失败！"_s);
    EXPECT_TRUE(takeLog().isEmpty());
    EXPECT_EQ(refreshed, 0);
}

TEST_F(BranchCommandsTest, ExchangeRefusesInOrderAndThenExchanges) {
    const auto refusal = [this] {
        EXPECT_FALSE(commands().mn_switchMachine());
        return prompt.takeTexts().value(0);
    };
    ASSERT_TRUE(login(branch).ok);
    EXPECT_EQ(refusal(), u"当前没有限定在任何分机上，无法交换！"_s);
    ASSERT_TRUE(login(origin).ok);
    ASSERT_TRUE(guard->LockOntoBrch(true));
    EXPECT_EQ(refusal(), u"当前已限定在主机上，无需交换！"_s);
    ASSERT_TRUE(guard->LockOntoBrch(false));
    ASSERT_TRUE(login(branch).ok);
    ASSERT_TRUE(guard->LockOntoBrch(true));
    EXPECT_EQ(refusal(), u"当前不在主机上登录，禁止交换！"_s);

    ASSERT_TRUE(login(origin).ok);
    prompt.answers = {Prompt::Answer::Cancel};
    EXPECT_EQ(refusal(), u"您确定要交换主副机器吗？交换后本机将成为分机！"_s);
    EXPECT_FALSE(guard->p_isOnBranch());
    prompt.answers = {Prompt::Answer::Ok};
    EXPECT_TRUE(commands().mn_switchMachine());
    EXPECT_EQ(prompt.takeTexts().last(), u"交换主副机器成功，当前在分机上登录！"_s);
    EXPECT_TRUE(guard->p_isOnBranch());
    EXPECT_EQ(takeLog(), QStringList(u"在分机【HOST】上交换主副机器；IP:【10.0.0.2】"_s));
}

TEST_F(BranchCommandsTest, DispatchIsGatedNamedAndLogged) {
    ASSERT_TRUE(login(origin).ok);
    ASSERT_TRUE(guard->ManageBranchLogin(30, true));
    isAuthorised = false;
    EXPECT_FALSE(commands().mn_dispatch());
    EXPECT_EQ(authorities, std::vector<int>{16});
    EXPECT_TRUE(prompt.dialogs.isEmpty());

    isAuthorised = true;
    prompt.paths = {QString()};
    EXPECT_FALSE(commands().mn_dispatch());
    EXPECT_EQ(prompt.dialogs, QStringList(u"分派数据库|/media|密码数据库(*.kvdb)"_s));

    isSealed = false;
    prompt.paths = {u"/media/副本"_s};
    EXPECT_FALSE(commands().mn_dispatch());
    EXPECT_TRUE(takeLog().isEmpty());

    isSealed = true;
    prompt.paths = {u"/media/副本.KVDB"_s};
    EXPECT_TRUE(commands().mn_dispatch());
    EXPECT_EQ(dispatched, QStringList({u"/media/副本.kvdb"_s, u"/media/副本.KVDB"_s}));
    EXPECT_EQ(prompt.takeTexts(), QStringList(u"分派完成！"_s));
    EXPECT_EQ(takeLog(), QStringList(u"分派数据库到【/media/副本.KVDB】，存活期为30天"_s));

    // The dialog was asked about "guard" and knows nothing of "guard.kvdb".
    QFile standing(path.chopped(3) + u".kvdb"_s);
    ASSERT_TRUE(standing.open(QIODevice::WriteOnly));
    prompt.paths = {path.chopped(3)};
    prompt.answers = {Prompt::Answer::No};
    EXPECT_FALSE(commands().mn_dispatch());
    EXPECT_EQ(dispatched.size(), 2);
}

}  // namespace
}  // namespace keeper
