// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QDBusConnection>
#include <memory>

#include "platform/screen_lock.h"

namespace keeper {

/// The screen lock as the desktops tell it on the session bus.
class DesktopScreenLock final : public ScreenLock {
    Q_OBJECT

  public:
    /// `sessionBus` is where the desktop tells it; connecting is left to start() when none is
    /// given.
    DesktopScreenLock();
    explicit DesktopScreenLock(const QDBusConnection& sessionBus);
    ~DesktopScreenLock() override;

    void start() override;

  private Q_SLOTS:
    void onActiveChanged(bool isActive);

  private:
    std::unique_ptr<QDBusConnection> m_bus;
};

}  // namespace keeper
