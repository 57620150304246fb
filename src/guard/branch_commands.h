// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <functional>

namespace keeper {

class Clock;
class OSInfo;
class Prompt;
class SWProtect;
class SysLogs;

/// The menu commands by which a person confines a database to a machine, exchanges its two machines
/// and makes a copy for another one.
class BranchCommands {
  public:
    // Second-level authorities that may demand the independent password.
    static constexpr int kConfineAuthority = 12;
    static constexpr int kDispatchAuthority = 16;

    struct Ports {
        Prompt& prompt;
        const Clock& clock;
        OSInfo& osInfo;
        SWProtect& guard;
        SysLogs& sysLogs;
        /// Whether the person may go on with the authority of this number; asks where it must.
        std::function<bool(int number)> demandAuthority;
        /// Seals a copy for another machine to the path; false when it failed, which was told.
        std::function<bool(const QString& path)> sealDispatchCopy;
        /// Shows machine, confinement and lifetime anew.
        std::function<void()> refreshDisplay;
        /// Where the file dialog of a dispatch starts.
        std::function<QString()> dispatchFolder;
    };

    explicit BranchCommands(Ports ports);

    // Each is true when the command was carried out to its end.
    bool mn_confineBranch();
    bool mn_switchMachine();
    bool mn_dispatch();

  private:
    void log(int status, int count, const QString& description);

    Ports m_ports;
};

}  // namespace keeper
