// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "guard/secret_management.h"

#include <algorithm>
#include <utility>

#include "app/system.h"
#include "guard/secure_questions.h"
#include "platform/clock.h"
#include "platform/prompt.h"
#include "store/failure.h"
#include "store/time_text.h"

namespace keeper {
namespace {

constexpr std::size_t indexOf(SecretManagement::Field field) {
    return static_cast<std::size_t>(field);
}

bool isChances(SecretManagement::Field field) {
    return field == SecretManagement::Field::LgnKeyChances ||
           field == SecretManagement::Field::IdpPwdChances;
}

QString handlerOf(SecretManagement::Field field) {
    switch (field) {
        case SecretManagement::Field::LgnKeyModifyDays:
            return QStringLiteral("txtLgnKeyModifyDays_Change");
        case SecretManagement::Field::IdpPwdModifyDays:
            return QStringLiteral("txtIdpPwdModifyDays_Change");
        case SecretManagement::Field::SQUpdateDays:
            return QStringLiteral("txtSQUpdateDays_Change");
        case SecretManagement::Field::LgnKeyChances:
            return QStringLiteral("txtLgnKeyChances0_Change");
        case SecretManagement::Field::IdpPwdChances:
            return QStringLiteral("txtIdpPwdChances0_Change");
    }
    Q_UNREACHABLE();
}

/// Whether more digits behind `number` could reach the range.
bool canGrowInto(int number, const SecretManagement::Range& range) {
    return number > 0 && number < range.least && number * 10 <= range.most;
}

}  // namespace

SecretManagement::SecretManagement(Ports ports) : m_ports(std::move(ports)) {}

SecretManagement::Range SecretManagement::range(Field field) {
    return isChances(field) ? Range{3, 10} : Range{0, 999};
}

void SecretManagement::load() {
    guardedRun(m_ports.prompt, QStringLiteral("Form_Load"), [this] {
        const Settings& settings = m_ports.system.settings();
        m_values = {settings.p_lgnKeyModifyDays(), settings.p_idpPwdModifyDays(),
                    settings.p_sqUpdateDays(), settings.p_lgnKeyChances0(),
                    settings.p_idpPwdChances0()};
        for (std::size_t i = 0; i < kFields; ++i) {
            const Range allowed = range(static_cast<Field>(i));
            m_values.at(i) = std::clamp(m_values.at(i), allowed.least, allowed.most);
        }
    });
}

int SecretManagement::value(Field field) const {
    return m_values.at(indexOf(field));
}

QDateTime SecretManagement::start(Field field) const {
    const Settings& settings = m_ports.system.settings();
    switch (field) {
        case Field::LgnKeyModifyDays:
            return settings.p_lgnKeyModifyStart();
        case Field::IdpPwdModifyDays:
            return settings.p_idpPwdModifyStart();
        case Field::SQUpdateDays:
            return settings.p_sqUpdateStart();
        case Field::LgnKeyChances:
        case Field::IdpPwdChances:
            break;
    }
    return {};
}

QString SecretManagement::prediction(Field field) const {
    const QDate from = start(field).date();
    if (!from.isValid() || value(field) < 1) {
        return {};
    }
    const QDate day = std::max(from.addDays(value(field)), m_ports.clock.today());
    return day.toString(QStringLiteral("yyyy年MM月dd日，")) + Time::GetWeekDay(day);
}

SecretManagement::Typed SecretManagement::type(Field field, const QString& text) {
    return guarded(m_ports.prompt, handlerOf(field), Typed::Refused, [&] {
        bool isNumber = false;
        const int number = text.trimmed().toInt(&isNumber);
        const Range allowed = range(field);
        if (text.isEmpty() || (isNumber && canGrowInto(number, allowed))) {
            return Typed::Incomplete;
        }
        if (!isNumber || number < allowed.least || number > allowed.most) {
            return Typed::Refused;
        }
        m_values.at(indexOf(field)) = number;
        return Typed::Taken;
    });
}

void SecretManagement::refuse(Field field) {
    const Range allowed = range(field);
    const QString text = isChances(field) ? QStringLiteral("尝试次数的取值范围在%1~%2之间！")
                                          : QStringLiteral("天数的取值范围在%1~%2之间！");
    m_ports.prompt.messageBox(text.arg(allowed.least).arg(allowed.most), Prompt::Icon::Exclamation);
}

bool SecretManagement::forceUpdate() {
    if (!m_ports.questions.ReadDB()) {
        return false;
    }
    if (m_ports.questions.CheckEffectiveAmount() == 0) {
        m_ports.prompt.messageBox(QStringLiteral("当前未设有任何安全问题，不能执行强制更新！"),
                                  Prompt::Icon::Exclamation);
        return false;
    }
    return m_ports.answerQuestions();
}

bool SecretManagement::cmdOK() {
    const Settings& settings = m_ports.system.settings();
    const std::array<int, kFields> before{settings.p_lgnKeyModifyDays(),
                                          settings.p_idpPwdModifyDays(), settings.p_sqUpdateDays(),
                                          settings.p_lgnKeyChances0(), settings.p_idpPwdChances0()};
    const std::int16_t lgnKeyLeft = settings.p_lgnKeyChances1();
    const std::int16_t idpPwdLeft = settings.p_idpPwdChances1();
    store(m_values);
    if (m_ports.system.WriteDB(/*isNew=*/false)) {
        // The login form counts by the user's record, also when this session ends in a crash.
        m_ports.system.user().p_lgnKeyChances0(m_ports.system.settings().p_lgnKeyChances0());
        m_ports.system.WriteUser();
        return true;
    }
    store(before);
    m_ports.system.settings().p_lgnKeyChances1(lgnKeyLeft);
    m_ports.system.settings().p_idpPwdChances1(idpPwdLeft);
    return false;
}

void SecretManagement::store(const std::array<int, kFields>& values) {
    Settings& settings = m_ports.system.settings();
    settings.p_lgnKeyModifyDays(static_cast<std::int16_t>(values[0]));
    settings.p_idpPwdModifyDays(static_cast<std::int16_t>(values[1]));
    settings.p_sqUpdateDays(static_cast<std::int16_t>(values[2]));
    settings.p_lgnKeyChances0(static_cast<std::uint8_t>(values[3]));
    settings.p_lgnKeyChances1(static_cast<std::int16_t>(values[3]));
    settings.p_idpPwdChances0(static_cast<std::uint8_t>(values[4]));
    settings.p_idpPwdChances1(static_cast<std::int16_t>(values[4]));
}

}  // namespace keeper
