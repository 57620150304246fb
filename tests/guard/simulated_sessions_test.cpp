// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

// A long life of one database through login form, road and exit, on several machines under a clock
// that jumps, with wrong keys, crashes and damage, against a model of the rules.
// KEEPER_SIMULATED_LOGINS sets the number of sessions of a campaign, KEEPER_SIMULATION_SEED its
// dice.

#include <algorithm>
#include <array>
#include <random>

#include "support/campaign_setting.h"
#include "support/session_fixture.h"

namespace keeper {
namespace {

constexpr int kForgedKey = 7;

/// The rules in days alone, without seals, tables or texts.
struct Model {
    int origin = 0;
    int confinedTo = -1;
    bool autoRenew = true;
    int lifetime = 99;
    int branchDays = 99;
    qint64 branchEnd = 99;
    qint64 originDays = 32767;
    qint64 originEnd = 32767;
    int used = 0;
    std::optional<qint64> attackDay = {};

    static Model bornOn(qint64 today, int machine) {
        Model model;
        model.origin = machine;
        model.branchEnd += today;
        model.originEnd += today;
        return model;
    }
    void setBranch(qint64 today, qint64 days) {
        branchDays = static_cast<int>(days);
        branchEnd = today + days;
    }
    /// All happens at noon: a ban lasts over the next day's noon.
    [[nodiscard]] bool isBlocked(qint64 today) const {
        return attackDay && (today < *attackDay || today == *attackDay + 1 ||
                             (today == *attackDay && used >= 10));
    }
    void countWrongKey(qint64 today) {
        used = (used >= 10 ? 0 : used) + 1;
        if (used == 10) {
            attackDay = today;
        }
    }
    std::int32_t login(int machine, qint64 today) {
        if (originEnd - today > originDays) {
            return GuardVerdict::kClockSetBack;
        }
        originDays = std::max<qint64>(originEnd - today, 0);
        originEnd = today + originDays;
        const qint64 left = branchEnd - today;
        if (machine == origin) {
            if (autoRenew) {
                setBranch(today, lifetime);
            } else if (left <= branchDays) {
                setBranch(today, std::max<qint64>(left, 0));
            }
            return 0;
        }
        if (confinedTo >= 0) {
            return machine == confinedTo ? 0 : GuardVerdict::kWrongMachine;
        }
        if (left > branchDays) {
            return GuardVerdict::kClockSetBack;
        }
        setBranch(today, std::max<qint64>(left, 0));
        return left < 1 ? GuardVerdict::kExpired : 0;
    }
};

class SimulatedSessions : public SessionTest {
  protected:
    void SetUp() override {
        machine.disk = u"DISK0"_s;
        SessionTest::SetUp();
    }
    int roll(int sides) { return std::uniform_int_distribution<int>(0, sides - 1)(dice); }
    void begin(int session) {
        // Mostly a few days on, now and then far on, or back.
        const int kind = roll(20);
        today += kind < 17 ? roll(3) : (kind < 19 ? roll(120) : -roll(3));
        clock.set(QDateTime(start.addDays(today), QTime(12, 0)));
        machineNo = roll(3);
        machine.disk = u"DISK%1"_s.arg(machineNo);
        what = "session " + std::to_string(session) + " on day " + std::to_string(today);
        restart();
        prompt.boxes.clear();
        program->login.activate();
    }
    void typeWrongKey() {
        const bool isBlocked = model.isBlocked(today);
        prompt.answers.assign(isBlocked ? 0 : 1, Prompt::Answer::Yes);
        program->typeAndLogIn(key + u' ');
        ASSERT_FALSE(program->login.isClosed()) << what;
        if (!isBlocked) {
            model.countWrongKey(today);
            ASSERT_EQ(stored()->p_usedTimes(), model.used) << what;
        }
    }
    /// The road of a typed key that the form has accepted; 0 when it leads to an open database.
    std::int32_t connect() {
        if (program->road.ConnectDatabase(program->resumed)) {
            return 0;
        }
        const QString text = lastText();
        return text.mid(1, text.indexOf(u']') - 1).toInt();
    }
    void logInWithForgedHash() {
        const QString other = u"another key"_s;
        program->login.load();
        program->users.GetUser(name)->p_hashLgnKey(Cryptor2::hashString(other));
        program->login.activate();
        program->typeAndLogIn(other);
        ASSERT_EQ(connect(), kForgedKey) << what;
        expectDestruction(kForgedKey);
    }
    void logInToDamage() {
        program->typeAndLogIn(key);
        const QByteArray whole = contentOf(sealedFile);
        putContent(sealedFile, whole.chopped(1 + roll(static_cast<int>(whole.size()))));
        ASSERT_FALSE(program->road.ConnectDatabase(program->resumed)) << what;
        putContent(sealedFile, whole);
    }
    void logIn() {
        program->typeAndLogIn(key);
        ASSERT_EQ(program->login.m_result() == Login::Result::LogIn, !model.isBlocked(today))
            << what;
        if (model.isBlocked(today)) {
            return;
        }
        const std::int32_t expected = model.login(machineNo, today);
        ASSERT_EQ(connect(), expected) << what;
        if (expected == GuardVerdict::kWrongMachine) {
            expectDestruction(expected);
            return;
        }
        ++seen.at(static_cast<std::size_t>(expected));
        isCrashed = false;
        if (expected == 0) {
            ASSERT_EQ(program->guard.deadCount(), model.branchDays) << what;
            work();
        }
    }
    void work() {
        program->road.ReportAfterLogin(program->resumed);
        program->road.RecordLogin(program->resumed);
        model.used = 0;
        model.attackDay.reset();
        // A log of thousands of rows and as many backups would only cost time.
        program->connection.execute("PRAGMA synchronous=OFF;DELETE FROM tb_SysLog");
        program->system.settings().p_backupPeriod(true);
        program->system.settings().p_backupDays(0);
        if (roll(8) == 0) {
            const bool lock = model.confinedTo < 0;
            ASSERT_TRUE(program->guard.LockOntoBrch(lock));
            model.confinedTo = lock ? machineNo : -1;
        }
        if (machineNo == model.origin && roll(4) == 0) {
            model.lifetime = roll(100);
            model.autoRenew = roll(2) == 0;
            ASSERT_TRUE(program->guard.ManageBranchLogin(model.lifetime, model.autoRenew));
            model.setBranch(today, model.lifetime);
        }
        isCrashed = roll(3) == 0;
        ASSERT_TRUE(isCrashed || program->leave()) << what;
    }
    void expectDestruction(std::int32_t verdict) {
        ASSERT_FALSE(QFileInfo::exists(folder)) << what;
        ASSERT_FALSE(stored()) << what;
        ++seen.at(static_cast<std::size_t>(verdict));
        restart();
        ASSERT_TRUE(program->build(name, key)) << what;
        model = Model::bornOn(today, machineNo);
        isCrashed = true;
    }

