// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/linux/logind_power.h"

#include <QDBusMessage>
#include <stdexcept>

namespace keeper {
namespace {

/// Long enough for a person to prove the right to shut down, where the system asks for it.
constexpr int kAnswerMilliseconds = 60'000;

}  // namespace

LogindPower::LogindPower() = default;

LogindPower::LogindPower(const QDBusConnection& systemBus)
    : m_bus(std::make_unique<QDBusConnection>(systemBus)) {}

LogindPower::~LogindPower() = default;

void LogindPower::shutDown() {
    if (!m_bus) {
        m_bus = std::make_unique<QDBusConnection>(QDBusConnection::systemBus());
    }
    QDBusMessage request = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
        QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("PowerOff"));
    request << /*interactive=*/true;
    request.setInteractiveAuthorizationAllowed(true);
    const QDBusMessage answer = m_bus->call(request, QDBus::Block, kAnswerMilliseconds);
    if (answer.type() != QDBusMessage::ReplyMessage) {
        throw std::runtime_error(m_bus->isConnected() ? answer.errorMessage().toStdString()
                                                      : "the system bus is out of reach");
    }
}

}  // namespace keeper
