// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "guard/authentication.h"
#include "guard/independent_password.h"

namespace keeper {

class KeyboardState;

/// What the layers of protection take from the session; all outlive the parts.
struct ProtectionPorts {
    Prompt& prompt;
    const Clock& clock;
    System& system;
    SealedDatabase& sealed;
    SysLogs& logs;
    const KeyboardState& keyboard;
    FingerprintReader& fingerprints;
};

/// The object graph of the layers of protection within a session, and their forms.
class ProtectionParts {
  public:
    explicit ProtectionParts(const ProtectionPorts& ports);

    /// Asks for the independent password and blocks until that is decided.
    Authentication::Result authenticate(Authentication::SecretType type);
    /// Whether the session may read: with column encryption on, its password is asked for.
    bool unlockColumns();

    /// Waits for a finger of the desktop's user, in front of a session of `userName`.
    bool verifyFinger(QString& userName);

  private:
    void showAuthentication();

    ProtectionPorts m_ports;

  public:
    IndependentPassword secret;
    Authentication authentication;
};

}  // namespace keeper
