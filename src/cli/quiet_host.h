// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <functional>

#include "crypto/cryptor_host.h"

namespace keeper::cli {

/// Keeps the message of a failure for the one line on standard error.
class QuietHost final : public CryptorHost {
  public:
    void showMessage(Severity, const QString& text) override { message = text; }
    void turnEventLoop() override {
        if (onTurn) {
            onTurn();
        }
    }

    QString message;
    std::function<void()> onTurn;
};

}  // namespace keeper::cli
