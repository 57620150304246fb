// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/linux/desktop_screen_lock.h"

#include <array>

namespace keeper {

DesktopScreenLock::DesktopScreenLock() = default;

DesktopScreenLock::DesktopScreenLock(const QDBusConnection& sessionBus)
    : m_bus(std::make_unique<QDBusConnection>(sessionBus)) {}

DesktopScreenLock::~DesktopScreenLock() = default;

void DesktopScreenLock::start() {
    if (!m_bus) {
        m_bus = std::make_unique<QDBusConnection>(QDBusConnection::sessionBus());
    }
    if (!m_bus->isConnected()) {
        return;
    }
    // By the interface alone: the path differs between desktops, and so may the sender's name.
    for (const char* interface :
         {"org.freedesktop.ScreenSaver", "org.gnome.ScreenSaver", "org.mate.ScreenSaver",
          "org.cinnamon.ScreenSaver", "org.xfce.ScreenSaver"}) {
        m_bus->connect(QString(), QString(), QString::fromLatin1(interface),
                       QStringLiteral("ActiveChanged"), this, SLOT(onActiveChanged(bool)));
    }
}

void DesktopScreenLock::onActiveChanged(bool isActive) {
    if (isActive) {
        Q_EMIT locked();
    }
}

}  // namespace keeper
