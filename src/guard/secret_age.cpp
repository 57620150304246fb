// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "guard/secret_age.h"

#include "app/settings.h"
#include "platform/clock.h"
#include "platform/prompt.h"
#include "platform/status_panels.h"
#include "store/time_text.h"

namespace keeper {
namespace {

QString nameOf(SecretAge::Kind kind) {
    switch (kind) {
        case SecretAge::Kind::LoginKey:
            return QStringLiteral("登录密钥");
        case SecretAge::Kind::IndependentPassword:
            return QStringLiteral("独立密码");
        case SecretAge::Kind::Questions:
            return QStringLiteral("安全问题");
    }
    Q_UNREACHABLE();
}

}  // namespace

bool SecretAge::checkAll() {
    const Settings& settings = m_ports.settings;
    return CheckSecretAge(Kind::LoginKey, settings.p_lgnKeyModifyStart(),
                          settings.p_lgnKeyModifyDays()) &&
           (!m_ports.hasIndependentPassword() ||
            CheckSecretAge(Kind::IndependentPassword, settings.p_idpPwdModifyStart(),
                           settings.p_idpPwdModifyDays())) &&
           CheckSecretAge(Kind::Questions, settings.p_sqUpdateStart(), settings.p_sqUpdateDays());
}

bool SecretAge::CheckSecretAge(Kind kind, const QDateTime& start, int days) {
    if (days == 0 || !start.isValid()) {
        return true;
    }
    const qint64 used = start.date().daysTo(m_ports.clock.today());
    const qint64 over = used - days;
    const QDate limit = start.date().addDays(days + kGraceDays);
    const QString date =
        limit.toString(QStringLiteral("yyyy/M/d")) + QLatin1Char(' ') + Time::GetWeekDay(limit);
    const QString name = nameOf(kind);
    if (over < 0) {
        m_ports.panels.setPanel(StatusPanel::Message,
                                QStringLiteral("%1将于 %2 失效").arg(name, date));
        return true;
    }
    if (over >= kGraceDays) {
        return forceRenewal(kind, name, used, date);
    }
    m_ports.prompt.messageBox(QStringLiteral("您的%1已经使用了%2天，将于 %3 失效，请尽快更新！")
                                  .arg(name)
                                  .arg(used)
                                  .arg(date),
                              Prompt::Icon::Information, Prompt::Buttons::Ok,
                              QStringLiteral("提醒"));
    return true;
}

bool SecretAge::forceRenewal(Kind kind, const QString& name, qint64 used, const QString& date) {
    // With enciphered columns the password cannot be changed: to insist would lock its user out for
    // good.
    const bool isForbidden = kind == Kind::IndependentPassword && m_ports.settings.p_idpPwdSwitch();
    const QString text =
        isForbidden
            ? QStringLiteral("您的%1已经使用了%2天，已于 %3 失效，请先关闭列级加密，再修改它！")
            : QStringLiteral("您的%1已经使用了%2天，已于 %3 失效，必须更新才能继续访问本数据库！");
    m_ports.prompt.messageBox(text.arg(name).arg(used).arg(date), Prompt::Icon::Exclamation);
    return isForbidden || m_ports.renew(kind);
}

}  // namespace keeper
