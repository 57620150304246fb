// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QObject>
#include <QTimer>
#include <functional>
#include <memory>

#include "guard/auto_guard_settings.h"
#include "guard/auto_guardian.h"
#include "guard/guard_timers.h"
#include "guard/os_info.h"
#include "platform/concealed_texts.h"
#include "platform/linux/desktop_idle_time.h"
#include "platform/linux/desktop_screen_lock.h"
#include "platform/linux/linux_folder_lock.h"
#include "platform/linux/logind_power.h"
#include "ui/lock_window.h"
#include "workspace/tray_menu.h"

namespace keeper {

class Clipboard;
class Database;
class EditPane;
class FormSize;
class MainActions;
class Random;
class SessionWatch;
class frmMain;

/// What the automatic guard takes from the session; all outlive the parts.
struct AutoGuardSession {
    Prompt& prompt;
    Clock& clock;
    Random& random;
    System& system;
    Database& connection;
    SysLogs& logs;
    OSInfo& osInfo;
    AuthorityGate& gate;
    FillMonitorPort& monitor;
    Clipboard& clipboard;
    Tray& tray;
    SessionWatch& sessionWatch;
    EditPane& pane;
    FormSize& size;
    frmMain& mainWindow;
    QString stateFolder;
    std::function<qint64()> runSeconds;
    /// Closes the session as by a command of the program, unless the person cancels.
    std::function<void(AutoExit)> endSession;
    /// Whether work with the database must end first, which takes the return of the caller; what
    /// can be stopped is.
    std::function<bool()> keepsWaiting;
    /// Behind each unlocking that does not end the session.
    std::function<void()> unlocked;
};

/// The object graph of lock, timers and tray.
class AutoGuardParts : public QObject {
  public:
    explicit AutoGuardParts(const AutoGuardSession& session);

    /// A crash may have left a private folder locked. Before anything asks for it.
    void heal() const { m_folder.heal(); }
    /// The commands of the main window's menus.
    void carryOut(MainActions& actions);
    /// The session begins.
    void start();
    /// Once a second, while the session runs.
    void tick();
    /// The main form goes to the tray, or comes back from it. False without a tray: then it is
    /// minimised.
    bool hideToTray() { return tray.hideToTray(); }
    void comeBack() { tray.comeBack(); }
    /// The session ends: nothing stays locked.
    void release() { guardian.UnlockInstantly(/*bExit=*/true); }
    /// Runs `todo` behind the next unlocking that does not end the session.
    void whenUnlocked(std::function<void()> todo);
    /// The session has ended, and the machine is to follow.
    void shutDownMachine() { m_session.osInfo.ShutdownOS(m_power); }

  private:
    [[nodiscard]] AutoGuardian::Ports guardianPorts();
    [[nodiscard]] TrayMenu::Ports trayPorts();
    void connectTray();
    void connectDesktop();
    void conceal(bool isConcealed);
    void concealWhenNothingRuns();
    void whenConcealed(std::function<void()> todo);
    void letSleep();
    void reveal();
    void showLockWindow(bool isShown);
    void lockWithDesktop();
    void afterUnlocking();
    bool putOffLock(bool bManually);
    void showSettings();

    AutoGuardSession m_session;
    LinuxFolderLock m_folder;
    DesktopIdleTime m_idle;
    DesktopScreenLock m_screen;
    LogindPower m_power;
    QTimer m_clickTimer;
    std::unique_ptr<LockWindow> m_lockWindow;
    /// The password of column encryption, while the manager is locked.
    ConcealedTexts m_columnKey;
    bool m_isConcealWanted = false;
    bool m_isLockPutOff = false;
    bool m_isRunning = false;
    std::function<void()> m_whenConcealed;
    std::function<void()> m_whenUnlocked;
    /// Keeps the machine awake until a lock is complete.
    std::shared_ptr<const void> m_awake;

  public:
    AutoGuardian guardian;
    GuardTimers timers;
    AutoGuardSettings settings;
    TrayMenu tray;
};

}  // namespace keeper
