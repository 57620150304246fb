// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QObject>

namespace keeper {

/// Tells when the desktop has locked its screen.
class ScreenLock : public QObject {
    Q_OBJECT

  public:
    /// Starts to listen. Never waits for a service: what is missing stays silent.
    virtual void start() = 0;

  Q_SIGNALS:
    void locked();
};

}  // namespace keeper
