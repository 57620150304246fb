// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "guard/dispatcher.h"

#include "guard/guard_fixture.h"
#include "support/vault.h"

namespace keeper {
namespace {

/// A session with a sealed file of its own, judged on a machine.
struct GuardedSession : VaultSession {
    explicit GuardedSession(const QString& folder, FakeMachine& machine)
        : VaultSession(folder), osInfo(machine, prompt) {
        osInfo.Initialize();
    }
    Dispatcher dispatcher() {
        return {{ports, keys, cipher, display}, stateFolder, version, {.keyRounds = 10}};
    }
    GuardVerdict judge() {
        EXPECT_TRUE(guard.ReadDB());
        return guard.Initialize();
    }

    FakeClock clock;
    OSInfo osInfo;
    ScriptedUpgrades upgrades;
    QString version = u"3.4.0"_s;
    SWProtect::Ports ports{database, clock, random, prompt, osInfo, upgrades};
    SWProtect guard{ports, version};
};

class DispatcherTest : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(home.build());
        ASSERT_TRUE(home.guard.ReadDB());
        ASSERT_TRUE(home.guard.NewBuild());
        ASSERT_TRUE(home.guard.ManageBranchLogin(40, false));
        ASSERT_TRUE(home.guard.LockOntoBrch(true));
        home.clock.advanceDays(15);
        ASSERT_TRUE(home.judge().ok);
        ASSERT_EQ(home.guard.deadCount(), 25);
        home.addRow(7);
    }

    QTemporaryDir folder;
    FakeMachine origin;
    FakeMachine third{u"THIRD"_s};
    GuardedSession home{folder.filePath(u"home"_s), origin};
};

TEST_F(DispatcherTest, TheCopyLeavesFreeWithAFullLifetimeAndTheOriginalStays) {
    const QString target = folder.filePath(u"某人.kvdb"_s);
    const QStringList before = guardRow(home.database);
    ASSERT_TRUE(home.dispatcher().Dispatch(target))
        << home.prompt.takeTexts().join(u' ').toStdString();
    EXPECT_EQ(guardRow(home.database), before);
    EXPECT_EQ(home.rows(), 1);
    EXPECT_EQ(home.display.modes.back(), CryptMode::SealForDispatch);
    EXPECT_EQ(home.filesIn(home.stateFolder).filter(u".dispatching"_s), QStringList());
    EXPECT_TRUE(home.prompt.boxes.empty());
    EXPECT_TRUE(home.seal());

    GuardedSession away(folder.filePath(u"away"_s), third);
    away.keys.file = target;
    away.clock.set(home.clock.now());
    ASSERT_TRUE(away.open());
    EXPECT_EQ(away.rows(), 1);
    EXPECT_TRUE(away.judge().ok);
    EXPECT_TRUE(away.guard.p_isOnBranch());
    EXPECT_FALSE(away.guard.p_isBrchConfined());
    EXPECT_EQ(away.guard.deadCount(), 40);
    EXPECT_TRUE(away.guard.ExamineDBVersion().ok);
    EXPECT_TRUE(away.seal());

    // The original itself would be condemned there.
    GuardedSession stolen(folder.filePath(u"home"_s), third);
    stolen.clock.set(home.clock.now());
    ASSERT_TRUE(stolen.open());
    EXPECT_EQ(stolen.judge().errorNumber, GuardVerdict::kWrongMachine);
}

TEST_F(DispatcherTest, AFailureIsToldLeavesNothingBehindAndKeepsTheOlderFile) {
    const QStringList before = guardRow(home.database);
    EXPECT_FALSE(home.dispatcher().Dispatch(folder.filePath(u"none/copy.kvdb"_s)));
    EXPECT_EQ(home.prompt.takeTexts().size(), 1);

    const QString target = folder.filePath(u"copy.kvdb"_s);
    putContent(target, "older");
    home.database.execute("update tb_SWProtect set [20]='x'");
    stopGuardWrites(home.database);
    EXPECT_FALSE(home.dispatcher().Dispatch(target));
    EXPECT_EQ(contentOf(target), "older");
    EXPECT_EQ(home.prompt.takeTexts().size(), 1);
    EXPECT_EQ(home.filesIn(home.stateFolder).filter(u".dispatching"_s), QStringList());
    EXPECT_TRUE(home.database.isOpen());
    EXPECT_EQ(guardRow(home.database).mid(0, 18), before.mid(0, 18));
}

TEST_F(DispatcherTest, TheSessionsOwnFilesAreNoTarget) {
    ASSERT_TRUE(home.seal());
    const QByteArray sealed = contentOf(home.keys.file);
    ASSERT_TRUE(home.open());
    EXPECT_FALSE(home.dispatcher().Dispatch(home.keys.file));
    EXPECT_FALSE(home.dispatcher().Dispatch(home.vault.p_tmpFile()));
    EXPECT_EQ(home.prompt.takeTexts().size(), 2);
    EXPECT_EQ(contentOf(home.keys.file), sealed);
    EXPECT_EQ(home.rows(), 1);
}

}  // namespace
}  // namespace keeper
