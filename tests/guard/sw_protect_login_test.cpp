// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <QRegularExpression>
#include <QSet>
#include <map>

#include "crypto/cryptor2.h"
#include "guard/guard_fixture.h"

namespace keeper {
namespace {

TEST_F(GuardTest, NewDatabaseIsSealedAndAcceptedOnItsOrigin) {
    EXPECT_TRUE(QRegularExpression(u"^ZC[0-9]{6}$"_s).match(field("01")).hasMatch());
    EXPECT_EQ(field("02"), u"3.4.0"_s);
    EXPECT_EQ(field("04"), u"99"_s);
    EXPECT_EQ(field("06"), u"32767"_s);
    EXPECT_EQ(field("08").left(10), u"2026-08-27"_s);
    EXPECT_EQ(field("13"), u"0000000000"_s);
    const QString id = field("01");

    EXPECT_TRUE(login(origin).ok);
    EXPECT_FALSE(guard->p_isOnBranch());
    EXPECT_FALSE(guard->p_isBrchConfined());
    EXPECT_EQ(guard->deadCount(), 99);
    EXPECT_EQ(guard->GetDBVersion(), u"v3.4.0"_s);

    // The identity is made once.
    EXPECT_TRUE(guard->NewBuild());
    EXPECT_EQ(field("01"), id);
    EXPECT_TRUE(prompt.boxes.empty());
}

/// A login on a day after the birth of the database: its verdict, and the days left to branches.
struct Visit {
    int day;
    FakeMachine& machine;
    std::int32_t error;
    int daysLeft;
};

class VisitTest : public GuardTest {
  protected:
    void visit(std::initializer_list<Visit> visits) {
        const std::map<std::int32_t, QString> texts{
            {0, {}},
            {GuardVerdict::kExpired,
             u"本数据库在分机的有效期已过，不能再使用！请到原新建机器登录以更新有效期。"_s},
            {GuardVerdict::kClockSetBack,
             u"你所在计算机的日期时间异常，请勿提前操作系统的日期时间！"_s},
            {GuardVerdict::kWrongMachine, u"本数据库不在其所限定的计算机中使用，已被紧急销毁！"_s}};
        for (const Visit& each : visits) {
            SCOPED_TRACE(each.day);
            clock.set(start.addDays(each.day).startOfDay());
            const GuardVerdict verdict = login(each.machine);
            EXPECT_EQ(verdict.errorNumber, each.error);
            EXPECT_EQ(verdict.ok, each.error == 0);
            EXPECT_EQ(verdict.isCondemned(), each.error == GuardVerdict::kWrongMachine);
            EXPECT_EQ(verdict.message, texts.at(each.error));
            EXPECT_EQ(guard->deadCount(), each.daysLeft);
            if (verdict.ok) {
                EXPECT_EQ(guard->p_isOnBranch(), &each.machine != &origin);
            }
        }
    }

