// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/session_windows.h"

#include <QApplication>
#include <QTimer>
#include <chrono>

#include "guard/login.h"
#include "guard/wizard.h"
#include "ui/dlg_connecting.h"
#include "ui/frm_login.h"
#include "ui/frm_main.h"
#include "ui/frm_splash.h"
#include "ui/frm_wizard.h"

namespace keeper {

ConnectingWindow::ConnectingWindow() = default;
ConnectingWindow::~ConnectingWindow() = default;

void ConnectingWindow::SetMsg(CryptMode mode) {
    if (!m_window) {
        m_window = std::make_unique<dlgConnecting>();
    }
    m_window->SetMsg(mode);
}

void ConnectingWindow::setProgress(int percent) {
    if (m_window) {
        m_window->setProgress(percent);
    }
}

void ConnectingWindow::close() {
    m_window.reset();
}

SessionWindows::SessionWindows(Login& login, Wizard& wizard, const KeyboardState& keyboard,
                               frmMain& mainWindow)
    : m_login(login), m_wizard(wizard), m_keyboard(keyboard), m_main(mainWindow) {}

SessionWindows::~SessionWindows() = default;

void SessionWindows::showSplash() {
    m_splash = std::make_unique<frmSplash>();
    m_splash->show();
    QApplication::processEvents();
}

void SessionWindows::closeSplash() {
    m_splash.reset();
}

void SessionWindows::setStartFolder(const QString& folder) {
    m_login.setStartFolder(folder);
}

SessionForms::LoginResult SessionWindows::showLogin() {
    m_login.load();
    frmLogin form(m_login, m_keyboard);
    m_loginForm = &form;
    if (m_behindLogin) {
        constexpr std::chrono::milliseconds kPainted{150};
        QTimer::singleShot(kPainted, &form, m_behindLogin);
    }
    form.run();
    return m_login.m_result();
}

bool SessionWindows::bringLoginToFront(const QString& path) {
    if (m_loginForm == nullptr || QApplication::activeModalWidget() != m_loginForm) {
        return false;
    }
    if (m_loginForm->isMinimized()) {
        m_loginForm->showNormal();
    }
    m_loginForm->raise();
    m_loginForm->activateWindow();
    if (!path.isEmpty()) {
        m_login.lookAt(path);
    }
    return true;
}

bool SessionWindows::showWizard() {
    m_wizard.load();
    frmWizard form(m_wizard, m_keyboard);
    return form.run();
}

void SessionWindows::showMain() {
    if (m_beforeMain) {
        m_beforeMain();
    }
    m_main.show();
    m_main.bringToFront();
}

}  // namespace keeper
