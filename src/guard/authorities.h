// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <array>

namespace keeper {

class Clock;
class Database;
class Prompt;
class SealedDatabase;
class SysLog;
class SysLogs;
class System;

/// The rules of the form that says which commands demand the independent password.
class Authorities {
  public:
    /// Numbered from 1. The last ones are spare: kept with the others, without a command.
    static constexpr int kCount = 20;
    static constexpr int kNamed = 16;

    struct Ports {
        Prompt& prompt;
        const Clock& clock;
        System& system;
        Database& connection;
        const SealedDatabase& database;
        SysLogs& logs;
    };

    explicit Authorities(const Ports& ports) : m_ports(ports) {}

    /// Empty for a spare number.
    [[nodiscard]] static QString caption(int number);
    /// Empty where the caption says it all.
    [[nodiscard]] static QString toolTip(int number);

    /// A new showing with what the settings hold.
    void load();
    /// Once the form stands: warns when the independent password is empty.
    void activate();
    [[nodiscard]] bool isChecked(int number) const;
    void check(int number, bool isOn);
    void cmdAllYes() { m_isChecked.fill(true); }
    void cmdAllNo() { m_isChecked.fill(false); }
    /// True when all is stored and the form is to close. A failure is told and changes nothing.
    bool cmdOK();

  private:
    [[nodiscard]] bool write(const SysLog& log);

    Ports m_ports;
    std::array<bool, kCount> m_isChecked{};
};

}  // namespace keeper
