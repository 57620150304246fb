// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "secret_parts.h"

#include "app/system.h"
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
      m_authorities({ports.prompt, ports.clock, ports.system, ports.sealed, ports.logs}),
      age({ports.prompt, ports.clock, ports.system.settings(), ports.panels,
           [this](SecretAge::Kind kind) { return renew(kind); }}) {}

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
    form.run(m_ports.system);
    return m_modification.isRenewed();
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
            return modifySecret(KeyType::LoginKey);
        case SecretAge::Kind::IndependentPassword:
            return modifySecret(KeyType::IndependentPassword);
        case SecretAge::Kind::Questions:
            // Without questions there is nothing to answer: then they are to be set, or given up.
            return m_questions.ReadDB() &&
                   (m_questions.CheckEffectiveAmount() > 0 ? answerQuestions() : setQuestions());
    }
    Q_UNREACHABLE();
}

}  // namespace keeper
