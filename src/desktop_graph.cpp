// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

// How the objects of the program are made and what each is handed.

#include "desktop_graph.h"

#include <QApplication>
#include <QDesktopServices>
#include <QFileInfo>
#include <QUrl>

#include "app/program_info.h"
#include "crypto/cipher_self_test.h"
#include "platform/database_self_test.h"
#include "platform/linux/desktop_notification.h"
#include "wiping_heap.h"

namespace keeper {

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

}  // namespace keeper
