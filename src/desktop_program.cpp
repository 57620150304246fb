// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "desktop_program.h"

#include <QApplication>
#include <chrono>
#include <utility>

#include "app/program_info.h"
#include "desktop_graph.h"
#include "store/time_text.h"
#include "ui/theme/icons.h"

namespace keeper {
namespace {

/// For what waits until other code has returned.
constexpr std::chrono::milliseconds kRetry{20};

}  // namespace

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
