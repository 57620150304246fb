// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "auto_guard_parts.h"

#include <QApplication>
#include <QThread>
#include <chrono>
#include <utility>

#include "app/system.h"
#include "crypto/secure_wipe.h"
#include "platform/clipboard.h"
#include "platform/database.h"
#include "platform/session_watch.h"
#include "platform/tray.h"
#include "ui/dlg_auto_guard.h"
#include "ui/frm_main.h"
#include "ui/widgets/modal_windows.h"
#include "workspace/edit_pane.h"
#include "workspace/form_size.h"

namespace keeper {
namespace {

/// For what waits until other code has returned.
constexpr std::chrono::milliseconds kRetry{20};

}  // namespace

AutoGuardParts::AutoGuardParts(const AutoGuardSession& session)
    : m_session(session),
      m_folder(session.stateFolder, QApplication::applicationFilePath()),
      guardian(guardianPorts()),
      timers({session.system, m_idle, guardian, session.mainWindow.statusPanels(),
              session.endSession}),
      settings({session.prompt, session.clock, session.system, session.logs, timers}),
      tray(trayPorts()) {
    connectTray();
    connectDesktop();
}

void AutoGuardParts::carryOut(MainActions& actions) {
    actions.carryOut(QStringLiteral("mn_lockManager"),
                     [this] { guardian.LockInstantly(/*bManually=*/true); });
    actions.carryOut(QStringLiteral("mn_autoGuardSettings"), [this] { showSettings(); });
}

AutoGuardian::Ports AutoGuardParts::guardianPorts() {
    return {m_session.prompt,
            m_session.clock,
            m_session.system,
            m_session.logs,
            m_folder,
            [this](bool isLocked) { return tray.SetLockState(isLocked); },
            [this] { m_session.clipboard.clear(); },
            [this](bool isConcealed) { conceal(isConcealed); },
            [this](std::function<void()> todo) { whenConcealed(std::move(todo)); },
            m_session.runSeconds,
            [this] { afterUnlocking(); },
            [this](bool bManually) { return putOffLock(bManually); }};
}

TrayMenu::Ports AutoGuardParts::trayPorts() {
    frmMain& window = m_session.mainWindow;
    const auto about = [&window] { return window.actions().action(QStringLiteral("mn_about")); };
    return {m_session.prompt,
            m_session.system,
            m_session.tray,
            m_session.gate,
            m_session.monitor,
            [&window] { return window.isVisible() && !window.isMinimized(); },
            [&window] { window.bringToFront(); },
            [&window] { window.hide(); },
            [this](bool isShown) { showLockWindow(isShown); },
            [&window] { window.showMinimized(); },
            [this] { return m_session.size.caption(); },
            [&window] { window.mn_formSize(); },
            [about] { return about()->isEnabled(); },
            [about] { about()->trigger(); },
            [this] { m_session.endSession(AutoExit::None); },
            [this] { guardian.LockInstantly(/*bManually=*/true); },
            [this] { guardian.UnlockInstantly(/*bExit=*/false); },
            [this](bool isRunning) { isRunning ? m_clickTimer.start() : m_clickTimer.stop(); }};
}

void AutoGuardParts::connectTray() {
    m_clickTimer.setSingleShot(true);
    m_clickTimer.setInterval(TrayMenu::kClickMilliseconds);
    connect(&m_clickTimer, &QTimer::timeout, this, [this] { tray.tmrClickTray(); });
    connect(&m_session.tray, &Tray::clicked, this, [this] { tray.click(); });
    connect(&m_session.tray, &Tray::doubleClicked, this, [this] { tray.doubleClick(); });
    connect(&m_session.tray, &Tray::balloonClicked, this, [this] { tray.comeBack(); });
    connect(&m_session.tray, &Tray::itemChosen, this,
            [this](const QString& key) { tray.choose(key); });
}

void AutoGuardParts::connectDesktop() {
    const auto lock = [this] { lockWithDesktop(); };
    connect(&m_screen, &ScreenLock::locked, this, lock);
    connect(&m_session.sessionWatch, &SessionWatch::lockRequested, this, lock);
    connect(&m_session.sessionWatch, &SessionWatch::goingToSleep, this, [this] {
        m_awake = m_session.sessionWatch.hold();
        lockWithDesktop();
        letSleep();
    });
}

void AutoGuardParts::start() {
    m_isRunning = true;
    heal();  // a folder on a disk that was not there when the program started
    m_screen.start();
    tray.start();
    timers.armLock();
}

void AutoGuardParts::tick() {
    timers.tick();
    tray.tick();
}

void AutoGuardParts::whenUnlocked(std::function<void()> todo) {
    m_whenUnlocked = std::move(todo);
}

void AutoGuardParts::afterUnlocking() {
    timers.armLock();
    QTimer::singleShot(0, this, m_session.unlocked);
    if (m_whenUnlocked) {
        QTimer::singleShot(0, this, std::exchange(m_whenUnlocked, nullptr));
    }
}

/// The records of the locking would be undone with a conversion's transaction.
bool AutoGuardParts::putOffLock(bool bManually) {
    if (!m_session.keepsWaiting()) {
        return false;
    }
    m_isLockPutOff = true;
    QTimer::singleShot(kRetry, this, [this, bManually] {
        m_isLockPutOff = false;
        guardian.LockInstantly(bManually);
        letSleep();
    });
    return true;
}

void AutoGuardParts::lockWithDesktop() {
    if (m_isRunning && m_session.system.settings().p_lockWithScreen()) {
        guardian.LockInstantly(/*bManually=*/false);
    }
}

void AutoGuardParts::conceal(bool isConcealed) {
    m_isConcealWanted = isConcealed;
    m_whenConcealed = nullptr;
    if (isConcealed) {
        concealWhenNothingRuns();
    } else {
        reveal();
    }
}

/// What waited for a box that was closed still runs to its end, and works with the pane's texts.
void AutoGuardParts::concealWhenNothingRuns() {
    if (!m_isConcealWanted) {
        return;
    }
    // Boxes and file dialogs are no forms of the table, and what was behind one may ask the next.
    closeModalWindows();
    if (QThread::currentThread()->loopLevel() > 1) {
        QTimer::singleShot(kRetry, this, [this] { concealWhenNothingRuns(); });
        return;
    }
    m_isConcealWanted = false;
    m_session.pane.conceal(m_session.random);
    QString key = m_session.system.p_plainIdpPwd();
    QString* const place = &key;
    m_columnKey.conceal({&place, 1}, m_session.random);
    m_session.system.p_plainIdpPwd(QString());
    m_session.connection.forgetPages();
    // What stood selected in a field.
    m_session.clipboard.clearSelection();
    letSleep();
    if (m_whenConcealed) {
        std::exchange(m_whenConcealed, nullptr)();
    }
}

void AutoGuardParts::whenConcealed(std::function<void()> todo) {
    if (m_isConcealWanted) {
        m_whenConcealed = std::move(todo);
    } else {
        // The system's sleep waits for the return of whoever locks.
        QTimer::singleShot(0, this, std::move(todo));
    }
}

void AutoGuardParts::letSleep() {
    if (!m_isLockPutOff && !m_isConcealWanted) {
        m_awake.reset();
    }
}

void AutoGuardParts::reveal() {
    if (!m_columnKey.isEmpty()) {
        QString key;
        const WipeGuard wipe(key);
        QString* const place = &key;
        m_columnKey.reveal({&place, 1});
        m_session.system.p_plainIdpPwd(key);
    }
    m_session.pane.reveal();
}

void AutoGuardParts::showLockWindow(bool isShown) {
    // Never deleted before the end: the dialog that unlocks stands over it, and runs still when a
    // session that ends takes the window away.
    if (!isShown) {
        if (m_lockWindow) {
            m_lockWindow->hide();
        }
        return;
    }
    if (!m_lockWindow) {
        m_lockWindow = std::make_unique<LockWindow>(
            m_session.system.p_userName(), [this] { tray.tryUnlock(); },
            [this] { m_session.endSession(AutoExit::None); });
    }
    m_lockWindow->showNormal();
}

void AutoGuardParts::showSettings() {
    settings.load();
    dlgAutoGuard(settings).run(m_session.system);
    settings.unload();
}

}  // namespace keeper
