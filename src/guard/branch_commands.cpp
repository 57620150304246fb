// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "guard/branch_commands.h"

#include <QFileInfo>
#include <utility>

#include "guard/os_info.h"
#include "guard/sw_protect.h"
#include "platform/clock.h"
#include "platform/prompt.h"
#include "store/sys_logs.h"

namespace keeper {
namespace {

constexpr int kConfineStatus = 12;
constexpr int kDispatchStatus = 43;
constexpr int kSwitchStatus = 53;
// The size of the count of a confinement's record.
constexpr int kConfined = 1;
constexpr int kReleased = 2;

}  // namespace

BranchCommands::BranchCommands(Ports ports) : m_ports(std::move(ports)) {}

bool BranchCommands::mn_confineBranch() {
    const bool isRelease = m_ports.guard.p_isBrchConfined();
    if (isRelease) {
        if (m_ports.prompt.messageBox(
                QStringLiteral("是否解除限定？解除后本数据库可以在所有分机上登录。"),
                Prompt::Icon::Question, Prompt::Buttons::YesNo) != Prompt::Answer::Yes) {
            return false;
        }
    } else {
        const QString question = m_ports.guard.p_isOnBranch()
                                     ? QStringLiteral(
                                           "您确定要限定数据库的登录机器？限定后数据库存活期不再递"
                                           "减，但只能在此分机和原新"
                                           "建机器上登录。")
                                     : QStringLiteral(
                                           "您正在在原新建机器上限定数据库登录，限定后数据库只可在"
                                           "本计算机上登录，确定继续"
                                           "？");
        if (m_ports.prompt.messageBox(question, Prompt::Icon::Question,
                                      Prompt::Buttons::OkCancel) != Prompt::Answer::Ok) {
            return false;
        }
    }
    if (!m_ports.demandAuthority(kConfineAuthority)) {
        return false;
    }
    if (!m_ports.guard.LockOntoBrch(!isRelease)) {
        m_ports.prompt.messageBox(
            isRelease ? QStringLiteral("解除限定失败！") : QStringLiteral("限定登录失败！"),
            Prompt::Icon::Exclamation);
        return false;
    }
    m_ports.refreshDisplay();
    log(kConfineStatus, (isRelease ? kReleased : kConfined) * m_ports.osInfo.addressSign(),
        m_ports.osInfo.machineText());
    return true;
}

bool BranchCommands::mn_switchMachine() {
    const auto refuse = [this](const QString& text) {
        m_ports.prompt.messageBox(text, Prompt::Icon::Exclamation);
        return false;
    };
    if (!m_ports.guard.p_isBrchConfined()) {
        return refuse(QStringLiteral("当前没有限定在任何分机上，无法交换！"));
    }
    if (m_ports.guard.p_areOrgBrchSame()) {
        return refuse(QStringLiteral("当前已限定在主机上，无需交换！"));
    }
    if (m_ports.guard.p_isOnBranch()) {
        return refuse(QStringLiteral("当前不在主机上登录，禁止交换！"));
    }
    if (m_ports.prompt.messageBox(QStringLiteral("您确定要交换主副机器吗？交换后本机将成为分机！"),
                                  Prompt::Icon::Question,
                                  Prompt::Buttons::OkCancel) != Prompt::Answer::Ok) {
        return false;
    }
    if (!m_ports.guard.SwitchMachine()) {
        return false;
    }
    log(kSwitchStatus, m_ports.osInfo.addressSign(), m_ports.osInfo.machineText());
    m_ports.refreshDisplay();
    m_ports.prompt.messageBox(QStringLiteral("交换主副机器成功，当前在分机上登录！"),
                              Prompt::Icon::Information);
    return true;
}

bool BranchCommands::mn_dispatch() {
    if (!m_ports.demandAuthority(kDispatchAuthority)) {
        return false;
    }
    const QString extension = QStringLiteral(".kvdb");
    QString path = m_ports.prompt.saveFile(QStringLiteral("分派数据库"), m_ports.dispatchFolder(),
                                           QStringLiteral("密码数据库(*.kvdb)"));
    if (path.isEmpty()) {
        return false;
    }
    if (!path.endsWith(extension, Qt::CaseInsensitive)) {
        path += extension;
        // The file dialog asked about the name without the extension.
        if (QFileInfo::exists(path) &&
            m_ports.prompt.messageBox(QStringLiteral("%1\r\n已存在，是否替换？").arg(path),
                                      Prompt::Icon::Question,
                                      Prompt::Buttons::YesNo) != Prompt::Answer::Yes) {
            return false;
        }
    }
    if (!m_ports.sealDispatchCopy(path)) {
        return false;
    }
    log(kDispatchStatus, m_ports.guard.p_lifetimeDays(), path);
    m_ports.prompt.messageBox(QStringLiteral("分派完成！"), Prompt::Icon::Information);
    return true;
}

void BranchCommands::log(int status, int count, const QString& description) {
    SysLog entry;
    entry.m_dateTime = m_ports.clock.now();
    entry.m_statusNo = status;
    entry.m_lCount = count;
    entry.m_Description = description;
    m_ports.sysLogs.Add(entry);
}

}  // namespace keeper
