// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <sys/types.h>

#include <QSocketNotifier>
#include <QString>
#include <QTimer>
#include <chrono>
#include <memory>
#include <optional>

#include "platform/folder_lock.h"
#include "platform/linux/folder_links.h"
#include "platform/linux/folder_pin.h"
#include "platform/unique_fd.h"

namespace keeper {

/// Pins the folder and watches it: a renaming that the system allows all the same is undone within
/// moments, rights that are given back are taken again, and files that could be deleted all the
/// same have a second name by which they come back. When the program dies without
/// unlocking, a small process of its own frees the folder at once, and heal() at the next start
/// what even that could not.
class LinuxFolderLock final : public FolderLock {
  public:
    /// The journals, one for each folder, lie in `stateFolder`. `watchdog` is the program that runs
    /// watchdogMain() when it is started with kWatchdogOption and the journal's path; without one
    /// nothing frees the folder before heal().
    LinuxFolderLock(const QString& stateFolder, QString watchdog);
    ~LinuxFolderLock() override;

    bool lock(const QString& folder) override;
    void unlock() override;
    [[nodiscard]] bool isLocked() const override { return m_pin.has_value(); }

    /// Frees what a crash has left locked. To be called at the start of the program, by the one
    /// instance that runs, and again when the folder of a session is known to be there. REQUIRES:
    /// nothing is locked.
    void heal() const;

    static constexpr const char* kWatchdogOption = "--free-folder-at-end";
    /// Waits on the standard input until the program that locks dies, and frees the folder. Returns
    /// the exit code.
    static int watchdogMain(const char* journal);

  private:
    void watch();
    void startWatchdog();
    void stopWatchdog();
    void drain();
    void mend();
    void putBack() const;
    [[nodiscard]] QString whereNow() const;

    [[nodiscard]] QString journalOf(const QString& folder) const;

    QString m_stateFolder;
    QString m_watchdog;
    /// As it was asked for, and the folder itself.
    QString m_name;
    QString m_folder;
    std::optional<FolderPin> m_pin;
    std::optional<FolderLinks> m_links;
    QTimer m_mending;
    std::chrono::milliseconds m_retry{0};
    UniqueFd m_events;
    std::unique_ptr<QSocketNotifier> m_notifier;
    UniqueFd m_lifeline;
    pid_t m_watchdogProcess = -1;
};

}  // namespace keeper
