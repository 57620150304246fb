// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "secret_parts.h"

#include "app/system.h"
#include "platform/prompt.h"
#include "store/sealed_database.h"
#include "ui/dlg_authority.h"
#include "ui/dlg_manage_secret.h"
#include "ui/dlg_modify_secret.h"
#include "ui/dlg_secure_question.h"
#include "ui/main_actions.h"

namespace keeper {

SecretParts::SecretParts(const SecretPorts& ports)
    : m_ports(ports),
      m_questions(ports.connection, ports.prompt),
      m_setting(
          {ports.prompt, ports.clock, ports.system, ports.connection, ports.logs, m_questions}),
      m_answering(
          {ports.prompt, ports.clock, ports.system, ports.connection, ports.logs, m_questions}),
      m_modification({ports.prompt, ports.clock, ports.system, ports.connection, ports.sealed,
                      ports.logs, m_questions, [this] { return answerQuestions(); }}),
      m_management({ports.prompt, ports.clock, ports.system, m_questions,
                    [this] { return answerQuestions(); }}),
      m_authorities(
          {ports.prompt, ports.clock, ports.system, ports.connection, ports.sealed, ports.logs}),
      age({ports.prompt, ports.clock, ports.system.settings(), ports.panels,
           [this](SecretAge::Kind kind) { return renew(kind); },
           [this] { return !m_ports.sealed.IsIdpPwdNull(); }}) {}

void SecretParts::carryOut(MainActions& actions) {
    using KeyType = SecretModification::KeyType;
    actions.carryOut(QStringLiteral("mn_modifyLgnKey"),
                     [this] { modifySecret(KeyType::LoginKey); });
    actions.carryOut(QStringLiteral("mn_modifyIdpPwd"),
                     [this] { modifySecret(KeyType::IndependentPassword); });
    actions.carryOut(QStringLiteral("mn_manageSecret"), [this] { manageSecrets(); });
    actions.carryOut(QStringLiteral("mn_secureQuestion"), [this] { setQuestions(); });
    actions.carryOut(QStringLiteral("mn_authority"), [this] { setAuthorities(); });
}

bool SecretParts::modifySecret(SecretModification::KeyType type) {
    m_modification.load(type);
    dlgModifySecret form(m_modification, m_ports.keyboard);
    return form.run(m_ports.system);
}

bool SecretParts::renewSecret(SecretModification::KeyType type) {
    while (modifySecret(type)) {
        if (m_modification.isRenewed()) {
            return true;
        }
        m_ports.prompt.messageBox(type == SecretModification::KeyType::LoginKey
                                      ? QStringLiteral("登录密钥已失效，新密钥必须与原密钥不同！")
                                      : QStringLiteral("独立密码已失效，新密码必须与原密码不同！"),
                                  Prompt::Icon::Exclamation);
    }
    return false;
}

void SecretParts::manageSecrets() {
    m_management.load();
    dlgManageSecret form(m_management);
    form.run(m_ports.system);
}

bool SecretParts::setQuestions() {
    if (!m_setting.load()) {
        return false;
    }
    dlgSecureQuestion form(m_setting, m_ports.keyboard);
    return form.run(m_ports.system);
}

bool SecretParts::answerQuestions() {
    if (!m_answering.load()) {
        return false;
    }
    dlgSecureQuestion form(m_answering, m_ports.keyboard);
    return form.run(m_ports.system);
}

void SecretParts::setAuthorities() {
    m_authorities.load();
    dlgAuthority form(m_authorities);
    form.run(m_ports.system);
}

bool SecretParts::renew(SecretAge::Kind kind) {
    using KeyType = SecretModification::KeyType;
    switch (kind) {
        case SecretAge::Kind::LoginKey:
            return renewSecret(KeyType::LoginKey);
        case SecretAge::Kind::IndependentPassword:
            return renewSecret(KeyType::IndependentPassword);
        case SecretAge::Kind::Questions:
            // Without questions there is nothing to answer: then they are to be set, or given up.
            return m_questions.ReadDB() &&
                   (m_questions.CheckEffectiveAmount() > 0 ? answerQuestions() : setQuestions());
    }
    Q_UNREACHABLE();
}

}  // namespace keeper
