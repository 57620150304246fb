// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

// The failed attempts in the login form: counted, told, and punished by the ban.

#include "app/user.h"
#include "guard/login.h"
#include "platform/clock.h"
#include "store/time_text.h"

namespace keeper {
namespace {

constexpr qint64 kBanSeconds = 86'400;
/// As in the settings of a new database.
constexpr std::int16_t kChancesOfUnknown = 10;

}  // namespace

bool Login::ShowChances() {
    const int remaining = m_user->p_remainedTimes();
    if (remaining >= 4) {
        ShowMessage(QStringLiteral("您有%1次登录尝试机会").arg(remaining),
                    LoginState::Tone::Normal);
        return true;
    }
    if (remaining >= 1) {
        ShowMessage(QStringLiteral("您还有%1次登录尝试机会").arg(remaining),
                    LoginState::Tone::Warning);
        return true;
    }
    if (IsBanned()) {
        return false;
    }
    if (attemptsAreUsedUp()) {
        // The second in which a ban begins does not yet count as banned; there is nothing to try in
        // it either.
        ShowMessage(QStringLiteral("请 %1 后再试").arg(Time::ShowTime(kBanSeconds)),
                    LoginState::Tone::Refused);
        return false;
    }
    m_user->p_usedTimes(0);
    if (m_user->p_lgnKeyChances0() < 1) {
        // A database that this machine has not seen: its own number is known after the login.
        m_user->p_lgnKeyChances0(kChancesOfUnknown);
    }
    return ShowChances();
}

bool Login::IsBanned() {
    if (m_user == nullptr || !m_user->p_attackTime().isValid()) {
        return false;
    }
    const qint64 seconds = m_user->p_attackTime().secsTo(m_ports.clock.now());
    if (seconds < 0) {
        ShowMessage(QStringLiteral("操作系统日期时间有误！"), LoginState::Tone::Refused);
        return true;
    }
    if (seconds >= 1 && seconds <= kBanSeconds) {
        ShowMessage(QStringLiteral("请 %1 后再试").arg(Time::ShowTime(kBanSeconds - seconds)),
                    LoginState::Tone::Refused);
        return true;
    }
    return false;
}

bool Login::attemptsAreUsedUp() const {
    return m_user->p_remainedTimes() < 1 && m_user->p_attackTime().isValid() &&
           m_user->p_attackTime().secsTo(m_ports.clock.now()) <= kBanSeconds;
}

bool Login::CountFailedAttempt() {
    if (m_user->p_hashLgnKey().isEmpty()) {
        // A key that no database can have, tried on one that this machine does not know. The record
        // may be that of another folder, with a key that is known.
        return true;
    }
    if (m_user->p_remainedTimes() > 0) {
        m_user->p_usedTimes(static_cast<std::int16_t>(m_user->p_usedTimes() + 1));
        if (m_user->p_remainedTimes() < 1) {
            m_user->p_attackTime(m_ports.clock.now());
        }
    }
    return m_user->WriteRegistry();
}

void Login::tick() {
    if (!m_state.hasUser) {
        return;
    }
    const bool wasRefused = m_state.chancesTone == LoginState::Tone::Refused;
    if (IsBanned()) {
        notify();
    } else if (wasRefused) {
        // Another instance may have counted on, and begun another ban.
        if (followRecord() && !IsBanned()) {
            ShowChances();
        }
        notify();
    }
}

}  // namespace keeper
