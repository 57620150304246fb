// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

// What must never be mistaken for an attack, versions with their upgrades, and machine exchange.

#include <QFile>

#include "guard/guard_fixture.h"

namespace keeper {
namespace {

TEST_F(GuardTest, AFailingFingerprintIsToldAndNeverCondemns) {
    ASSERT_TRUE(login(branch).ok);
    ASSERT_TRUE(guard->LockOntoBrch(true));
    FakeMachine dark(QString{});
    const QStringList before = guardRow(database);
    const GuardVerdict verdict = login(dark);
    EXPECT_FALSE(verdict.ok);
    EXPECT_EQ(verdict.errorNumber, GuardVerdict::kUnexpected);
    EXPECT_FALSE(verdict.isCondemned());
    EXPECT_EQ(guardRow(database), before);
    QStringList told = prompt.takeTexts();
    ASSERT_EQ(told.size(), 2);
    EXPECT_EQ(told.at(0), u"[0]OSInfo.GetDiskSN:\r\nsource out of order"_s);
    EXPECT_TRUE(told.at(1).startsWith(u"[0]cSWProtect.Initialize:\r\n"_s));

    // The fingerprint is taken once, as whole as it can be had.
    dark = FakeMachine(u"PLUGGED"_s);
    EXPECT_EQ(osInfo->p_biosSN(), dark.firmware);
    EXPECT_EQ(osInfo->p_diskSN(), QString());
    dark.firmware.clear();
    dark.processor.clear();
    EXPECT_FALSE(osInfo->Initialize());
    EXPECT_EQ(prompt.takeTexts(), QStringList({u"[0]OSInfo.GetBIOSSN:\r\nsource out of order"_s,
                                               u"[0]OSInfo.GetCPUSN:\r\nsource out of order"_s}));
    EXPECT_EQ(osInfo->p_biosSN(), QString());
}

TEST_F(GuardTest, ADatabaseThatCannotBeReadIsNotCondemned) {
    database.close();
    guard = on(origin);
    EXPECT_FALSE(guard->ReadDB());
    EXPECT_TRUE(guard->p_isUnreadable());
    EXPECT_TRUE(prompt.takeTexts().value(0).contains(u"]cSWProtect.ReadDB:\r\n"_s));

    database.open(path, u"key"_s);
    EXPECT_TRUE(guard->ReadDB());
    database.execute("delete from tb_SWProtect");
    EXPECT_FALSE(guard->ReadDB());
    EXPECT_FALSE(guard->p_isUnreadable());
    database.execute("alter table tb_SWProtect rename to tb_Gone");
    EXPECT_FALSE(guard->ReadDB());
    EXPECT_FALSE(guard->p_isUnreadable());
    EXPECT_EQ(prompt.boxes.size(), 2U);
    EXPECT_EQ(prompt.boxes.at(0).icon, Prompt::Icon::Critical);
}

TEST_F(GuardTest, AWriteThatFailsIsNoVerdictAndChangesNothing) {
    clock.advanceDays(3);
    guard = on(branch);
    ASSERT_TRUE(guard->ReadDB());
    stopGuardWrites(database);
    const QStringList before = guardRow(database);
    const GuardVerdict verdict = guard->Initialize();
    EXPECT_FALSE(verdict.ok);
    EXPECT_EQ(verdict.errorNumber, GuardVerdict::kUnexpected);
    const QStringList told = prompt.takeTexts();
    ASSERT_EQ(told.size(), 1);
    EXPECT_TRUE(told.at(0).contains(u"]cSWProtect.SetOriginDeadCount:\r\n"_s));
    EXPECT_FALSE(guard->LockOntoBrch(true));
    EXPECT_FALSE(guard->p_isBrchConfined());
    EXPECT_TRUE(prompt.takeTexts().value(0).contains(u"]cSWProtect.SetBrchHardwareTag:"_s));
    EXPECT_EQ(guardRow(database), before);

    database.execute("drop trigger stop");
    EXPECT_TRUE(guard->Initialize().ok);
}

TEST_F(GuardTest, AChangeOfSeveralStepsIsAllOrNothing) {
    ASSERT_TRUE(login(branch).ok);
    ASSERT_TRUE(guard->LockOntoBrch(true));
    ASSERT_TRUE(login(origin).ok);
    const QStringList before = guardRow(database);
    // The third of the four steps fails.
    stopGuardWrites(database, "of [02]");
    EXPECT_FALSE(guard->SwitchMachine());
    EXPECT_EQ(guardRow(database), before);
    EXPECT_FALSE(guard->p_isOnBranch());
    EXPECT_EQ(guard->p_branchTag().disk, branch.disk);
    EXPECT_EQ(prompt.takeTexts().size(), 1);
    database.execute("drop trigger stop");
    EXPECT_TRUE(login(origin).ok);

    stopGuardWrites(database, "of [03]");
    EXPECT_FALSE(guard->ManageBranchLogin(5, false));
    EXPECT_EQ(guard->deadCount(), 99);
    EXPECT_TRUE(guard->p_autoRenew());
}

TEST_F(GuardTest, MachinesExchangeTheirParts) {
    ASSERT_TRUE(login(branch).ok);
    ASSERT_TRUE(guard->LockOntoBrch(true));
    clock.advanceDays(10);
    ASSERT_TRUE(login(origin).ok);
    const QString id = field("01");
    ASSERT_TRUE(guard->SwitchMachine());
    EXPECT_TRUE(guard->p_isOnBranch());
    EXPECT_EQ(field("16"), branch.disk);
    EXPECT_EQ(field("13"), origin.disk);
    EXPECT_EQ(field("06"), u"32757"_s);
    EXPECT_EQ(field("01"), id);

    ASSERT_TRUE(login(branch).ok);
    EXPECT_FALSE(guard->p_isOnBranch());
    EXPECT_TRUE(guard->ExamineDBVersion().ok);
    ASSERT_TRUE(login(origin).ok);
    EXPECT_TRUE(guard->p_isOnBranch());
    EXPECT_TRUE(guard->ExamineDBVersion().ok);
    FakeMachine third(u"THIRD"_s);
    EXPECT_EQ(login(third).errorNumber, GuardVerdict::kWrongMachine);
}

struct VersionCase {
    const char* version;
    bool ok;
    const char* upgrade;
    const char* reached;
};

class VersionCheck : public GuardTest, public testing::WithParamInterface<VersionCase> {};

TEST_P(VersionCheck, FitsUpgradesOrRefuses) {
    const VersionCase& each = GetParam();
    const QString version = QString::fromLatin1(each.version);
    ASSERT_TRUE(loginStamped(version).ok);
    const GuardVerdict verdict = guard->ExamineDBVersion();
    EXPECT_EQ(verdict.ok, each.ok);
    EXPECT_EQ(upgrades.calls.join(QLatin1Char(';')), QLatin1String(each.upgrade));
    EXPECT_TRUE(database.isOpen());
    if (!each.ok) {
        EXPECT_EQ(verdict.errorNumber, GuardVerdict::kWrongVersion);
        EXPECT_EQ(verdict.message,
                  u"您的数据库版本是v%1，与当前程序版本3.4.0不匹配，无法登录！"_s.arg(version));
        EXPECT_FALSE(verdict.isCondemned());
        return;
    }
    const QString reached = QLatin1String(each.reached);
    EXPECT_EQ(verdict.message,
              reached.isEmpty() ? QString() : u"您的数据库版本已升级为v%1！"_s.arg(reached));
    // The stamp ends the upgrades.
    ASSERT_TRUE(loginStamped(u"3.4.0"_s).ok);
    const GuardVerdict again = guard->ExamineDBVersion();
    EXPECT_TRUE(again.ok);
    EXPECT_EQ(again.message, QString());
}

INSTANTIATE_TEST_SUITE_P(
    Guard, VersionCheck,
    testing::Values(VersionCase{"3.4.0", true, "", ""}, VersionCase{"3.255.255", true, "", ""},
                    VersionCase{"3.0.9", true, "", ""}, VersionCase{"3.1.0", false, "", ""},
                    VersionCase{"2.4.0", false, "", ""}, VersionCase{"4.2.0", false, "", ""},
                    VersionCase{"3.2.0", true, "entries 0", "3.2.3"},
                    VersionCase{"3.2.2", true, "entries 2", "3.2.3"},
                    VersionCase{"3.2.3", true, "settings 3", "3.2.4"},
                    VersionCase{"3.2.4", true, "settings 4", "3.2.6"},
                    VersionCase{"3.2.5", true, "settings 5", "3.2.6"},
                    VersionCase{"3.2.6", true, "programs", "3.4.0"},
                    VersionCase{"3.3.7", true, "", "3.4.0"}));

TEST_F(GuardTest, AVersionWrittenByHandCondemns) {
    for (const char* forged : {"3.4.1", "3.4", "3.4.0.1", "3.4.256", "", "3.4.-0", "a.b.c"}) {
        ASSERT_TRUE(guard->SetDBVersionAsApp());
        edit(u"[02]='%1'"_s.arg(QLatin1String(forged)));
        ASSERT_TRUE(login(origin).ok);
        const GuardVerdict verdict = guard->ExamineDBVersion();
        EXPECT_EQ(verdict.errorNumber, GuardVerdict::kTampered) << forged;
        EXPECT_EQ(verdict.message, u"本密码数据库遭遇非法入侵，已被紧急销毁！"_s);
        EXPECT_FALSE(database.isOpen());
        database.open(path, u"key"_s);
    }
    // Three parts are asked of a version that bears a good seal, too.
    ASSERT_TRUE(loginStamped(u"3.4.256"_s).ok);
    EXPECT_EQ(guard->ExamineDBVersion().errorNumber, GuardVerdict::kTampered);
}

TEST_F(GuardTest, AFailedUpgradeIsToldAndLeavesTheVersion) {
    ASSERT_TRUE(loginStamped(u"3.2.4"_s).ok);
    upgrades.result = false;
    const GuardVerdict verdict = guard->ExamineDBVersion();
    EXPECT_TRUE(verdict.ok);
    EXPECT_EQ(verdict.message, QString());
    EXPECT_EQ(prompt.takeTexts(), QStringList(u"升级数据库失败！"_s));
    EXPECT_EQ(field("02"), u"3.2.4"_s);
}

}  // namespace
}  // namespace keeper
