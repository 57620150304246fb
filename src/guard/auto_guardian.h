// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QtGlobal>
#include <functional>
#include <utility>

namespace keeper {

class Clock;
class FolderLock;
class Prompt;
class SysLogs;
class System;

/// Locks and unlocks the running manager: the windows go, what is secret leaves the memory, and the
/// private folder is pinned.
class AutoGuardian {
  public:
    struct Ports {
        Prompt& prompt;
        Clock& clock;
        System& system;
        SysLogs& logs;
        FolderLock& folder;
        /// Hides the main form behind the tray, or brings it back; false stops the (un)locking.
        /// What it throws is its own to show.
        std::function<bool(bool isLocked)> SetLockState;
        std::function<void()> clearClipboard;
        /// Takes the session's secrets out of memory, or brings them back.
        std::function<void(bool isConcealed)> concealSecrets;
        /// Runs `todo` as soon as they are out of it, which may have to wait for what is running.
        std::function<void(std::function<void()> todo)> whenConcealed;
        /// Seconds that the session has run.
        std::function<qint64()> runSeconds;
        /// Behind each unlocking that does not end the session.
        std::function<void()> unlocked;
        /// Asked before each locking: true when something must be undone first, which then locks
        /// again by itself. May be empty.
        std::function<bool(bool bManually)> postpones = nullptr;
    };

    explicit AutoGuardian(Ports ports) : m_ports(std::move(ports)) {}

    /// Locks; a locked manager stays as it is, and so does one that the user has left. `bManually`
    /// is by the person's command.
    void LockInstantly(bool bManually);
    /// Unlocks; `bExit` on the way out of the session, when no window comes back. The caller has
    /// asked for the independent password.
    void UnlockInstantly(bool bExit);
    [[nodiscard]] bool m_isLock() const { return m_isLocked; }

  private:
    void warnOfFreeFolder();
    void log(int status);

    Ports m_ports;
    bool m_isLocked = false;
};

}  // namespace keeper
