// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "workspace/tray_menu.h"

#include "app/program_info.h"
#include "app/system.h"
#include "platform/tray.h"
#include "store/failure.h"
#include "workspace/ports.h"

namespace keeper {
namespace {

const QString kTrayMain = QStringLiteral("mn_trayMainInterface");
const QString kTraySize = QStringLiteral("mn_trayFormSize");
const QString kTrayLock = QStringLiteral("mn_trayLock");
const QString kTrayAbout = QStringLiteral("mn_trayAbout");
const QString kTrayExit = QStringLiteral("mn_trayExit");

}  // namespace

void TrayMenu::start() {
    m_ports.tray.setMenu({{kTrayMain, QStringLiteral("隐藏主界面")},
                          {kTraySize, m_ports.sizeCaption()},
                          {{}, {}},
                          {kTrayLock, QStringLiteral("锁定")},
                          {kTrayAbout, QStringLiteral("关于…"), m_ports.canAbout()},
                          {{}, {}},
                          {kTrayExit, QStringLiteral("退出")}});
    m_ports.tray.setState(Tray::State::Open);
    showToolTip();
    m_ports.tray.setVisible(true);
    refresh();
}

void TrayMenu::tick() {
    if (m_isLocked && !m_isAsking) {
        showLockWindow();
    }
}

void TrayMenu::refresh() {
    m_ports.tray.setItemText(kTrayMain, m_ports.isMainVisible() ? QStringLiteral("隐藏主界面")
                                                                : QStringLiteral("显示主界面"));
    m_ports.tray.setItemText(kTraySize, m_ports.sizeCaption());
}

bool TrayMenu::SetLockState(bool isLocked) {
    return guardedRun(m_ports.prompt, QStringLiteral("frmMain.SetLockState"), [&] {
        m_ports.monitor.ActivateMonitor(kFillEnded);
        m_isLocked = isLocked;
        m_wasHidden = isLocked && !m_ports.isMainVisible();
        m_ports.tray.setItemText(kTrayLock,
                                 isLocked ? QStringLiteral("解锁") : QStringLiteral("锁定"));
        m_ports.tray.setItemEnabled(kTrayMain, !isLocked);
        m_ports.tray.setItemEnabled(kTraySize, !isLocked);
        m_ports.tray.setState(isLocked ? Tray::State::Locked : Tray::State::Open);
        if (isLocked) {
            m_ports.hideMain();
            m_ports.tray.setVisible(true);
        }
        showToolTip();
        showLockWindow();
        // On the way out of the session no window comes back.
        if (!isLocked && !m_ports.system.p_isLogouted()) {
            m_ports.showMain();
        }
        refresh();
    });
}

void TrayMenu::showToolTip() {
    const QString user = m_ports.system.p_userName();
    if (!m_isLocked) {
        m_ports.tray.setToolTip(programTitle() + QStringLiteral(" - ") + user);
        return;
    }
    m_ports.tray.setToolTip((m_wasHidden ? QStringLiteral("主界面已隐藏到托盘；\n") : QString()) +
                            user + QStringLiteral(" - 管理器已经锁定，点此解锁。"));
}

void TrayMenu::showLockWindow() {
    const bool isWanted = m_isLocked && !m_ports.tray.isAvailable();
    if (isWanted != m_isLockWindowShown) {
        m_isLockWindowShown = isWanted;
        m_ports.showLockWindow(isWanted);
    }
}

bool TrayMenu::hideToTray() {
    const bool hasTray = m_ports.tray.isAvailable();
    if (hasTray) {
        m_ports.hideMain();
    } else {
        m_ports.minimizeMain();
    }
    refresh();
    return hasTray;
}

void TrayMenu::comeBack() {
    if (m_isLocked) {
        tryUnlock();
    } else {
        m_ports.showMain();
        refresh();
    }
}

void TrayMenu::tryUnlock() {
    // The gate's dialog is modal, and the icon can be clicked meanwhile all the same.
    if (!m_isLocked || m_isAsking) {
        return;
    }
    m_isAsking = true;
    const bool isAllowed = m_ports.gate.CheckAuthority(true);
    m_isAsking = false;
    // The gate may have ended the session.
    if (isAllowed && m_isLocked && !m_ports.system.p_isLogouted()) {
        m_ports.unlock();
    }
}

void TrayMenu::choose(const QString& key) {
    if (key == kTrayMain) {
        mn_trayMainInterface();
    } else if (key == kTraySize) {
        m_ports.switchSize();
        refresh();
    } else if (key == kTrayLock) {
        mn_trayLock();
    } else if (key == kTrayAbout) {
        m_ports.about();
    } else if (key == kTrayExit) {
        m_ports.exit();
    }
}

void TrayMenu::mn_trayMainInterface() {
    if (m_isLocked) {
        return;
    }
    if (m_ports.isMainVisible()) {
        hideToTray();
    } else {
        comeBack();
    }
}

void TrayMenu::mn_trayLock() {
    if (m_isLocked) {
        tryUnlock();
    } else if (!m_ports.system.p_isLogouted()) {
        m_ports.lock();
    }
}

void TrayMenu::click() {
    m_ports.runClickTimer(true);
}

void TrayMenu::tmrClickTray() {
    m_ports.runClickTimer(false);
    comeBack();
}

void TrayMenu::doubleClick() {
    m_ports.runClickTimer(false);
    if (m_isLocked) {
        tryUnlock();
    } else {
        mn_trayMainInterface();
    }
}

}  // namespace keeper
