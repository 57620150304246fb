// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/status_panels.h"

namespace keeper {

QString statusPanelKey(StatusPanel panel) {
    switch (panel) {
        case StatusPanel::Message:
            return QStringLiteral("message");
        case StatusPanel::DeadCount:
            return QStringLiteral("deadCount");
        case StatusPanel::Operation:
            return QStringLiteral("operation");
        case StatusPanel::FillState:
            return QStringLiteral("fillState");
        case StatusPanel::RunTime:
            return QStringLiteral("runTime");
        case StatusPanel::AEStatus:
            return QStringLiteral("AEStatus");
    }
    Q_UNREACHABLE();
}

}  // namespace keeper
