// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

namespace keeper {

class Clock;
class Prompt;
class SealedDatabase;
class SysLogs;
class System;

/// Judges what is typed as the independent password, and counts the chances.
class IndependentPassword {
  public:
    struct Ports {
        Prompt& prompt;
        const Clock& clock;
        System& system;
        const SealedDatabase& database;
        SysLogs& logs;
    };
    enum class Outcome {
        Right,
        Wrong,    ///< told with the chances that are left
        UsedUp,   ///< told and recorded: the session is over
        Unknown,  ///< the attempt could not be counted, which was told; nothing was compared
    };

    explicit IndependentPassword(const Ports& ports) : m_ports(ports) {}

    /// One chance is taken, and is gone from the database, before the entry is looked at: neither a
    /// crash nor a new login gives it back. The right entry restores all. `where` names the form in
    /// the message of a failure.
    Outcome IdentifySecret(const QString& entry, const QString& where);
    [[nodiscard]] bool IsIdpPwdNull() const;

  private:
    void recordUsedUp();

    Ports m_ports;
};

}  // namespace keeper
