// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <cstdint>
#include <functional>
#include <utility>

#include "guard/auto_exit.h"

namespace keeper {

class AutoGuardian;
class IdleTime;
class StatusPanels;
class System;

/// The two timers of the automatic guard, told of each second by their owner.
class GuardTimers {
  public:
    struct Ports {
        System& system;
        IdleTime& idle;
        AutoGuardian& guardian;
        StatusPanels& panels;
        /// Ends the session and, as the mode says, the machine.
        std::function<void(AutoExit)> exitNow;
    };

    explicit GuardTimers(Ports ports) : m_ports(std::move(ports)) {}

    /// Once a second, while the session runs.
    void tick();
    /// Switches `tmrGuardLock` as the settings say: at the login, behind each unlocking, and when
    /// the settings' dialog closes.
    void armLock();
    /// Starts the countdown of `m_autoExitSecs`, or stops it for the mode None.
    void armExit();

    /// Whether the idle time counts the input in all programs, and not in this one alone.
    [[nodiscard]] bool isDesktopWide() const;
    [[nodiscard]] bool isLockArmed() const { return m_isLockArmed; }
    [[nodiscard]] bool isExitArmed() const { return m_isExitArmed; }
    [[nodiscard]] AutoExit m_autoExit() const { return m_exitMode; }
    [[nodiscard]] std::int32_t m_autoExitSecs() const { return m_exitSeconds; }
    /// Takes effect with armExit(); a countdown that runs meanwhile stops.
    void setAutoExit(AutoExit mode, std::int32_t seconds);

  private:
    void tmrGuardLock();
    void tmrGuardExit();
    void showTimeLeft();

    Ports m_ports;
    bool m_isLockArmed = false;
    bool m_isExitArmed = false;
    AutoExit m_exitMode = AutoExit::None;
    std::int32_t m_exitSeconds = 0;
};

}  // namespace keeper
