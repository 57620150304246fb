// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <cstdint>
#include <exception>

#include "platform/prompt.h"

namespace keeper {

/// A numbered failure raised by the program's own rules.
class KeeperError : public std::exception {
  public:
    KeeperError(std::int32_t number, const QString& source, const QString& description)
        : m_number(number),
          m_source(source),
          m_description(description),
          m_what(description.toUtf8()) {}
    [[nodiscard]] const char* what() const noexcept override { return m_what.constData(); }
    [[nodiscard]] std::int32_t number() const { return m_number; }
    [[nodiscard]] const QString& source() const { return m_source; }
    [[nodiscard]] const QString& description() const { return m_description; }

  private:
    std::int32_t m_number;
    QString m_source;
    QString m_description;
    QByteArray m_what;
};

/// Number and description of whatever was thrown, in the form that people are shown.
struct Failure {
    std::int64_t number = 0;
    QString description;
};

/// REQUIRES: called inside a catch block. Rethrows nothing.
[[nodiscard]] Failure currentFailure();

/// "[number]where:" CR LF description, the system's one form of a failure message.
/// `where` is class and operation, such as "Entries.Add".
[[nodiscard]] QString failureText(const Failure& failure, const QString& where);

/// Runs `operation`; what it throws is shown as failureText() and `fallback` is returned.
template <typename Result, typename Operation>
[[nodiscard]] Result guarded(Prompt& prompt, const QString& where, Result fallback,
                             Operation&& operation, Prompt::Icon icon = Prompt::Icon::Critical) {
    try {
        return operation();
    } catch (...) {
        prompt.messageBox(failureText(currentFailure(), where), icon);
        return fallback;
    }
}

/// The same for operations without a result; false when something was thrown and shown.
template <typename Operation>
bool guardedRun(Prompt& prompt, const QString& where, Operation&& operation,
                Prompt::Icon icon = Prompt::Icon::Critical) {
    return guarded(
        prompt, where, false,
        [&] {
            operation();
            return true;
        },
        icon);
}

}  // namespace keeper
