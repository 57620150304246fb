// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QDateTime>

namespace keeper {

/// The wall clock, in local time. A zero date of the data is an invalid QDateTime, never "now".
class Clock {
  public:
    virtual ~Clock() = default;
    [[nodiscard]] virtual QDateTime now() const = 0;
    [[nodiscard]] QDate today() const { return now().date(); }
};

class SystemClock final : public Clock {
  public:
    [[nodiscard]] QDateTime now() const override;
};

}  // namespace keeper
