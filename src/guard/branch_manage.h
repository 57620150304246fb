// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <functional>
#include <utility>

namespace keeper {

class Clock;
class SWProtect;
class SysLogs;

/// The rules of the form that sets how long the database lives on branch machines.
class BranchManage {
  public:
    struct Ports {
        const Clock& clock;
        SWProtect& guard;
        SysLogs& sysLogs;
        /// The lifetime has changed; the sentence that tells it.
        std::function<void(const QString& message)> tellLifetime;
    };

    /// All that the form shows.
    struct State {
        int daysLeft = 0;
        bool isOnOrigin = false;
        /// The lifetime to be set, in days, and whether each login on the origin renews it. Both
        /// can be changed on the origin alone.
        int days = 0;
        bool autoRenew = false;
    };

    explicit BranchManage(Ports ports) : m_ports(std::move(ports)) {}

    /// A new showing.
    void load();
    [[nodiscard]] const State& state() const { return m_state; }
    void setDays(int days);
    void setAutoRenew(bool isOn);
    /// True when the form is to close; a failure has been told and changed nothing.
    bool cmdOK();

    /// "本数据库在分机上的存活期还有", the days, "天。"
    [[nodiscard]] static QString lifetimeText(int days);

  private:
    Ports m_ports;
    State m_state;
};

}  // namespace keeper
