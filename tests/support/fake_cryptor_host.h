// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <functional>
#include <utility>
#include <vector>

#include "crypto/cryptor_host.h"

namespace keeper {

/// Keeps the messages that a cipher shows, and runs `onTurn` when it lets the event loop turn.
class FakeCryptorHost final : public CryptorHost {
  public:
    using Message = std::pair<Severity, QString>;

    void showMessage(Severity severity, const QString& text) override {
        messages.emplace_back(severity, text);
    }
    void turnEventLoop() override {
        ++turns;
        if (onTurn) {
            onTurn();
        }
    }

    std::vector<Message> messages;
    int turns = 0;
    std::function<void()> onTurn;
};

}  // namespace keeper
