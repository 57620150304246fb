// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "guard/authorities.h"
#include "guard/question_forms.h"
#include "guard/secret_age.h"
#include "guard/secret_management.h"
#include "guard/secret_modification.h"
#include "guard/secure_questions.h"

namespace keeper {

class KeyboardState;
class MainActions;

/// What the care of the secrets takes from the session; all outlive the parts.
struct SecretPorts {
    Prompt& prompt;
    const Clock& clock;
    System& system;
    Database& connection;
    SealedDatabase& sealed;
    SysLogs& logs;
    const KeyboardState& keyboard;
    StatusPanels& panels;
};

/// The object graph behind the forms that change, renew and govern the user's secrets.
class SecretParts {
  public:
    explicit SecretParts(const SecretPorts& ports);

    /// Gives the commands of the main window their work.
    void carryOut(MainActions& actions);
    /// True when all security questions were answered.
    bool answerQuestions();

  private:
    /// True when the secret was changed, or its hint alone.
    bool modifySecret(SecretModification::KeyType type);
    void manageSecrets();
    /// True when the questions were stored.
    bool setQuestions();
    void setAuthorities();
    bool renew(SecretAge::Kind kind);
    /// True when the secret itself was changed.
    bool renewSecret(SecretModification::KeyType type);

    SecretPorts m_ports;
    SecureQuestions m_questions;
    QuestionSetting m_setting;
    QuestionAnswering m_answering;
    SecretModification m_modification;
    SecretManagement m_management;
    Authorities m_authorities;

  public:
    SecretAge age;
};

}  // namespace keeper
