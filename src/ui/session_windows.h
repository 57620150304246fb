// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QDialog>
#include <QPointer>
#include <functional>
#include <memory>

#include "app/session_forms.h"
#include "store/connecting_display.h"

namespace keeper {

class KeyboardState;
class Login;
class Wizard;
class dlgConnecting;
class frmMain;
class frmSplash;

/// The small window of sealing and unsealing, made when it is first needed.
class ConnectingWindow final : public ConnectingDisplay {
  public:
    ConnectingWindow();
    ~ConnectingWindow() override;

    void SetMsg(CryptMode mode) override;
    void setProgress(int percent) override;
    void close() override;

  private:
    std::unique_ptr<dlgConnecting> m_window;
};

/// The windows of the start, in the order in which the session flow asks for them.
class SessionWindows final : public SessionForms {
  public:
    SessionWindows(Login& login, Wizard& wizard, const KeyboardState& keyboard,
                   frmMain& mainWindow);
    ~SessionWindows() override;

    void showSplash() override;
    void closeSplash() override;
    void setStartFolder(const QString& folder) override;
    LoginResult showLogin() override;
    bool showWizard() override;
    void showMain() override;
    /// Brings the login form to the front when it waits for the person, and lets it look at `path`
    /// unless that is empty. False when something else is in front.
    bool bringLoginToFront(const QString& path);
    /// Runs while the login form waits for the person, once its window stands.
    void setBehindLogin(std::function<void()> work) { m_behindLogin = std::move(work); }
    /// Fills the main window, just before it appears.
    void setBeforeMain(std::function<void()> work) { m_beforeMain = std::move(work); }

  private:
    Login& m_login;
    Wizard& m_wizard;
    const KeyboardState& m_keyboard;
    frmMain& m_main;
    std::function<void()> m_behindLogin;
    std::function<void()> m_beforeMain;
    std::unique_ptr<frmSplash> m_splash;
    QPointer<QDialog> m_loginForm;
};

}  // namespace keeper
