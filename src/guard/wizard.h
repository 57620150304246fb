// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <functional>

#include "store/failure.h"

namespace keeper {

class Clock;
class Fils;
class Random;
class Regedit;
class SWProtect;
class SealedDatabase;
class System;
class Users;

/// Everything that the wizard shows, as one value.
struct WizardState {
    /// 0 user name, 1 login key, 2 independent password, 3 summary.
    int page = 0;
    QString frameCaption;
    QString parentFolder;
    QString userName;
    /// The private folder as it will be.
    QString privateFolder;
    QString loginKey;
    QString loginKeyTip;
    QString independentPassword;
    QString independentPasswordTip;
    QString summary;
    /// "下一步(&N)", on the last page "完成(&F)".
    QString nextCaption;
    bool canGoBack = false;
    bool isWorking = false;
};

/// The rules of the new-user wizard: takes name and secrets, and makes the private folder and the
/// database. It ends well with an open database of the new user.
class Wizard {
  public:
    struct Ports {
        Prompt& prompt;
        Clock& clock;
        Random& random;
        System& system;
        SealedDatabase& database;
        SWProtect& guard;
        Fils& files;
        Users& users;
        Regedit& registry;
        /// Where the program lies; empty for none.
        QString programFolder = {};
    };

    explicit Wizard(const Ports& ports);
    ~Wizard();
    Wizard(const Wizard&) = delete;
    Wizard& operator=(const Wizard&) = delete;

    /// A new showing: first page, fresh default secrets, both different.
    void load();
    [[nodiscard]] const WizardState& state() const { return m_state; }
    /// 2 when a database of a new user is open, else 0.
    [[nodiscard]] int m_result() const { return m_resultValue; }
    [[nodiscard]] bool isClosed() const { return m_isClosed; }
    /// The explanation of a page, a paragraph a line.
    [[nodiscard]] static QString pageText(int page);

    void setUserName(const QString& name);
    void setLoginKey(const QString& key) { m_state.loginKey = key; }
    void setLoginKeyTip(const QString& tip) { m_state.loginKeyTip = tip; }
    void setIndependentPassword(const QString& password) { m_state.independentPassword = password; }
    void setIndependentPasswordTip(const QString& tip) { m_state.independentPasswordTip = tip; }

    void cmdOpen();
    void cmdNext();
    void cmdBack();
    void cmdCancel();

    /// state() has changed, or the form is to close.
    std::function<void()> changed;

  private:
    [[nodiscard]] bool checkPage(QString& message) const;
    void showPage(int page);
    void finish();
    void build();
    /// Tells the failure and leaves no trace of the half-made user.
    void undo(const Failure& failure, const QString& source);
    void wipe();
    [[nodiscard]] QString sixDigits();

    Ports m_ports;
    WizardState m_state;
    int m_resultValue = 0;
    bool m_isClosed = false;
};

}  // namespace keeper
