// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QtGlobal>
#include <optional>

namespace keeper {

/// How long the person has touched neither mouse nor keyboard, in any program.
class IdleTime {
  public:
    virtual ~IdleTime() = default;
    /// Milliseconds since the last input; no value where the system does not tell.
    [[nodiscard]] virtual std::optional<qint64> sinceLastInput() = 0;
};

}  // namespace keeper
