// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "desktop_program.h"

#include <QDesktopServices>
#include <QFileInfo>
#include <QTimer>
#include <QUrl>
#include <chrono>
#include <utility>

#include "app/destruction.h"
#include "app/file_operator.h"
#include "app/program_info.h"
#include "app/regedit.h"
#include "app/registry_store.h"
#include "app/session_flow.h"
#include "app/system.h"
#include "app/users.h"
#include "auto_guard_parts.h"
#include "crypto/cipher_self_test.h"
#include "crypto/cryptor3.h"
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
#include "platform/database_self_test.h"
#include "platform/linux/desktop_appearance.h"
#include "platform/linux/desktop_notification.h"
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
#include "store/time_text.h"
#include "ui/frm_main.h"
#include "ui/ports/qt_beeper.h"
#include "ui/ports/qt_clipboard.h"
#include "ui/ports/qt_event_loop.h"
#include "ui/ports/qt_prompt.h"
#include "ui/ports/qt_tray.h"
#include "ui/session_windows.h"
#include "ui/theme/icons.h"
#include "ui/theme/theme.h"
#include "wiping_heap.h"
#include "workspace/session_end.h"
#include "workspace_parts.h"

namespace keeper {
namespace {

/// For what waits until other code has returned.
constexpr std::chrono::milliseconds kRetry{20};

}  // namespace

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

DesktopProgram::Graph::Graph()
    : appearance(folders.configuration),
      theme(appearance),
      tray(notifyDesktop),
      instance(LinuxSingleInstance::defaultFolder(folders.configuration)),
      machine(LinuxMachine::systemSources(folders.registry())),
      autostart(folders, QApplication::applicationFilePath()),
      cryptorHost(prompt, eventLoop),
      registryStore(folders.registry(), clock),
      regedit(registryStore, folders),
      users({regedit, autostart, random, prompt}, eventLoop),
      system(connection, prompt, clock),
      fileCipher(cryptorHost),
      sealed(system, fileCipher, connection, prompt, random, connecting,
             folders.state + QStringLiteral("/morvane-keeper")),
      files(folders, clock, prompt, system),
      destruction(folders, users, prompt),
      columnKey(system),
      columnCryptor(cryptorHost),
      columns(columnKey, columnCryptor),
      store{connection, prompt, clock, columns},
      logs(store),
      entries(store),
      programs(store, entries),
      fils(store, entries),
      osInfo(machine, prompt),
      upgrades(entries, programs, system.settings()),
      guard({connection, clock, random, prompt, osInfo, upgrades}, programVersion()),
      protection({prompt, clock, random, eventLoop, folders, system, connection, sealed, logs,
                  columnKey, columnCryptor, fileCipher, connecting, osInfo, guard, upgrades,
                  keyboard, fingerprints, mainWindow}),
      road({prompt, clock, system, connection, sealed, guard, logs, users, osInfo, connecting,
            destruction, [this] { return protection.unlockColumns(); }}),
      login(loginPorts()),
      wizard({prompt, clock, random, system, sealed, guard, fils, users, regedit,
              QApplication::applicationDirPath()}),
      gate({system.settings(), sealed,
            [this] {
                return protection.authenticate(Authentication::SecretType::IndependentPassword);
            },
            [this] { endSessionSoon(); }}),
      secrets(
          {prompt, clock, system, connection, sealed, logs, keyboard, mainWindow.statusPanels()}),
      parts({prompt, clock, system, store, files, entries, programs, fils, logs, gate, beeper,
             mainWindow}),
      windows(login, wizard, keyboard, mainWindow),
      sessionEnd(sessionEndPorts()),
      autoGuard(autoGuardSession()) {
    system.attach(sealed);
    tmrRunTime.setInterval(1000);
    // The automatic lock looks for one certain second.
    tmrRunTime.setTimerType(Qt::PreciseTimer);
    connectSession();
}

StartChecks DesktopProgram::Graph::startChecks(const QString& commandLine) {
    StartChecks checks;
    checks.claimInstance = [this, commandLine] {
        if (instance.acquire() == SingleInstance::Outcome::Holder) {
            return true;
        }
        // The other one runs in another folder, and a path without a good file is passed over in
        // silence there as here.
        const QString path = Main::pathOf(commandLine);
        instance.askHolder(FileOperator::FileValid(path) ? QFileInfo(path).absoluteFilePath()
                                                         : QString());
        return false;
    };
    checks.initializeSystemInfo = [this] { return osInfo.Initialize(); };
    checks.selfTest = [this] {
        if (!cipherSelfTest()) {
            return QStringLiteral("密码算法自检失败");
        }
        // In memory where there is such a folder: nobody waits for a disk's flush at every start.
        const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
        const bool isProved = QFileInfo(runtime).isDir() && databaseSelfTest(runtime).isEmpty();
        return isProved ? QString() : databaseSelfTest(folders.temporary);
    };
    checks.initUsers = [this] {
        // Remembered keys are the first secrets that come into memory.
        startWipingHeap();
        autoGuard.heal();
        users.InitUsers();
        const QStringList finished = destruction.finishInterrupted();
        return finished + users.faults();
    };
    return checks;
}

Login::Ports DesktopProgram::Graph::loginPorts() {
    return {prompt,
            clock,
            users,
            files,
            regedit,
            [this] { return keyboard.capsLock(); },
            [] { QApplication::beep(); },
            [this](const QString& folder) {
                if (!QDesktopServices::openUrl(QUrl::fromLocalFile(folder))) {
                    prompt.messageBox(QStringLiteral("无法打开文件夹：\r\n%1").arg(folder),
                                      Prompt::Icon::Exclamation);
                }
            },
            [this] { return fingerprints.isAvailable(); },
            [this](auto tell) { fingerprints.lookFor(std::move(tell)); },
            [this](QString& userName) { return protection.verifyFinger(userName); },
            [this](const std::shared_ptr<User>& user) { system.setUser(user); }};
}

SessionEnd::Ports DesktopProgram::Graph::sessionEndPorts() {
    return {prompt,
            clock,
            system,
            sealed,
            logs,
            files,
            [this] { return autoGuard.hideToTray(); },
            [this](const QString& title, const QString& text) { tray.showBalloon(text, title); },
            [this] { return parts.workspace.m_editState != EditState::Browse; },
            [this] { parts.workspace.services.monitor.ActivateMonitor(kFillEnded); },
            [this] { clipboard.clear(); },
            [this] { autoGuard.release(); },
            [this] {
                tmrRunTime.stop();
                mainWindow.keepGeometry();
            },
            [this] { tray.setVisible(false); }};
}

AutoGuardSession DesktopProgram::Graph::autoGuardSession() {
    return {prompt,
            clock,
            random,
            system,
            connection,
            logs,
            osInfo,
            gate,
            parts.workspace.services.monitor,
            clipboard,
            tray,
            sessionWatch,
            parts.pane,
            parts.size,
            mainWindow,
            folders.state + QStringLiteral("/morvane-keeper"),
            [this] { return sessionEnd.runSeconds(); },
            [this](AutoExit mode) {
                const bool isEditing = parts.workspace.m_editState != EditState::Browse;
                if (mode == AutoExit::None && system.p_isLocked() && isEditing) {
                    autoGuard.comeBack();  // whoever may not unlock may not discard the edit either
                } else {
                    endSession(CloseReason::Program, mode);
                }
            },
            [this] { return protection.keepsWaiting(); },
            [this] { protection.tellStopped(); }};
}

void DesktopProgram::Graph::connectSession() {
    windows.setBehindLogin([this] { buildMainWindow(); });
    windows.setBeforeMain([this] { startWorkspace(); });
    QObject::connect(&tmrRunTime, &QTimer::timeout, &mainWindow, [this] {
        sessionEnd.tick();
        tellRunTime();
        autoGuard.tick();
    });
    QObject::connect(&instance, &SingleInstance::raiseRequested, &mainWindow,
                     [this](const QString& path) {
                         if (windows.bringLoginToFront(path)) {
                             return;
                         }
                         if (QWidget* window = QApplication::activeModalWidget()) {
                             window->raise();
                             window->activateWindow();
                         } else if (mainWindow.isVisible() || tmrRunTime.isActive()) {
                             autoGuard.comeBack();
                         }
                     });
    QObject::connect(&sessionWatch, &SessionWatch::ending, &mainWindow, [this] {
        if (tmrRunTime.isActive()) {
            endSession(CloseReason::SessionEnds);
        } else {
            isEndingEarly = true;
            QApplication::exit(0);
        }
    });
    mainWindow.setCloseJudge([this](frmMain::CloseSource source) {
        const bool isClosing = sessionEnd.requestClose(
            source == frmMain::CloseSource::Person ? CloseReason::User : CloseReason::Program,
            AutoExit::None);
        if (isClosing) {
            QApplication::quit();
        }
        return isClosing;
    });
}

/// While the person types the key: the login window must not wait for it, nor the key.
void DesktopProgram::Graph::buildMainWindow() {
    if (std::exchange(isMainWindowBuilt, true)) {
        return;
    }
    // Drawn in four sizes, which the first windows do not wait for.
    QApplication::setWindowIcon(programIcon());
    mainWindow.attach({{parts.workspace, parts.sheets, parts.directories, parts.drag},
                       parts.pane,
                       parts.disposal,
                       parts.size});
    protection.connectCommands({[this](int number) { return gate.demandAuthority(number); },
                                [this] { endSessionSoon(); }});
    secrets.carryOut(mainWindow.actions());
    autoGuard.carryOut(mainWindow.actions());
    mainWindow.actions().carryOut(QStringLiteral("mn_about"), [this] {
        prompt.messageBox(aboutText(), Prompt::Icon::Information, Prompt::Buttons::Ok,
                          QStringLiteral("关于"));
    });
}

void DesktopProgram::Graph::startWorkspace() {
    buildMainWindow();
    mainWindow.SetCaption(system.p_userName());
    protection.showGuard();
    parts.sheets.start();
    parts.pane.SetEditState(EditState::Browse);
    parts.pane.ShowControls(EditPane::kDirectoryType);
    mainWindow.start();
}

void DesktopProgram::Graph::startSession() {
    autoGuard.start();
    tmrRunTime.start();
    tellRunTime();
    // Inside the event loop, which alone can end the session.
    QTimer::singleShot(0, &mainWindow, [this] {
        if (isEndingEarly) {
            endSession(CloseReason::SessionEnds);
        } else {
            checkAges();
        }
    });
}

void DesktopProgram::Graph::checkAges() {
    if (secrets.age.checkAll()) {
        return;
    }
    if (system.p_isLocked()) {
        // The locking has closed the forms, not the person.
        autoGuard.whenUnlocked([this] { checkAges(); });
        return;
    }
    endSession(CloseReason::Program);
}

void DesktopProgram::Graph::endSession(CloseReason reason, AutoExit autoExit) {
    // What works with the database must come to its end first, which takes the return of whoever
    // called us.
    if (protection.keepsWaiting()) {
        QTimer::singleShot(kRetry, &mainWindow,
                           [this, reason, autoExit] { endSession(reason, autoExit); });
        return;
    }
    if (!sessionEnd.requestClose(reason, autoExit)) {
        protection.tellStopped();
        return;
    }
    if (autoExit == AutoExit::ShutDown) {
        autoGuard.shutDownMachine();
    }
    QApplication::quit();
}

/// Behind the command that is running, and without a question that could keep the session open.
void DesktopProgram::Graph::endSessionSoon() {
    QTimer::singleShot(0, &mainWindow,
                       [this] { endSession(CloseReason::Program, AutoExit::Close); });
}

void DesktopProgram::Graph::tellRunTime() {
    mainWindow.statusPanels().setPanel(
        StatusPanel::RunTime, Time::ShowTime(sessionEnd.runSeconds(), Time::Style::Colons));
}

DesktopProgram::DesktopProgram() : m_graph(std::make_unique<Graph>()) {}

DesktopProgram::~DesktopProgram() = default;

int DesktopProgram::run(const QString& commandLine) {
    // The session decides when the program ends: the login form closes before the main one opens.
    QApplication::setQuitOnLastWindowClosed(false);
    Main main(m_graph->prompt, m_graph->windows, m_graph->road, m_graph->startChecks(commandLine));
    try {
        m_graph->sessionWatch.start();
        m_graph->appearance.watch();
        if (!main.run(commandLine)) {
            return 0;
        }
    } catch (const std::exception& error) {
        // Nothing is open yet: a folder that refuses the lock of the instance, say.
        m_graph->prompt.messageBox(
            QStringLiteral("程序无法启动：\r\n") + QString::fromUtf8(error.what()),
            Prompt::Icon::Critical);
        return 1;
    }
    m_graph->startSession();
    return QApplication::exec();
}

}  // namespace keeper
