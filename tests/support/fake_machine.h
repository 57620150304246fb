// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <stdexcept>
#include <utility>

#include "platform/machine.h"

namespace keeper {

/// A machine that is what its fields say. An empty tag is a source that fails.
class FakeMachine final : public Machine {
  public:
    QString firmware = QStringLiteral("LENOVO,20XW,10");
    QString processor = QStringLiteral("BFEBFBFF000906EA");
    QString disk = QStringLiteral("S4EVNX0R123456");
    QString name = QStringLiteral("HOST");
    NetworkAddress address{QStringLiteral("10.0.0.2"), false};
    bool isConnected = true;

    FakeMachine() = default;
    explicit FakeMachine(QString diskSerial) : disk(std::move(diskSerial)) {}

    QString firmwareTag() override { return orThrow(firmware); }
    QString processorTag() override { return orThrow(processor); }
    QString diskTag() override { return orThrow(disk); }
    QString computerName() override { return orThrow(name); }
    NetworkAddress networkAddress() override { return address; }
    bool isConnectedToNetwork() override { return isConnected; }

  private:
    static QString orThrow(const QString& value) {
        if (value.isEmpty()) {
            throw std::runtime_error("source out of order");
        }
        return value;
    }
};

}  // namespace keeper
