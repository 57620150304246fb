// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

// What a login tells and what it leaves in the log and in the record of the user.

#include "app/settings.h"
#include "app/system.h"
#include "app/users.h"
#include "guard/os_info.h"
#include "guard/session_connect.h"
#include "platform/clock.h"
#include "platform/prompt.h"
#include "store/sealed_database.h"
#include "store/sys_logs.h"
#include "store/time_text.h"

namespace keeper {
namespace {

// Statuses of the system log.
constexpr int kLoggedIn = 3;
constexpr int kFailedAttempts = 4;
constexpr int kBanTriggered = 5;
constexpr int kLoggedInAfterRecovery = 6;

}  // namespace

void SessionConnect::ReportAfterLogin(bool resumed) {
    User& user = m_ports.system.user();
    bool reportsLastLogin = m_ports.system.settings().p_loginReport();
    // The sign of a count tells the kind of the address; an unknown kind must not lose the count.
    const int sign = m_ports.machine.addressSign() < 0 ? -1 : 1;
    if (user.p_attackTime().isValid()) {
        report(writeLog(kBanTriggered, sign * user.p_lgnKeyChances0(), user.p_attackTime()));
        reportsLastLogin = false;
    }
    if (user.p_usedTimes() != user.p_lgnKeyChances0() && user.p_usedTimes() >= 1) {
        report(writeLog(kFailedAttempts, sign * user.p_usedTimes(), m_ports.clock.now()));
        reportsLastLogin = false;
    }
    if (resumed) {
        report(QStringLiteral("您的密码数据库曾于 %1 登录后异常退出，现管理器已为您恢复。")
                   .arg(Time::ShowMoment(user.p_activeTime())));
    } else if (reportsLastLogin) {
        QString text;
        const bool isKnown = m_ports.logs.GetLastTime(text);
        m_ports.prompt.messageBox(text,
                                  isKnown ? Prompt::Icon::Information : Prompt::Icon::Exclamation);
    }
}

void SessionConnect::report(const QString& text) {
    m_ports.prompt.messageBox(text, Prompt::Icon::Exclamation);
}

void SessionConnect::RecordLogin(bool resumed) {
    writeLog(resumed ? kLoggedInAfterRecovery : kLoggedIn, m_ports.machine.addressSign(),
             m_ports.clock.now());
    const bool isListed = m_ports.users.AddUserAsDefault(m_ports.system.p_userName());
    m_ports.system.RefreshMyUser();
    m_ports.system.user().p_sealedMark(m_ports.database.p_sealedMark());
    if (!m_ports.system.WriteUser() || !isListed) {
        // After a crash nothing would lead to the working copy and to what is entered from now on.
        report(QStringLiteral("用户记录无法写入。如果本次会话异常退出，其间的改动不能自动恢复；"
                              "工作副本为：\r\n") +
               m_ports.system.p_tmpFile());
    }
    m_ports.database.KeepWorkingCopy();
}

QString SessionConnect::writeLog(int statusNo, int count, const QDateTime& time) {
    SysLog log;
    log.m_dateTime = time;
    log.m_statusNo = statusNo;
    log.m_lCount = count;
    log.m_Description = m_ports.machine.machineText();
    m_ports.logs.Add(log);
    return log.p_Status();
}

}  // namespace keeper
