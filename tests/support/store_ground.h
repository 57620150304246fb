// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <gtest/gtest.h>

#include "crypto/cryptor3.h"
#include "crypto/cryptor_host.h"
#include "store/column_cipher.h"
#include "store/store_context.h"

namespace keeper {

/// Column encryption as its fields say.
class FakeColumnKey final : public ColumnKey {
  public:
    bool isOn = false;
    QString key = QStringLiteral("独立密码1");
    [[nodiscard]] bool p_idpPwdSwitch() const override { return isOn; }
    [[nodiscard]] QString p_plainIdpPwd() const override { return key; }
};

class SilentCryptorHost final : public CryptorHost {
  public:
    void showMessage(Severity /*severity*/, const QString& text) override {
        ADD_FAILURE() << text.toStdString();
    }
    void turnEventLoop() override {}
};

/// What the data classes stand on, beside the database and the ports of a test.
struct StoreGround {
    StoreGround(Database& database, Prompt& prompt, const Clock& clock)
        : context{database, prompt, clock, columns} {}

    FakeColumnKey key;
    SilentCryptorHost host;
    Cryptor3 cryptor{host};
    ColumnCipher columns{key, cryptor};
    StoreContext context;
};

}  // namespace keeper
