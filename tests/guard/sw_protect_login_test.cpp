// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <QRegularExpression>
#include <QSet>

#include "crypto/cryptor2.h"
#include "guard/guard_fixture.h"

namespace keeper {
namespace {

TEST_F(GuardTest, NewDatabaseIsSealedAndAcceptedOnItsOrigin) {
    EXPECT_TRUE(QRegularExpression(QStringLiteral("^ZC[0-9]{6}$")).match(field("01")).hasMatch());
    EXPECT_EQ(field("02"), QStringLiteral("3.4.0"));
    EXPECT_EQ(field("04"), QStringLiteral("99"));
    EXPECT_EQ(field("06"), QStringLiteral("32767"));
    EXPECT_EQ(field("08").left(10), QStringLiteral("2026-08-27"));
    EXPECT_EQ(field("13"), QStringLiteral("0000000000"));
    const QString id = field("01");

    EXPECT_TRUE(login(origin).ok);
    EXPECT_FALSE(guard->p_isOnBranch());
    EXPECT_FALSE(guard->p_isBrchConfined());
    EXPECT_EQ(guard->deadCount(), 99);
    EXPECT_EQ(guard->GetDBVersion(), QStringLiteral("v3.4.0"));

    // The identity is made once.
    EXPECT_TRUE(guard->NewBuild());
    EXPECT_EQ(field("01"), id);
    EXPECT_TRUE(prompt.boxes.empty());
}

TEST_F(GuardTest, ClockSetBackIsRefusedAndTouchesNothing) {
    clock.advanceDays(10);
    ASSERT_TRUE(login(branch).ok);
    EXPECT_EQ(guard->deadCount(), 89);
    EXPECT_EQ(field("06"), QStringLiteral("32757"));
    const QStringList before = row();

    clock.advanceDays(-1);
    for (FakeMachine* machine : {&origin, &branch}) {
        const GuardVerdict verdict = login(*machine);
        EXPECT_FALSE(verdict.ok);
        EXPECT_EQ(verdict.errorNumber, GuardVerdict::kClockSetBack);
        EXPECT_EQ(verdict.message,
                  QStringLiteral("你所在计算机的日期时间异常，请勿提前操作系统的日期时间！"));
        EXPECT_FALSE(verdict.isCondemned());
    }
    EXPECT_EQ(row(), before);

    // The same day again is fine; forward and back is not, since the count has gone down.
    clock.advanceDays(1);
    EXPECT_TRUE(login(branch).ok);
    clock.advanceDays(400);
    EXPECT_TRUE(login(origin).ok);
    clock.advanceDays(-400);
    EXPECT_EQ(login(origin).errorNumber, GuardVerdict::kClockSetBack);
}

TEST_F(GuardTest, BranchLifetimeRunsDownToItsEndAndTheOriginRenewsIt) {
    setDay(start.addDays(98));
    ASSERT_TRUE(login(branch).ok);
    EXPECT_TRUE(guard->p_isOnBranch());
    EXPECT_EQ(guard->deadCount(), 1);

    setDay(start.addDays(99));
    const GuardVerdict verdict = login(branch);
    EXPECT_FALSE(verdict.ok);
    EXPECT_EQ(verdict.errorNumber, GuardVerdict::kExpired);
    EXPECT_EQ(
        verdict.message,
        QStringLiteral("本数据库在分机的有效期已过，不能再使用！请到原新建机器登录以更新有效期。"));
    EXPECT_FALSE(verdict.isCondemned());
    EXPECT_EQ(field("05"), QStringLiteral("0"));
    EXPECT_EQ(login(branch).errorNumber, GuardVerdict::kExpired);
    setDay(start.addDays(300));
    EXPECT_EQ(login(branch).errorNumber, GuardVerdict::kExpired);

    ASSERT_TRUE(login(origin).ok);
    EXPECT_EQ(guard->deadCount(), 99);
    EXPECT_TRUE(login(branch).ok);
}

TEST_F(GuardTest, WithoutAutoRenewTheLifetimeRunsDownOnTheOriginToo) {
    ASSERT_TRUE(login(origin).ok);
    ASSERT_TRUE(guard->ManageBranchLogin(7, false));
    EXPECT_EQ(field("04"), QStringLiteral("7"));
    setDay(start.addDays(5));
    ASSERT_TRUE(login(origin).ok);
    EXPECT_EQ(guard->deadCount(), 2);
    setDay(start.addDays(9));
    ASSERT_TRUE(login(origin).ok);
    EXPECT_EQ(guard->deadCount(), 0);
    EXPECT_EQ(login(branch).errorNumber, GuardVerdict::kExpired);
    // Only the user brings it back.
    ASSERT_TRUE(login(origin).ok);
    ASSERT_TRUE(guard->ManageBranchLogin(3, true));
    EXPECT_TRUE(login(branch).ok);
    EXPECT_EQ(guard->deadCount(), 3);
}

TEST_F(GuardTest, OriginCountEndsAtZeroAndNeverBlocksTheOrigin) {
    setDay(start.addDays(32767));
    EXPECT_TRUE(login(origin).ok);
    EXPECT_EQ(field("06"), QStringLiteral("0"));
    setDay(start.addDays(40000));
    EXPECT_TRUE(login(origin).ok);
    EXPECT_TRUE(login(origin).ok);
}

TEST_F(GuardTest, ConfinedDatabaseLivesOnItsTwoMachinesOnly) {
    ASSERT_TRUE(login(branch).ok);
    ASSERT_TRUE(guard->LockOntoBrch(true));
    EXPECT_TRUE(guard->p_isBrchConfined());
    EXPECT_FALSE(guard->p_areOrgBrchSame());

    // No expiry, and the lifetime is left alone.
    setDay(start.addDays(500));
    const QString lifetime = field("05") + field("08") + field("17");
    ASSERT_TRUE(login(branch).ok);
    EXPECT_EQ(field("05") + field("08") + field("17"), lifetime);
    EXPECT_TRUE(login(origin).ok);

    FakeMachine third(QStringLiteral("THIRD"));
    const GuardVerdict verdict = login(third);
    EXPECT_EQ(verdict.errorNumber, GuardVerdict::kWrongMachine);
    EXPECT_EQ(verdict.message,
              QStringLiteral("本数据库不在其所限定的计算机中使用，已被紧急销毁！"));
    EXPECT_TRUE(verdict.isCondemned());
    // A clock set back is met before the machine is judged.
    setDay(start.addDays(499));
    EXPECT_EQ(login(third).errorNumber, GuardVerdict::kClockSetBack);

    setDay(start.addDays(500));
    ASSERT_TRUE(login(branch).ok);
    ASSERT_TRUE(guard->LockOntoBrch(false));
    EXPECT_FALSE(guard->p_isBrchConfined());
    EXPECT_EQ(field("12"), QStringLiteral("0000000000"));

    ASSERT_TRUE(login(origin).ok);
    EXPECT_TRUE(login(third).ok);
    ASSERT_TRUE(login(origin).ok);
    ASSERT_TRUE(guard->LockOntoBrch(true));
    EXPECT_TRUE(guard->p_areOrgBrchSame());
    EXPECT_EQ(login(branch).errorNumber, GuardVerdict::kWrongMachine);
}

TEST_F(GuardTest, EachPartOfTheFingerprintTellsMachinesApart) {
    FakeMachine firmware;
    firmware.firmware = QStringLiteral("LENOVO,20XX,10");
    FakeMachine processor;
    processor.processor = QStringLiteral("BFEBFBFF000906EB");
    FakeMachine shorter(QStringLiteral("S4EVNX0R12345"));
    for (FakeMachine* machine : {&firmware, &processor, &shorter, &branch}) {
        EXPECT_TRUE(login(*machine).ok);
        EXPECT_TRUE(guard->p_isOnBranch());
    }
    FakeMachine twin;
    twin.name = QStringLiteral("RENAMED");
    EXPECT_TRUE(login(twin).ok);
    EXPECT_FALSE(guard->p_isOnBranch());
}

struct Edit {
    const char* name;
    const char* assignment;
    bool onBranch;
    std::int32_t error;
    const char* detail;
};

class HandEdit : public GuardTest, public testing::WithParamInterface<Edit> {};

TEST_P(HandEdit, IsJudgedByTheSealThatItBreaks) {
    const Edit& edited = GetParam();
    clock.advanceDays(20);
    ASSERT_TRUE(login(branch).ok);
    edit(QString::fromUtf8(edited.assignment));
    const GuardVerdict verdict = login(edited.onBranch ? branch : origin);
    EXPECT_EQ(verdict.errorNumber, edited.error);
    EXPECT_EQ(verdict.ok, edited.error == 0);
    if (edited.error == GuardVerdict::kTampered) {
        EXPECT_EQ(verdict.message, QStringLiteral("本密码数据库遭遇非法入侵，已被紧急销毁！") +
                                       QLatin1String(edited.detail));
    }
    EXPECT_TRUE(prompt.boxes.empty());
}

INSTANTIATE_TEST_SUITE_P(
    Guard, HandEdit,
    testing::Values(Edit{"OriginCountRaised", "[06]=[06]+1", false, 6, "(2)"},
                    Edit{"OriginCountBeyondItsType", "[06]=[06]+65536", false, 6, "(2)"},
                    Edit{"OriginCountByTheModulus", "[06]=[06]+46337", false, 6, "(2)"},
                    Edit{"OriginCountNegative", "[06]=-1", false, 6, "(2)"},
                    Edit{"OriginEndMoved", "[09]='2116-01-01T00:00:00'", true, 6, "(2)"},
                    Edit{"OriginEndEmptied", "[09]=null", true, 6, "(2)"},
                    Edit{"OriginTagChanged", "[16]='OTHERDISK'", true, 6, "(2)"},
                    Edit{"OriginSealEmptied", "[21]='',[22]=''", false, 6, "(2)"},
                    Edit{"OriginSealGarbage", "[22]='xyz'", false, 6, "(2)"},
                    Edit{"SealsSwapped", "[21]=[17],[22]=[18]", false, 6, "(2)"},
                    Edit{"LifetimeRaised", "[05]=[05]+1", true, 6, "(4)"},
                    Edit{"LifetimeRaisedByAByte", "[05]=[05]+256", true, 6, "(4)"},
                    Edit{"LifetimeEndMoved", "[08]='2029-01-01T00:00:00'", true, 6, "(4)"},
                    Edit{"LifetimeSealSwapped", "[17]=[21],[18]=[22]", true, 6, "(4)"},
                    Edit{"LifetimeSealEmptied", "[17]=null,[18]=null", true, 6, "(4)"},
                    // On the origin nobody asks for the branch's seal: it is renewed.
                    Edit{"LifetimeOnOrigin", "[05]=90", false, 0, ""},
                    Edit{"UserLifetimeOnOrigin", "[04]=30000", false, 0, ""},
                    // A confinement written by hand has no seal of any machine.
                    Edit{"ConfinedByHand", "[13]='OTHERDISK'", true, 5, ""},
                    Edit{"ConfinedByHandOnOrigin", "[13]='OTHERDISK'", false, 0, ""},
                    // The origin's seal is broken: the origin is a branch from now on.
                    Edit{"OriginTagSealSwapped", "[23]=[19],[24]=[20]", false, 0, ""}),
    [](const auto& each) { return std::string(each.param.name); });

TEST_F(GuardTest, LifetimeWrittenByHandNeverExceedsTheGreatest) {
    edit(QStringLiteral("[04]=30000"));
    ASSERT_TRUE(login(origin).ok);
    EXPECT_EQ(guard->deadCount(), 99);
    ASSERT_TRUE(guard->ManageBranchLogin(50, false));
    edit(QStringLiteral("[05]=5000, [08]='2031-01-01T00:00:00'"));
    ASSERT_TRUE(login(origin).ok);
    EXPECT_EQ(guard->deadCount(), 99);
    EXPECT_FALSE(guard->SetBranchDeadCount(100));
    EXPECT_FALSE(guard->ManageBranchLogin(-1, true));
    EXPECT_EQ(prompt.takeTexts().size(), 2);
    EXPECT_EQ(field("05"), QStringLiteral("99"));
    EXPECT_EQ(field("03"), QStringLiteral("0"));
}

TEST_F(GuardTest, ABareDigestUnderAnEmptyPasswordIsNoSeal) {
    SealMaker seals(random);
    const QString text = QStringLiteral("value");
    const Seal genuine = seals.make(text, 7);
    EXPECT_TRUE(seals.holds(genuine, text, 7));
    EXPECT_FALSE(seals.holds(genuine, text, 8));
    EXPECT_FALSE(seals.holds({QString(), Cryptor2::hashString(text)}, text, 7));
}

TEST_F(GuardTest, SealsOfEveryCountHoldAndDiffer) {
    SealMaker seals(random);
    QSet<QString> texts;
    for (int days = 0; days <= SealMaker::kMaxDays; ++days) {
        texts.insert(seals.originDaysText(days, start, HardwareTag::none()));
    }
    EXPECT_EQ(texts.size(), SealMaker::kMaxDays + 1);
    // make() throws when the seal that it made does not hold.
    for (int days = 0; days < 400; ++days) {
        EXPECT_NO_THROW((void)seals.make(seals.branchDaysText(days, start), days));
    }
}

}  // namespace
}  // namespace keeper
