// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "guard/auto_guardian.h"

#include <algorithm>
#include <limits>

#include "app/system.h"
#include "platform/clock.h"
#include "platform/folder_lock.h"
#include "store/failure.h"
#include "store/sys_logs.h"

namespace keeper {
namespace {

// Statuses of the system log.
constexpr int kLockedManually = 9;
constexpr int kLockedAutomatically = 10;
constexpr int kUnlocked = 11;

}  // namespace

void AutoGuardian::LockInstantly(bool bManually) {
    guardedRun(m_ports.prompt, QStringLiteral("cAutoGuardian.LockInstantly"), [&] {
        // The desktop may lock its screen while the session is being sealed.
        if (m_isLocked || m_ports.system.p_isLogouted() ||
            (m_ports.postpones && m_ports.postpones(bManually)) || !m_ports.SetLockState(true)) {
            return;
        }
        m_isLocked = true;
        m_ports.system.p_isLocked(true);
        log(bManually ? kLockedManually : kLockedAutomatically);
        if (m_ports.system.settings().p_clearClpbrd()) {
            m_ports.clearClipboard();
        }
        m_ports.system.CloseForms();
        m_ports.concealSecrets(true);
        if (!m_ports.folder.lock(m_ports.system.p_privateFolder())) {
            // A box that waits for its answer would keep the secrets where they are.
            m_ports.whenConcealed([this] { warnOfFreeFolder(); });
        }
    });
}

void AutoGuardian::UnlockInstantly(bool bExit) {
    guardedRun(m_ports.prompt, QStringLiteral("cAutoGuardian.UnlockInstantly"), [&] {
        if (!m_isLocked || !m_ports.SetLockState(false)) {
            return;
        }
        log(kUnlocked);
        m_ports.folder.unlock();
        m_isLocked = false;
        m_ports.system.p_isLocked(false);
        if (!bExit) {
            m_ports.concealSecrets(false);
            m_ports.unlocked();
        }
    });
}

void AutoGuardian::warnOfFreeFolder() {
    if (m_isLocked) {
        m_ports.prompt.messageBox(QStringLiteral("私人文件夹未能正确锁定！"),
                                  Prompt::Icon::Exclamation);
    }
}

void AutoGuardian::log(int status) {
    SysLog entry;
    entry.m_dateTime = m_ports.clock.now();
    entry.m_statusNo = status;
    entry.m_lCount = static_cast<std::int32_t>(
        std::min<qint64>(m_ports.runSeconds(), std::numeric_limits<std::int32_t>::max()));
    m_ports.logs.Add(entry);
}

}  // namespace keeper
