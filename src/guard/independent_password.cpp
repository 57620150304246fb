// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "guard/independent_password.h"

#include <algorithm>

#include "app/system.h"
#include "platform/clock.h"
#include "platform/prompt.h"
#include "store/failure.h"
#include "store/sealed_database.h"
#include "store/sys_logs.h"

namespace keeper {
namespace {

constexpr int kChancesUsedUp = 7;

}  // namespace

IndependentPassword::Outcome IndependentPassword::IdentifySecret(const QString& entry,
                                                                 const QString& where) {
    Settings& settings = m_ports.system.settings();
    return guarded(m_ports.prompt, where, Outcome::Unknown, [&] {
        // A session that begins without chances has this one, or a right password could never
        // restore them.
        settings.KeepIdpPwdChances(std::max<int>(0, settings.p_idpPwdChances1() - 1));
        if (m_ports.database.CheckIdpPwd(entry)) {
            settings.KeepIdpPwdChances(settings.p_idpPwdChances0());
            return Outcome::Right;
        }
        if (settings.p_idpPwdChances1() > 0) {
            m_ports.prompt.messageBox(
                QStringLiteral("密码错误！你还有%1次尝试机会。").arg(settings.p_idpPwdChances1()),
                Prompt::Icon::Exclamation);
            return Outcome::Wrong;
        }
        recordUsedUp();
        m_ports.prompt.messageBox(QStringLiteral("密码错误！独立密码的尝试机会已用完！"),
                                  Prompt::Icon::Critical);
        return Outcome::UsedUp;
    });
}

bool IndependentPassword::IsIdpPwdNull() const {
    return m_ports.database.IsIdpPwdNull();
}

void IndependentPassword::recordUsedUp() {
    SysLog log;
    log.m_dateTime = m_ports.clock.now();
    log.m_statusNo = kChancesUsedUp;
    log.m_lCount = m_ports.system.settings().p_idpPwdChances0();
    m_ports.logs.Add(log);
}

}  // namespace keeper
