// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/linux/desktop_notification.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QVariantMap>

namespace keeper {

void notifyDesktop(const QString& title, const QString& text) {
    QDBusMessage note = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.Notifications"),
        QStringLiteral("/org/freedesktop/Notifications"),
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("Notify"));
    const QVariantMap hints{
        // What a password manager tells is of no use in a history.
        {QStringLiteral("transient"), true},
        {QStringLiteral("desktop-entry"), QStringLiteral("morvane-keeper")},
    };
    constexpr int showForMilliseconds = 5000;
    note << QStringLiteral("Morvane Keeper") << 0U << QStringLiteral("morvane-keeper") << title
         << text.toHtmlEscaped() << QStringList() << hints << showForMilliseconds;
    QDBusConnection::sessionBus().asyncCall(note);
}

}  // namespace keeper
