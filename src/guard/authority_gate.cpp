// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "guard/authority_gate.h"

#include "app/settings.h"
#include "store/sealed_database.h"

namespace keeper {

bool IndependentPasswordGate::CheckAuthority(bool isNeeded) {
    if (!isNeeded || m_ports.database.IsIdpPwdNull()) {
        return true;
    }
    const Authentication::Result result = m_ports.authenticate();
    if (result == Authentication::Result::UsedUp) {
        m_ports.endSession();
    }
    return result == Authentication::Result::Verified;
}

bool IndependentPasswordGate::demandAuthority(int number) {
    return CheckAuthority(m_ports.settings.GetAuthority(number - 1) != 0);
}

}  // namespace keeper
