// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

// A long life of one database on several machines under a clock that jumps, against a model of the
// rules. KEEPER_SIMULATED_LOGINS sets the number of logins of a campaign.

#include <algorithm>
#include <array>
#include <random>

#include "guard/guard_fixture.h"
#include "support/campaign_setting.h"

namespace keeper {
namespace {

/// The rules in days alone, without seals, tables or texts.
struct Model {
    int confinedTo = -1;
    bool autoRenew = true;
    int lifetime = 99;
    int branchDays = 99;
    qint64 branchEnd = 99;
    qint64 originDays = 32767;
    qint64 originEnd = 32767;

    void setBranch(qint64 today, qint64 days) {
        branchDays = static_cast<int>(days);
        branchEnd = today + days;
    }
    std::int32_t login(int machine, qint64 today) {
        if (originEnd - today > originDays) {
            return GuardVerdict::kClockSetBack;
        }
        originDays = std::max<qint64>(originEnd - today, 0);
        originEnd = today + originDays;
        const qint64 left = branchEnd - today;
        if (machine == 0) {
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

TEST_F(GuardTest, SimulatedLoginsFollowTheModelAndNothingElseCondemns) {
    const int logins = campaignSetting("KEEPER_SIMULATED_LOGINS", 400);
    FakeMachine third(QStringLiteral("THIRD"));
    const std::array<FakeMachine*, 3> machines{&origin, &branch, &third};
    Model model;
    std::mt19937 dice(20260520);  // NOLINT(cert-msc51-cpp): a failure must be repeatable
    const auto roll = [&dice](int sides) {
        return std::uniform_int_distribution<int>(0, sides - 1)(dice);
    };
    qint64 today = 0;
    std::array<int, 7> seen{};
    for (int i = 0; i < logins; ++i) {
        // Mostly a few days on, now and then far on, or back.
        const int kind = roll(20);
        today += kind < 17 ? roll(3) : (kind < 19 ? roll(120) : -roll(3));
        setDay(start.addDays(today));
        const int machine = roll(3);
        const GuardVerdict verdict = login(*machines.at(static_cast<std::size_t>(machine)));
        const std::int32_t expected = model.login(machine, today);
        ASSERT_EQ(verdict.errorNumber, expected) << "login " << i << " on day " << today;
        ++seen.at(static_cast<std::size_t>(expected));
        if (!verdict.ok) {
            continue;
        }
        ASSERT_EQ(guard->p_isOnBranch(), machine != 0);
        ASSERT_EQ(guard->deadCount(), model.branchDays);
        ASSERT_TRUE(guard->ExamineDBVersion().ok);
        if (roll(8) == 0) {
            const bool lock = model.confinedTo < 0;
            ASSERT_TRUE(guard->LockOntoBrch(lock));
            model.confinedTo = lock ? machine : -1;
        }
        if (machine == 0 && roll(4) == 0) {
            model.lifetime = roll(100);
            model.autoRenew = roll(2) == 0;
            ASSERT_TRUE(guard->ManageBranchLogin(model.lifetime, model.autoRenew));
            model.setBranch(today, model.lifetime);
        }
    }
    EXPECT_TRUE(prompt.boxes.empty());
    EXPECT_EQ(seen.at(GuardVerdict::kTampered), 0);
    for (const int verdict : {0, 1, 3, 5}) {
        EXPECT_GT(seen.at(static_cast<std::size_t>(verdict)), 0) << verdict;
    }
}

}  // namespace
}  // namespace keeper
