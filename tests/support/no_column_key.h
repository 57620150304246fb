// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "store/column_cipher.h"

namespace keeper {

/// Column encryption that is off.
class NoColumnKey final : public ColumnKey {
  public:
    [[nodiscard]] bool p_idpPwdSwitch() const override { return false; }
    [[nodiscard]] QString p_plainIdpPwd() const override { return {}; }
};

}  // namespace keeper
