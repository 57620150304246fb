// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QTimer>

#include "app/destruction.h"
#include "app/file_operator.h"
#include "app/regedit.h"
#include "app/registry_store.h"
#include "app/session_flow.h"
#include "app/system.h"
#include "app/users.h"
#include "auto_guard_parts.h"
#include "crypto/cryptor3.h"
#include "desktop_program.h"
#include "guard/authority_gate.h"
#include "guard/login.h"
#include "guard/os_info.h"
#include "guard/session_column_key.h"
#include "guard/session_connect.h"
#include "guard/store_upgrades.h"
#include "guard/sw_protect.h"
#include "guard/wizard.h"
#include "platform/autostart.h"
#include "platform/database.h"
#include "platform/linux/desktop_appearance.h"
#include "platform/linux/fprint_reader.h"
#include "platform/linux/linux_machine.h"
#include "platform/linux/linux_session_watch.h"
#include "platform/linux/linux_single_instance.h"
#include "platform/linux/x11_keyboard_state.h"
#include "platform/random.h"
#include "protection_parts.h"
#include "secret_parts.h"
#include "store/column_cipher.h"
#include "store/companions.h"
#include "store/cryptor_host_adapter.h"
#include "store/entries.h"
#include "store/sealed_database.h"
#include "store/sys_logs.h"
#include "ui/frm_main.h"
#include "ui/ports/qt_beeper.h"
#include "ui/ports/qt_clipboard.h"
#include "ui/ports/qt_event_loop.h"
#include "ui/ports/qt_prompt.h"
#include "ui/ports/qt_tray.h"
#include "ui/session_windows.h"
#include "ui/theme/theme.h"
#include "workspace/session_end.h"
#include "workspace_parts.h"

namespace keeper {

/// Everything that lives as long as the program, in the order in which it is made.
struct DesktopProgram::Graph {
    Graph();

    [[nodiscard]] StartChecks startChecks(const QString& commandLine);
    [[nodiscard]] Login::Ports loginPorts();
    [[nodiscard]] SessionEnd::Ports sessionEndPorts();
    [[nodiscard]] AutoGuardSession autoGuardSession();
    void connectSession();
    void buildMainWindow();
    void startWorkspace();
    void startSession();
    void checkAges();
    void endSession(CloseReason reason, AutoExit autoExit = AutoExit::None);
    void endSessionSoon();
    void tellRunTime();

    UserFolders folders = UserFolders::ofSystem();
    DesktopAppearance appearance;
    Theme theme;
    SystemClock clock;
    SystemRandom random;
    QtPrompt prompt;
    QtEventLoop eventLoop;
    QtClipboard clipboard;
    QtTray tray;
    QtBeeper beeper;
    X11KeyboardState keyboard;
    LinuxSingleInstance instance;
    LinuxSessionWatch sessionWatch;
    LinuxMachine machine;
    XdgAutostart autostart;
    PromptCryptorHost cryptorHost;

    RegistryStore registryStore;
    Regedit regedit;
    Users users;
    Database connection;
    System system;
    Cryptor3 fileCipher;
    ConnectingWindow connecting;
    SealedDatabase sealed;
    FileOperator files;
    Destruction destruction;

    SessionColumnKey columnKey;
    Cryptor3 columnCryptor;
    ColumnCipher columns;
    StoreContext store;
    SysLogs logs;
    Entries entries;
    Prgs programs;
    Fils fils;

    OSInfo osInfo;
    StoreUpgrades upgrades;
    SWProtect guard;
    frmMain mainWindow;
    FprintReader fingerprints;
    ProtectionParts protection;
    SessionConnect road;
    Login login;
    Wizard wizard;

    IndependentPasswordGate gate;
    SecretParts secrets;
    WorkspaceParts parts;
    SessionWindows windows;
    SessionEnd sessionEnd;
    AutoGuardParts autoGuard;
    QTimer tmrRunTime;
    bool isMainWindowBuilt = false;
    /// The desktop asked for the end before the session stood.
    bool isEndingEarly = false;
};

}  // namespace keeper
