// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "protection_parts.h"

#include <QScopedValueRollback>
#include <utility>

#include "app/program_info.h"
#include "app/system.h"
#include "guard/sw_protect.h"
#include "platform/user_folders.h"
#include "ui/dlg_authentication.h"
#include "ui/dlg_branch_manage.h"
#include "ui/dlg_column_cryption.h"
#include "ui/frm_main.h"
#include "ui/widgets/modal_windows.h"

namespace keeper {
namespace {

constexpr int kBranchAuthority = 11;

}  // namespace

ProtectionParts::ProtectionParts(const ProtectionPorts& ports)
    : m_ports(ports),
      secret({ports.prompt, ports.clock, ports.system, ports.sealed, ports.logs}),
      authentication({ports.prompt, ports.system, secret, ports.fingerprints}),
      columnCryption(ports.connection, ports.prompt, ports.eventLoop, ports.columnCryptor,
                     ports.columnKey),
      columnSwitch({ports.prompt, ports.clock, ports.system, ports.connection, secret, ports.logs,
                    columnCryption}),
      dispatcher({{ports.connection, ports.clock, ports.random, ports.prompt, ports.osInfo,
                   ports.upgrades},
                  ports.system,
                  ports.fileCipher,
                  ports.connecting},
                 ports.folders.state + QStringLiteral("/morvane-keeper"), programVersion()),
      branchCommands({ports.prompt, ports.clock, ports.osInfo, ports.guard, ports.logs,
                      [this](int number) { return m_session.demandAuthority(number); },
                      [this](const QString& path) { return dispatch(path); },
                      [this] { showGuard(); }, [this] { return m_ports.folders.documents; }}),
      branchManage({ports.clock, ports.guard, ports.logs,
                    [this](const QString& message) { tellLifetime(message); }}) {}

Authentication::Result ProtectionParts::authenticate(Authentication::SecretType type) {
    // The tray's commands come in under a modal form. A second question would take the first one's
    // verification away, and what it counts would be undone with a conversion that is stopped.
    if (m_openAuthentication != nullptr || columnSwitch.isRunning()) {
        if (m_openAuthentication != nullptr) {
            m_openAuthentication->activateForm();
        }
        return Authentication::Result::NotVerified;
    }
    authentication.load(type);
    showAuthentication();
    return authentication.result();
}

bool ProtectionParts::unlockColumns() {
    return authenticate(Authentication::SecretType::KeepPassword) ==
           Authentication::Result::Verified;
}

bool ProtectionParts::verifyFinger(QString& userName) {
    authentication.loadFinger(userName);
    showAuthentication();
    userName = authentication.state().userName;
    return authentication.result() == Authentication::Result::Verified;
}

void ProtectionParts::connectCommands(Session session) {
    m_session = std::move(session);
    MainActions& actions = m_ports.window.actions();
    actions.carryOut(QStringLiteral("mn_columnCryption"), [this] { mn_columnCryption(); });
    actions.carryOut(QStringLiteral("mn_confineBranch"),
                     [this] { branchCommands.mn_confineBranch(); });
    actions.carryOut(QStringLiteral("mn_switchMachine"),
                     [this] { branchCommands.mn_switchMachine(); });
    actions.carryOut(QStringLiteral("mn_branchManage"), [this] { mn_branchManage(); });
    actions.carryOut(QStringLiteral("mn_dispatch"), [this] { branchCommands.mn_dispatch(); });
}

void ProtectionParts::showGuard() {
    const SWProtect& guard = m_ports.guard;
    const bool isConfined = guard.p_isBrchConfined();
    m_ports.window.statusPanels().setPanel(
        StatusPanel::DeadCount, isConfined
                                    ? QStringLiteral("已限定登录机器")
                                    : QStringLiteral("分机存活期：%1天").arg(guard.deadCount()));
    m_ports.window.actions().setCaption(
        QStringLiteral("mn_confineBranch"),
        isConfined ? QStringLiteral("解除本机限定(&B)") : QStringLiteral("限定本机登录(&B)"));
}

void ProtectionParts::showAuthentication() {
    dlgAuthentication form(authentication, m_ports.keyboard);
    const QScopedValueRollback<dlgAuthentication*> open(m_openAuthentication, &form);
    form.run(m_ports.system);
}

void ProtectionParts::mn_columnCryption() {
    columnSwitch.load();
    {
        dlgColumnCryption form(columnSwitch, m_ports.keyboard);
        form.run(m_ports.system);
    }
    if (columnSwitch.isUsedUp()) {
        m_session.end();
    }
}

bool ProtectionParts::dispatch(const QString& path) {
    if (m_isDispatching) {
        return false;
    }
    const QScopedValueRollback<bool> busy(m_isDispatching, true);
    return dispatcher.Dispatch(path);
}

bool ProtectionParts::keepsWaiting() {
    const bool isConverting = columnSwitch.isRunning();
    if (isConverting) {
        columnSwitch.close();
    }
    if (isConverting || m_isDispatching) {
        // The work stands still under a box, whoever has opened that.
        closeModalWindows();
    }
    return isConverting || m_isDispatching;
}

void ProtectionParts::tellStopped() {
    if (columnSwitch.takeUntoldStop()) {
        m_ports.prompt.messageBox(
            QStringLiteral("列级加密的转换因锁定或退出而中断。\r\n已停止，数据库未作任何改动。"),
            Prompt::Icon::Exclamation);
    }
}

void ProtectionParts::mn_branchManage() {
    if (!m_session.demandAuthority(kBranchAuthority)) {
        return;
    }
    branchManage.load();
    dlgBranchManage form(branchManage);
    form.run(m_ports.system);
}

void ProtectionParts::tellLifetime(const QString& message) {
    showGuard();
    m_ports.window.statusPanels().setPanel(StatusPanel::Message, message);
}

}  // namespace keeper
