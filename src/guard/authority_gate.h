// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <functional>

#include "guard/authentication.h"

namespace keeper {

class SealedDatabase;
class Settings;

/// The independent password in front of sensitive commands.
class AuthorityGate {
  public:
    virtual ~AuthorityGate() = default;
    /// True at once when nothing is needed; otherwise the person is asked.
    virtual bool CheckAuthority(bool isNeeded) = 0;
};

/// The gate of a session. A user without an independent password is asked nothing.
class IndependentPasswordGate final : public AuthorityGate {
  public:
    struct Ports {
        const Settings& settings;
        const SealedDatabase& database;
        /// Asks for the independent password.
        std::function<Authentication::Result()> authenticate;
        /// Ends the session, since the chances are used up: by itself, behind the refused command.
        std::function<void()> endSession;
    };

    explicit IndependentPasswordGate(Ports ports) : m_ports(std::move(ports)) {}

    bool CheckAuthority(bool isNeeded) override;
    /// The same for the second-level authority of that number, counted from 1.
    bool demandAuthority(int number);

  private:
    Ports m_ports;
};

}  // namespace keeper
