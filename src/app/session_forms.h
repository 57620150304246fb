// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

namespace keeper {

/// The forms between the start of the process and the main form, as the session flow sees them.
class SessionForms {
  public:
    enum class LoginResult { End = 0, Wizard = 1, LogIn = 2 };

    virtual ~SessionForms() = default;

    /// Shows the splash without blocking and lets pending events run.
    virtual void showSplash() = 0;
    virtual void closeSplash() = 0;
    /// Folder of the database that the command line named; given once, before the first login.
    virtual void setStartFolder(const QString& folder) = 0;
    /// Shows the login form anew and blocks until it closes.
    virtual LoginResult showLogin() = 0;
    /// Blocks until the wizard closes; true when it left an open database of a new user.
    virtual bool showWizard() = 0;
    virtual void showMain() = 0;
};

}  // namespace keeper
