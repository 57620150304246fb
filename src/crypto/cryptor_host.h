// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <cstdint>
#include <stdexcept>

namespace keeper {

/// What the ciphers ask of the program around them: to show a message, and to let pending events
/// run while a long operation goes on. The caller owns the object; it must outlive the cipher that
/// uses it.
class CryptorHost {
  public:
    enum class Severity { Exclamation, Critical };

    virtual ~CryptorHost() = default;
    virtual void showMessage(Severity severity, const QString& text) = 0;
    /// Gives the event loop one turn; this is when a stop request can be set.
    virtual void turnEventLoop() = 0;
};

/// A numbered failure of the cryptographic library, thrown inside it and at its lower layers.
class CryptorError : public std::runtime_error {
  public:
    CryptorError(std::int32_t number, const QString& source, const QString& description)
        : std::runtime_error(description.toStdString()),
          m_number(number),
          m_source(source),
          m_description(description) {}

    [[nodiscard]] std::int32_t number() const { return m_number; }
    [[nodiscard]] const QString& source() const { return m_source; }
    [[nodiscard]] const QString& description() const { return m_description; }

  private:
    std::int32_t m_number;
    QString m_source;
    QString m_description;
};

}  // namespace keeper
