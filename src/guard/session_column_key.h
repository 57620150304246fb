// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "app/system.h"
#include "store/column_cipher.h"

namespace keeper {

/// Column encryption as the settings tell it, under the password that the session has verified.
class SessionColumnKey final : public ColumnKey {
  public:
    explicit SessionColumnKey(const System& system) : m_system(system) {}
    [[nodiscard]] bool p_idpPwdSwitch() const override {
        return m_system.settings().p_idpPwdSwitch();
    }
    [[nodiscard]] QString p_plainIdpPwd() const override { return m_system.p_plainIdpPwd(); }

  private:
    const System& m_system;
};

}  // namespace keeper
