// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "guard/branch_manage.h"

#include "guard/sw_protect.h"
#include "platform/clock.h"
#include "store/sys_logs.h"

namespace keeper {
namespace {

/// The vocabulary of the log has no status of its own for a lifetime: the sentence is recorded.
constexpr int kSentenceStatus = 54;

}  // namespace

void BranchManage::load() {
    m_state.daysLeft = m_ports.guard.deadCount();
    m_state.isOnOrigin = !m_ports.guard.p_isOnBranch();
    m_state.days = m_ports.guard.p_lifetimeDays();
    m_state.autoRenew = m_ports.guard.p_autoRenew();
}

void BranchManage::setDays(int days) {
    if (m_state.isOnOrigin) {
        m_state.days = qBound(0, days, SWProtect::kMaxLifetime);
    }
}

void BranchManage::setAutoRenew(bool isOn) {
    if (m_state.isOnOrigin) {
        m_state.autoRenew = isOn;
    }
}

bool BranchManage::cmdOK() {
    if (!m_state.isOnOrigin) {
        return true;
    }
    if (!m_ports.guard.ManageBranchLogin(m_state.days, m_state.autoRenew)) {
        return false;
    }
    const int days = m_ports.guard.deadCount();
    SysLog log;
    log.m_dateTime = m_ports.clock.now();
    log.m_statusNo = kSentenceStatus;
    log.m_lCount = days;
    log.m_Description = lifetimeText(days);
    m_ports.sysLogs.Add(log);
    m_ports.tellLifetime(lifetimeText(days));
    return true;
}

QString BranchManage::lifetimeText(int days) {
    return QStringLiteral("本数据库在分机上的存活期还有%1天。").arg(days);
}

}  // namespace keeper
