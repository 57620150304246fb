// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <functional>

namespace keeper {

class Clock;
class Database;
class Prompt;
class SealedDatabase;
class SecureQuestions;
class SysLogs;
class System;

/// The rules of the form that changes one of the user's two secrets, or only its hint.
class SecretModification {
  public:
    enum class KeyType { LoginKey = 1, IndependentPassword = 2 };
    enum class Field { Original, New1, New2, SecTip };

    /// What stands in the boxes. They are the form's: it wipes them.
    struct Fields {
        QString txtOriginal;
        QString txtNew1;
        QString txtNew2;
        QString txtSecTip;
    };
    /// What has become of an OK.
    struct Verdict {
        bool isDone = false;
        /// Unless it is done: where the focus belongs, and which boxes are to be emptied.
        Field focus = Field::Original;
        bool emptiesOriginal = false;
        bool emptiesNew = false;
    };

    struct Ports {
        Prompt& prompt;
        const Clock& clock;
        System& system;
        Database& connection;
        SealedDatabase& database;
        SysLogs& logs;
        SecureQuestions& questions;
        /// Asks the security questions; true when all were answered.
        std::function<bool()> answerQuestions;
    };

    explicit SecretModification(Ports ports);

    /// A new showing.
    void load(KeyType type);

    [[nodiscard]] KeyType p_KeyType() const { return m_type; }
    [[nodiscard]] QString title() const;
    [[nodiscard]] QString lblPwdLength() const;
    /// The hint that stands.
    [[nodiscard]] QString tip() const;
    /// In plain view the new secret is typed once.
    [[nodiscard]] bool isPlain() const { return m_isPlain; }
    [[nodiscard]] QString showCaption() const;
    void cmdShowExplicitly() { m_isPlain = !m_isPlain; }
    /// The security questions stand in for the old password, which is not asked for.
    [[nodiscard]] bool isReset() const { return m_isReset; }
    /// The secret itself was changed in this showing.
    [[nodiscard]] bool isRenewed() const { return m_isRenewed; }

    /// True when the questions were answered: all boxes but the hint's are to be emptied.
    bool cmdForget();
    /// The rules that need no look at the old secret. A breach is told.
    [[nodiscard]] bool CheckValid(const Fields& fields, Verdict& verdict);
    Verdict cmdOK(const Fields& fields);

  private:
    [[nodiscard]] bool checkLoginKey(const Fields& fields, Verdict& verdict);
    [[nodiscard]] bool checkIndependentPassword(const Fields& fields, Verdict& verdict);
    [[nodiscard]] bool keepsSecret(const Fields& fields) const;
    [[nodiscard]] bool checkOriginal(const QString& original, Verdict& verdict);
    bool modifyTip(const QString& tip);
    bool modifyLoginKey(const Fields& fields);
    bool modifyIndependentPassword(const Fields& fields);
    void setTip(const QString& tip);
    /// The settings and what is logged with them, or neither; the settings in memory are put back
    /// by the caller.
    bool write(int count, const QString& description);
    void warn(const QString& text);

    Ports m_ports;
    KeyType m_type = KeyType::LoginKey;
    bool m_isPlain = false;
    bool m_isReset = false;
    bool m_isRenewed = false;
};

}  // namespace keeper
