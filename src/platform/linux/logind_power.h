// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QDBusConnection>
#include <memory>

#include "platform/power.h"

namespace keeper {

/// The machine's switch as logind operates it.
class LogindPower final : public Power {
  public:
    /// `systemBus` is where logind answers; connecting is left to shutDown() when none is given.
    LogindPower();
    explicit LogindPower(const QDBusConnection& systemBus);
    ~LogindPower() override;

    void shutDown() override;

  private:
    std::unique_ptr<QDBusConnection> m_bus;
};

}  // namespace keeper
