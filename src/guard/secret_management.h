// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QDateTime>
#include <QString>
#include <array>
#include <functional>

namespace keeper {

class Clock;
class Prompt;
class SecureQuestions;
class System;

/// The rules of the form that says how long the secrets and the security questions may stand, and
/// how often a wrong secret may be tried.
class SecretManagement {
  public:
    enum class Field {
        LgnKeyModifyDays,
        IdpPwdModifyDays,
        SQUpdateDays,
        LgnKeyChances,
        IdpPwdChances,
    };
    static constexpr std::size_t kFields = 5;
    /// What becomes of a typed text.
    enum class Typed {
        Taken,
        Refused,     ///< the field is to show value() again, and the person to be told
        Incomplete,  ///< another digit may make it a value; until then value() holds
    };
    struct Range {
        int least;
        int most;
    };

    struct Ports {
        Prompt& prompt;
        const Clock& clock;
        System& system;
        SecureQuestions& questions;
        /// Asks the security questions, which keeps the date of the answers.
        std::function<bool()> answerQuestions;
    };

    explicit SecretManagement(Ports ports);

    /// 0 to 999 days, 3 to 10 chances.
    [[nodiscard]] static Range range(Field field);

    /// A new showing with what the settings hold.
    void load();
    [[nodiscard]] int value(Field field) const;
    /// The day and its name on which a renewal will be forced; empty for no days, and for the
    /// chances.
    [[nodiscard]] QString prediction(Field field) const;
    /// Every change of a field by the person.
    Typed type(Field field, const QString& text);
    /// Tells the range of the field.
    void refuse(Field field);
    /// The questions are to be answered now. True when they were.
    bool forceUpdate();
    /// True when all is stored and the form is to close. A failure is told and changes nothing.
    bool cmdOK();

  private:
    [[nodiscard]] QDateTime start(Field field) const;
    void store(const std::array<int, kFields>& values);

    Ports m_ports;
    std::array<int, kFields> m_values{};
};

}  // namespace keeper