    const QDate start{2026, 5, 20};
    // NOLINTNEXTLINE(cert-msc51-cpp): a failure must be repeatable
    std::mt19937 dice{static_cast<unsigned>(campaignSetting("KEEPER_SIMULATION_SEED", 20260520))};
    Model model;
    qint64 today = 0;
    int machineNo = 0;
    /// The last session was not left: the next login finds its working copy.
    bool isCrashed = true;
    std::array<int, 8> seen{};
    std::string what;
};

TEST_F(SimulatedSessions, FollowTheModelAndNothingElseDestroys) {
    const int sessions = campaignSetting("KEEPER_SIMULATED_LOGINS", 150);
    for (int i = 0; i < sessions && !HasFatalFailure(); ++i) {
        begin(i);
        const int kind = roll(40);
        if (kind < 12) {
            typeWrongKey();
        } else if (kind == 12 && !isCrashed && !model.isBlocked(today)) {
            logInWithForgedHash();
        } else if (kind == 13 && !isCrashed && !model.isBlocked(today)) {
            logInToDamage();
        } else {
            logIn();
        }
        ASSERT_TRUE(QFileInfo::exists(sealedFile)) << what;
        ASSERT_TRUE(stored()) << what;
    }
    EXPECT_EQ(seen.at(GuardVerdict::kTampered), 0);
    for (const int verdict : {0, 1, 3, 5}) {
        EXPECT_GT(seen.at(static_cast<std::size_t>(verdict)), 0) << verdict;
    }
}

}  // namespace
}  // namespace keeper
