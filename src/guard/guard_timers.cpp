// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "guard/guard_timers.h"

#include "app/system.h"
#include "guard/auto_guardian.h"
#include "platform/idle_time.h"
#include "platform/status_panels.h"
#include "store/time_text.h"

namespace keeper {

void GuardTimers::tick() {
    if (m_isLockArmed) {
        tmrGuardLock();
    }
    if (m_isExitArmed) {
        tmrGuardExit();
    }
}

void GuardTimers::armLock() {
    // Without a time the first tick would lock again behind each unlocking.
    const Settings& settings = m_ports.system.settings();
    m_isLockArmed = settings.p_autoLock() && settings.p_autoLockSecs() > 0;
}

void GuardTimers::armExit() {
    m_isExitArmed = m_exitMode != AutoExit::None;
    showTimeLeft();
}

void GuardTimers::setAutoExit(AutoExit mode, std::int32_t seconds) {
    m_isExitArmed = false;
    m_exitMode = mode;
    m_exitSeconds = seconds;
    showTimeLeft();
}

bool GuardTimers::isDesktopWide() const {
    return m_ports.idle.isDesktopWide();
}

void GuardTimers::tmrGuardLock() {
    const auto idle = m_ports.idle.sinceLastInput();
    if (!idle) {
        return;
    }
    constexpr qint64 kMillisecondsPerSecond = 1000;
    // The one second of the idle period: whoever has unlocked without touching mouse or keyboard is
    // not locked again at each further second.
    if (m_ports.system.settings().p_autoLockSecs() - *idle / kMillisecondsPerSecond == 0) {
        m_isLockArmed = false;
        m_ports.guardian.LockInstantly(false);
    }
}

void GuardTimers::tmrGuardExit() {
    --m_exitSeconds;
    showTimeLeft();
    if (m_exitSeconds > 0) {
        return;
    }
    m_isLockArmed = false;
    m_isExitArmed = false;
    m_ports.exitNow(m_exitMode);
}

void GuardTimers::showTimeLeft() {
    m_ports.panels.setPanel(StatusPanel::AEStatus,
                            m_isExitArmed ? Time::ShowTime(m_exitSeconds) : QString());
}

}  // namespace keeper
