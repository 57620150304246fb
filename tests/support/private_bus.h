// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QElapsedTimer>
#include <QProcess>
#include <QTest>
#include <memory>
#include <vector>

namespace keeper {

/// A message bus of its own and mocked services on it, all gone with the object.
class PrivateBus {
  public:
    PrivateBus() {
        m_daemon.start(QStringLiteral("dbus-daemon"),
                       {QStringLiteral("--session"), QStringLiteral("--nofork"),
                        QStringLiteral("--print-address")});
        EXPECT_TRUE(m_daemon.waitForReadyRead(10'000));
        m_address = QString::fromUtf8(m_daemon.readLine()).trimmed();
        static int count = 0;
        m_name = QStringLiteral("private%1").arg(++count);
    }
    ~PrivateBus() {
        QDBusConnection::disconnectFromBus(m_name);
        stopMocks();
        m_daemon.kill();
        m_daemon.waitForFinished();
    }
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    [[nodiscard]] const QString& address() const { return m_address; }
    [[nodiscard]] QDBusConnection connection() const {
        return QDBusConnection::connectToBus(m_address, m_name);
    }

    /// Starts python3-dbusmock with these arguments and waits until `service` is on the bus.
    void mock(const QStringList& arguments, const QString& service) {
        auto process = std::make_unique<QProcess>();
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), m_address);
        environment.insert(QStringLiteral("DBUS_SYSTEM_BUS_ADDRESS"), m_address);
        process->setProcessEnvironment(environment);
        // The interpreter that the package belongs to, whatever else stands first in the path.
        process->start(QStringLiteral("/usr/bin/python3"),
                       QStringList{QStringLiteral("-m"), QStringLiteral("dbusmock")} + arguments);
        ASSERT_TRUE(process->waitForStarted());
        m_mocks.push_back(std::move(process));
        ASSERT_TRUE(QTest::qWaitFor(
            [&] { return connection().interface()->isServiceRegistered(service).value(); },
            20'000));
    }

    /// All services die.
    void stopMocks() {
        for (const auto& mock : m_mocks) {
            mock->kill();
            mock->waitForFinished();
        }
        m_mocks.clear();
    }

    /// Lets a mocked object emit a signal.
    void emitSignal(const QString& service, const QString& path, const QString& interface,
                    const QString& name, const QString& signature, const QVariantList& arguments) {
        QDBusMessage call = QDBusMessage::createMethodCall(
            service, path, QStringLiteral("org.freedesktop.DBus.Mock"),
            QStringLiteral("EmitSignal"));
        call << interface << name << signature << arguments;
        const QDBusMessage reply = connection().call(call);
        EXPECT_NE(reply.type(), QDBusMessage::ErrorMessage) << qPrintable(reply.errorMessage());
    }

  private:
    QProcess m_daemon;
    QString m_address;
    QString m_name;
    std::vector<std::unique_ptr<QProcess>> m_mocks;
};

}  // namespace keeper
