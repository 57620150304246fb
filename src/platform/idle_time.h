// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QtGlobal>
#include <optional>

namespace keeper {

/// How long the person has touched neither mouse nor keyboard.
class IdleTime {
  public:
    virtual ~IdleTime() = default;
    /// Milliseconds since the last input in any program, or in this one where the desktop does not
    /// tell; no value while it is unknown.
    [[nodiscard]] virtual std::optional<qint64> sinceLastInput() = 0;
    /// Whether the desktop tells of the input in all programs.
    [[nodiscard]] virtual bool isDesktopWide() = 0;
};

}  // namespace keeper
