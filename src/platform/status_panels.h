// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

namespace keeper {

/// The panels of the main window's status bar, from left to right.
enum class StatusPanel { Message, DeadCount, Operation, FillState, RunTime, AEStatus };

/// "message", "deadCount", "operation", "fillState", "runTime" or "AEStatus".
[[nodiscard]] QString statusPanelKey(StatusPanel panel);

/// Where the session's logic writes what the status bar tells.
class StatusPanels {
  public:
    virtual ~StatusPanels() = default;
    virtual void setPanel(StatusPanel panel, const QString& text) = 0;
};

}  // namespace keeper