    FakeMachine third{u"THIRD"_s};
};

TEST_F(VisitTest, ClockSetBackIsRefusedAndTouchesNothing) {
    visit({{10, branch, 0, 89}});
    EXPECT_EQ(field("06"), u"32757"_s);
    const QStringList before = guardRow(database);
    visit({{9, origin, GuardVerdict::kClockSetBack, 89},
           {9, branch, GuardVerdict::kClockSetBack, 89}});
    EXPECT_EQ(guardRow(database), before);
    // The same day again is fine; forward and back is not, since the count has gone down.
    visit(
        {{10, branch, 0, 89}, {410, origin, 0, 99}, {10, origin, GuardVerdict::kClockSetBack, 99}});
}

TEST_F(VisitTest, BranchLifetimeRunsDownToItsEndAndTheOriginRenewsIt) {
    visit({{98, branch, 0, 1},
           {99, branch, GuardVerdict::kExpired, 0},
           {99, branch, GuardVerdict::kExpired, 0},
           {300, branch, GuardVerdict::kExpired, 0},
           {300, origin, 0, 99},
           {300, branch, 0, 99}});
}

TEST_F(VisitTest, WithoutAutoRenewTheLifetimeRunsDownOnTheOriginToo) {
    visit({{0, origin, 0, 99}});
    ASSERT_TRUE(guard->ManageBranchLogin(7, false));
    EXPECT_EQ(field("04"), u"7"_s);
    visit({{5, origin, 0, 2},
           {9, origin, 0, 0},
           {9, branch, GuardVerdict::kExpired, 0},
           {9, origin, 0, 0}});
    // Only the user brings it back.
    ASSERT_TRUE(guard->ManageBranchLogin(3, true));
    visit({{9, branch, 0, 3}});
}

TEST_F(VisitTest, OriginCountEndsAtZeroAndNeverBlocksTheOrigin) {
    visit({{32767, origin, 0, 99}});
    EXPECT_EQ(field("06"), u"0"_s);
    visit({{40000, origin, 0, 99}, {40000, origin, 0, 99}});
}

TEST_F(VisitTest, ConfinedDatabaseLivesOnItsTwoMachinesOnly) {
    visit({{0, branch, 0, 99}});
    ASSERT_TRUE(guard->LockOntoBrch(true));
    EXPECT_TRUE(guard->p_isBrchConfined());
    EXPECT_FALSE(guard->p_areOrgBrchSame());
    // No expiry, and the lifetime is left alone. A clock set back is met before the machine.
    visit({{500, branch, 0, 99},
           {500, origin, 0, 99},
           {500, third, GuardVerdict::kWrongMachine, 99},
           {499, third, GuardVerdict::kClockSetBack, 99},
           {500, branch, 0, 99}});
    ASSERT_TRUE(guard->LockOntoBrch(false));
    EXPECT_FALSE(guard->p_isBrchConfined());
    EXPECT_EQ(field("12"), u"0000000000"_s);
    visit({{500, origin, 0, 99}, {500, third, 0, 99}, {500, origin, 0, 99}});
    ASSERT_TRUE(guard->LockOntoBrch(true));
    EXPECT_TRUE(guard->p_areOrgBrchSame());
    visit({{500, branch, GuardVerdict::kWrongMachine, 99}});
}

TEST_F(GuardTest, EachPartOfTheFingerprintTellsMachinesApart) {
    FakeMachine firmware;
    firmware.firmware = u"LENOVO,20XX,10"_s;
    FakeMachine processor;
    processor.processor = u"BFEBFBFF000906EB"_s;
    FakeMachine shorter(u"S4EVNX0R12345"_s);
    for (FakeMachine* machine : {&firmware, &processor, &shorter, &branch}) {
        EXPECT_TRUE(login(*machine).ok);
        EXPECT_TRUE(guard->p_isOnBranch());
    }
    FakeMachine twin;
    twin.name = u"RENAMED"_s;
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
        EXPECT_EQ(verdict.message,
                  u"本密码数据库遭遇非法入侵，已被紧急销毁！"_s + QLatin1String(edited.detail));
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
    edit(u"[04]=30000"_s);
    ASSERT_TRUE(login(origin).ok);
    EXPECT_EQ(guard->deadCount(), 99);
    ASSERT_TRUE(guard->ManageBranchLogin(50, false));
    edit(u"[05]=5000, [08]='2031-01-01T00:00:00'"_s);
    ASSERT_TRUE(login(origin).ok);
    EXPECT_EQ(guard->deadCount(), 99);
    EXPECT_FALSE(guard->SetBranchDeadCount(100));
    EXPECT_FALSE(guard->ManageBranchLogin(-1, true));
    EXPECT_EQ(prompt.takeTexts().size(), 2);
    EXPECT_EQ(field("05"), u"99"_s);
    EXPECT_EQ(field("03"), u"0"_s);
}

TEST_F(GuardTest, ABareDigestUnderAnEmptyPasswordIsNoSeal) {
    SealMaker seals(random);
    const QString text = u"value"_s;
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
