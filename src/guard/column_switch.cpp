// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "guard/column_switch.h"

#include <utility>

#include "app/system.h"
#include "guard/independent_password.h"
#include "platform/clock.h"
#include "platform/database.h"
#include "platform/prompt.h"
#include "store/failure.h"
#include "store/sys_logs.h"

namespace keeper {
namespace {

constexpr int kColumnStatus = 20;
// The count of the record of that status.
constexpr int kSwitchedOn = -1;
constexpr int kSwitchedOff = 1;

}  // namespace

ColumnSwitch::ColumnSwitch(const Ports& ports) : m_ports(ports) {
    m_ports.cryption.DisplayProgress = [this](int percent) {
        m_columnCcryption_DisplayProgress(percent);
    };
}

ColumnSwitch::~ColumnSwitch() {
    m_ports.cryption.DisplayProgress = nullptr;
}

QString ColumnSwitch::illustration() {
    return QStringLiteral(
        "列级加密是指用独立密码对数据库中的号码和密码相关字段进行加密。\r\n"
        "开启后，每次登录都会要求先验证独立密码，验证失败则无法继续访问数据库。\r\n"
        "注意：修改独立密码时系统会要求先关闭列级加密。");
}

void ColumnSwitch::load() {
    m_isClosed = false;
    m_isUsedUp = false;
    m_closesAtEnd = false;
    m_state = State();
    showSwitch();
}

void ColumnSwitch::m_columnCcryption_DisplayProgress(int percent) {
    if (std::exchange(m_state.percent, percent) != percent) {
        notify();
    }
}

void ColumnSwitch::showSwitch() {
    m_state.isOn = m_ports.system.settings().p_idpPwdSwitch();
    m_state.caption =
        m_state.isOn ? QStringLiteral("列级加密已开启") : QStringLiteral("列级加密已关闭");
    notify();
}

void ColumnSwitch::chkCryptionStatus(const QString& entry) {
    if (m_isClosed || m_state.isRunning) {
        return;
    }
    const bool turnsOn = !m_ports.system.settings().p_idpPwdSwitch();
    const bool isValid = checkValid(entry, turnsOn);
    // The form may have been closed while a question stood on the screen.
    if (!isValid || m_isClosed) {
        returnToRest();
        return;
    }
    m_state.isOn = turnsOn;
    m_state.caption =
        turnsOn ? QStringLiteral("正在开启列级加密……") : QStringLiteral("正在关闭列级加密……");
    m_state.isRunning = true;
    m_state.percent = 0;
    notify();
    m_ports.system.p_plainIdpPwd(entry);
    const ColumnCryption::Outcome outcome = convert(turnsOn);
    if (!m_ports.system.settings().p_idpPwdSwitch()) {
        m_ports.system.p_plainIdpPwd(QString());
    }
    m_state.isRunning = m_state.isStopping = false;
    m_isClosed = m_closesAtEnd;
    returnToRest();
    if (!m_isClosed) {
        tell(outcome, turnsOn);
    } else {
        m_hasUntoldStop = outcome == ColumnCryption::Outcome::Stopped;
    }
}

void ColumnSwitch::returnToRest() {
    showSwitch();
    if (!m_isClosed && emptyEntry) {
        emptyEntry();
    }
}

void ColumnSwitch::tell(ColumnCryption::Outcome outcome, bool turnsOn) {
    switch (outcome) {
        case ColumnCryption::Outcome::Done:
            m_ports.prompt.messageBox(
                turnsOn ? QStringLiteral("列级加密已完成！") : QStringLiteral("列级解密已完成！"),
                Prompt::Icon::Information);
            break;
        case ColumnCryption::Outcome::Stopped:
            m_ports.prompt.messageBox(QStringLiteral("已停止，数据库未作任何改动。"),
                                      Prompt::Icon::Information);
            break;
        case ColumnCryption::Outcome::Failed:
            break;
    }
}

bool ColumnSwitch::checkValid(const QString& entry, bool turnsOn) {
    const auto refuse = [this](const QString& text) {
        m_ports.prompt.messageBox(text, Prompt::Icon::Exclamation);
        return false;
    };
    if (m_ports.secret.IsIdpPwdNull()) {
        return refuse(QStringLiteral("已设置的独立密码为空，列级加密不可用！"));
    }
    if (entry.isEmpty()) {
        return refuse(QStringLiteral("您忘记输入密码了！"));
    }
    if (!IdentifySecret(entry)) {
        return false;
    }
    return m_ports.prompt.messageBox(turnsOn ? QStringLiteral("即将开启列级加密，确定继续？")
                                             : QStringLiteral("即将关闭列级加密，确定继续？"),
                                     Prompt::Icon::Question,
                                     Prompt::Buttons::OkCancel) == Prompt::Answer::Ok;
}

bool ColumnSwitch::IdentifySecret(const QString& entry) {
    using Outcome = IndependentPassword::Outcome;
    const Outcome outcome =
        m_ports.secret.IdentifySecret(entry, QStringLiteral("dlgColumnCryption.IdentifySecret"));
    if (outcome == Outcome::UsedUp) {
        m_isUsedUp = true;
        m_isClosed = true;
    }
    return outcome == Outcome::Right;
}

ColumnCryption::Outcome ColumnSwitch::convert(bool turnsOn) {
    Settings& settings = m_ports.system.settings();
    using Outcome = ColumnCryption::Outcome;
    const Outcome outcome = guarded(m_ports.prompt, QStringLiteral("ColumnCryption.Handle"),
                                    Outcome::Failed, [&] { return convertInTransaction(turnsOn); });
    if (outcome != Outcome::Done) {
        settings.p_idpPwdSwitch(!turnsOn);
    }
    return outcome;
}

ColumnCryption::Outcome ColumnSwitch::convertInTransaction(bool turnsOn) {
    using Outcome = ColumnCryption::Outcome;
    Transaction transaction(m_ports.database);
    const Outcome outcome = m_ports.cryption.Handle(turnsOn);
    if (outcome != Outcome::Done) {
        return outcome;
    }
    m_ports.system.settings().p_idpPwdSwitch(turnsOn);
    if (!m_ports.system.WriteDB(false) || !record(turnsOn)) {
        return Outcome::Failed;
    }
    transaction.commit();
    return Outcome::Done;
}

bool ColumnSwitch::record(bool turnsOn) {
    SysLog log;
    log.m_dateTime = m_ports.clock.now();
    log.m_statusNo = kColumnStatus;
    log.m_lCount = turnsOn ? kSwitchedOn : kSwitchedOff;
    return m_ports.logs.Add(log);
}

void ColumnSwitch::cmdCancel() {
    if (m_state.isRunning) {
        m_state.isStopping = true;
        m_ports.cryption.Stop();
    } else {
        m_isClosed = true;
    }
    notify();
}

void ColumnSwitch::close() {
    m_closesAtEnd = true;
    cmdCancel();
}

void ColumnSwitch::notify() {
    if (changed) {
        changed();
    }
}

}  // namespace keeper
