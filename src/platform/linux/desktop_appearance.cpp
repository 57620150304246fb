// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/linux/desktop_appearance.h"

#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QSettings>
#include <QTimer>
#include <memory>

#include "platform/linux/hardening.h"

namespace keeper {
namespace {

QString portalService() {
    return QStringLiteral("org.freedesktop.portal.Desktop");
}

QString portalPath() {
    return QStringLiteral("/org/freedesktop/portal/desktop");
}

QString settingsInterface() {
    return QStringLiteral("org.freedesktop.portal.Settings");
}

QString appearanceGroup() {
    return QStringLiteral("org.freedesktop.appearance");
}

QString schemeKey() {
    return QStringLiteral("color-scheme");
}

Appearance::Scheme fromGtkFile(const QString& path) {
    const QSettings settings(path, QSettings::IniFormat);
    const QVariant preferDark =
        settings.value(QStringLiteral("Settings/gtk-application-prefer-dark-theme"));
    const QString theme = settings.value(QStringLiteral("Settings/gtk-theme-name")).toString();
    if (preferDark.toString() == u"1" || preferDark.toBool() ||
        theme.endsWith(QStringLiteral("-dark"), Qt::CaseInsensitive)) {
        return Appearance::Scheme::Dark;
    }
    return preferDark.isValid() || !theme.isEmpty() ? Appearance::Scheme::Light
                                                    : Appearance::Scheme::Unknown;
}

/// By the lightness of the window's colour, since the scheme's name is free.
Appearance::Scheme fromKdeFile(const QString& path) {
    const QSettings settings(path, QSettings::IniFormat);
    const QStringList parts =
        settings.value(QStringLiteral("Colors:Window/BackgroundNormal")).toStringList();
    if (parts.size() != 3) {
        return Appearance::Scheme::Unknown;
    }
    const int sum = parts.at(0).toInt() + parts.at(1).toInt() + parts.at(2).toInt();
    return sum < 3 * 128 ? Appearance::Scheme::Dark : Appearance::Scheme::Light;
}

}  // namespace

DesktopAppearance::DesktopAppearance(const QString& configuration) {
    m_scheme = fromKdeFile(configuration + QStringLiteral("/kdeglobals"));
    for (const auto* version : {"/gtk-4.0", "/gtk-3.0"}) {
        if (m_scheme == Scheme::Unknown) {
            m_scheme = fromGtkFile(configuration + QLatin1StringView(version) +
                                   QStringLiteral("/settings.ini"));
        }
    }
}

void DesktopAppearance::watch() {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        return;
    }
    bus.connect(portalService(), portalPath(), settingsInterface(),
                QStringLiteral("SettingChanged"), this, SLOT(onSettingChanged(QDBusMessage)));
    QDBusMessage question = QDBusMessage::createMethodCall(
        portalService(), portalPath(), settingsInterface(), QStringLiteral("Read"));
    question << appearanceGroup() << schemeKey();
    const auto open = std::make_shared<OpenToPortals>();
    constexpr int longestOpenMilliseconds = 1500;
    QTimer::singleShot(longestOpenMilliseconds, this, [open] { open->close(); });
    auto* answer = new QDBusPendingCallWatcher(bus.asyncCall(question), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer, open] {
        open->close();
        answer->deleteLater();
        const QDBusPendingReply<QDBusVariant> reply = *answer;
        if (!reply.isError()) {
            accept(reply.value().variant());
        }
    });
}

void DesktopAppearance::onSettingChanged(const QDBusMessage& message) {
    const QVariantList arguments = message.arguments();
    if (arguments.size() == 3 && arguments.at(0).toString() == appearanceGroup() &&
        arguments.at(1).toString() == schemeKey()) {
        accept(arguments.at(2));
    }
}

void DesktopAppearance::accept(const QVariant& value) {
    // The portal's Read wraps its answer in a second variant.
    QVariant inner = value;
    while (inner.canConvert<QDBusVariant>()) {
        inner = inner.value<QDBusVariant>().variant();
    }
    // 0 is "no preference", which says nothing against what the files told.
    const uint number = inner.toUInt();
    const Scheme told = number == 1 ? Scheme::Dark : number == 2 ? Scheme::Light : m_scheme;
    if (told != m_scheme) {
        m_scheme = told;
        Q_EMIT schemeChanged(m_scheme);
    }
}

}  // namespace keeper
