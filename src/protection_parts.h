// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <functional>

#include "guard/authentication.h"
#include "guard/branch_commands.h"
#include "guard/branch_manage.h"
#include "guard/column_switch.h"
#include "guard/dispatcher.h"
#include "guard/independent_password.h"

namespace keeper {

class ColumnKey;
class dlgAuthentication;
class EventLoop;
class KeyboardState;
class frmMain;
struct UserFolders;

/// What the layers of protection take from the session; all outlive the parts.
struct ProtectionPorts {
    Prompt& prompt;
    Clock& clock;
    Random& random;
    EventLoop& eventLoop;
    const UserFolders& folders;
    System& system;
    Database& connection;
    SealedDatabase& sealed;
    SysLogs& logs;
    const ColumnKey& columnKey;
    Cryptor3& columnCryptor;
    Cryptor3& fileCipher;
    ConnectingDisplay& connecting;
    OSInfo& osInfo;
    SWProtect& guard;
    DatabaseUpgrades& upgrades;
    const KeyboardState& keyboard;
    FingerprintReader& fingerprints;
    frmMain& window;
};

/// The object graph of the layers of protection within a session, and their forms.
class ProtectionParts {
  public:
    explicit ProtectionParts(const ProtectionPorts& ports);

    /// Asks for the independent password and blocks until that is decided.
    Authentication::Result authenticate(Authentication::SecretType type);
    /// Whether the session may read: with column encryption on, its password is asked for.
    bool unlockColumns();
    /// Waits for a finger of the desktop's user, in front of a session of `userName`.
    bool verifyFinger(QString& userName);

    struct Session {
        /// Whether the person may go on with the second-level authority of that number.
        std::function<bool(int number)> demandAuthority;
        /// The chances of the independent password are used up.
        std::function<void()> end;
    };
    /// Gives the main window's commands their work.
    void connectCommands(Session session);
    /// Lifetime and confinement in the main window.
    void showGuard();
    /// True while work with the database runs that a lock and the end of the session must await. A
    /// conversion of the columns is told to stop.
    bool keepsWaiting();
    /// Tells of a conversion that keepsWaiting() has stopped, once the person is back.
    void tellStopped();

  private:
    void showAuthentication();
    bool dispatch(const QString& path);
    void mn_columnCryption();
    void mn_branchManage();
    void tellLifetime(const QString& message);

    ProtectionPorts m_ports;
    Session m_session;
    dlgAuthentication* m_openAuthentication = nullptr;
    bool m_isDispatching = false;

  public:
    IndependentPassword secret;
    Authentication authentication;
    ColumnCryption columnCryption;
    ColumnSwitch columnSwitch;
    Dispatcher dispatcher;
    BranchCommands branchCommands;
    BranchManage branchManage;
};

}  // namespace keeper
