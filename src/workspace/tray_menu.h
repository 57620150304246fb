// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <functional>
#include <utility>

namespace keeper {

class AuthorityGate;
class FillMonitorPort;
class Prompt;
class System;
class Tray;

/// What the icon in the notification area does: its menu `mn_tray`, its clicks, and the main form's
/// going there and coming back, locked or not.
class TrayMenu {
  public:
    struct Ports {
        Prompt& prompt;
        System& system;
        Tray& tray;
        AuthorityGate& gate;
        FillMonitorPort& monitor;
        std::function<bool()> isMainVisible;
        /// In front of everything, restored when it was minimised.
        std::function<void()> showMain;
        std::function<void()> hideMain;
        /// For desktops without a tray: a small window in the place of the icon. It offers
        /// tryUnlock().
        std::function<void(bool isShown)> showLockWindow;
        /// The same for a main form that hides itself unlocked.
        std::function<void()> minimizeMain;
        std::function<QString()> sizeCaption;
        std::function<void()> switchSize;
        std::function<bool()> canAbout;
        std::function<void()> about;
        std::function<void()> exit;
        std::function<void()> lock;
        std::function<void()> unlock;
        /// Lets tmrClickTray() come after kClickMilliseconds.
        std::function<void(bool isRunning)> runClickTimer;
    };

    static constexpr int kClickMilliseconds = 100;

    explicit TrayMenu(Ports ports) : m_ports(std::move(ports)) {}

    /// The session begins: menu, tool tip, icon.
    void start();
    /// Once a second: a tray may go away or come up at any time.
    void tick();
    /// The main form was shown, hidden or changed its size.
    void refresh();

    /// Hides the main form behind the icon, or brings it back. A failure is shown, and false.
    bool SetLockState(bool isLocked);
    [[nodiscard]] bool isLocked() const { return m_isLocked; }
    /// Hides the main form to the tray, where there is one; it is minimised otherwise.
    bool hideToTray();
    /// The way back to the main form from outside: it is shown, or the unlocking asked for.
    void comeBack();
    /// Asks for the independent password and unlocks.
    void tryUnlock();

    // The icon
    void choose(const QString& key);
    void click();
    void doubleClick();
    /// No second click has followed.
    void tmrClickTray();

  private:
    void mn_trayMainInterface();
    void mn_trayLock();
    void showToolTip();
    void showLockWindow();

    Ports m_ports;
    bool m_isLocked = false;
    bool m_wasHidden = false;
    bool m_isAsking = false;
    bool m_isLockWindowShown = false;
};

}  // namespace keeper
