// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QKeyEvent>
#include <QProcess>
#include <QSignalSpy>

#include "platform/linux/desktop_idle_time.h"
#include "platform/linux/desktop_screen_lock.h"
#include "platform/linux/logind_power.h"
#include "support/private_bus.h"

namespace keeper {
namespace {

using namespace Qt::StringLiterals;

QDBusMessage askMock(PrivateBus& bus, const QString& service, const QString& path,
                     const QString& method, const QVariantList& arguments) {
    QDBusMessage call =
        QDBusMessage::createMethodCall(service, path, u"org.freedesktop.DBus.Mock"_s, method);
    call.setArguments(arguments);
    return bus.connection().call(call);
}

TEST(IdleTime, CountsFromTheLastInputOfARealServer) {
    QProcess server;
    server.start(u"Xvfb"_s, {u"-displayfd"_s, u"1"_s, u"-nolisten"_s, u"tcp"_s});
    ASSERT_TRUE(server.waitForReadyRead(20'000));
    QByteArray number = server.readLine();
    while (!number.endsWith('\n')) {
        ASSERT_TRUE(server.waitForReadyRead(20'000));
        number += server.readLine();
    }
    const QByteArray display = ':' + number.trimmed();
    {
        PrivateBus bus;
        DesktopIdleTime idle(display, bus.connection());
        QTest::qWait(1200);
        const auto before = idle.sinceLastInput();
        ASSERT_TRUE(before.has_value());
        EXPECT_GE(*before, 1000);
        EXPECT_LT(*before, 60'000);
        // The person moves the mouse.
        QProcess mouse;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"DISPLAY"_s, QString::fromLatin1(display));
        mouse.setProcessEnvironment(environment);
        mouse.start(u"xdotool"_s, {u"mousemove"_s, u"30"_s, u"40"_s});
        ASSERT_TRUE(mouse.waitForFinished(10'000));
        const auto after = idle.sinceLastInput();
        ASSERT_TRUE(after.has_value());
        EXPECT_LT(*after, *before);
        EXPECT_LT(*after, 1000);
    }
    server.kill();
    server.waitForFinished();
}

TEST(IdleTime, ComesFromTheDesktopsServiceWhereThereIsNoServerAndFromOwnEventsWithoutBoth) {
    PrivateBus bus;
    {
        DesktopIdleTime own(QByteArray(), bus.connection());
        EXPECT_FALSE(own.isDesktopWide());
        ASSERT_TRUE(own.sinceLastInput().has_value());
        QTest::qWait(60);
        EXPECT_GE(*own.sinceLastInput(), 50);
        QKeyEvent key(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier);
        QCoreApplication::sendEvent(QCoreApplication::instance(), &key);
        EXPECT_LT(*own.sinceLastInput(), 50);
    }
    const QString service = u"org.gnome.Mutter.IdleMonitor"_s;
    const QString path = u"/org/gnome/Mutter/IdleMonitor/Core"_s;
    bus.mock({service, path, service}, service);
    askMock(bus, service, path, u"AddMethod"_s,
            {service, u"GetIdletime"_s, QString(), u"t"_s, u"ret = 4321"_s});
    DesktopIdleTime idle(QByteArray(), bus.connection());
    EXPECT_EQ(idle.sinceLastInput(), 4321);
    EXPECT_TRUE(idle.isDesktopWide());
    // One answer that is late leaves the time unknown for that moment alone.
    askMock(bus, service, path, u"AddMethod"_s,
            {service, u"GetIdletime"_s, QString(), u"t"_s,
             u"import time; n = self.late = getattr(self, 'late', 0) + 1; "
             "time.sleep(0.3 if n == 1 else 0); ret = 5000 + n"_s});
    EXPECT_FALSE(idle.sinceLastInput().has_value());
    EXPECT_TRUE(idle.isDesktopWide());
    QTest::qWait(600);
    EXPECT_EQ(idle.sinceLastInput(), 5002);
}

TEST(ScreenLock, TellsThatTheDesktopHasLockedAndNotThatItHasUnlocked) {
    PrivateBus bus;
    DesktopScreenLock screen(bus.connection());
    QSignalSpy locked(&screen, &ScreenLock::locked);
    screen.start();
    const QString service = u"org.gnome.ScreenSaver"_s;
    bus.mock({service, u"/org/gnome/ScreenSaver"_s, service}, service);
    for (const bool isActive : {false, true}) {
        bus.emitSignal(service, u"/org/gnome/ScreenSaver"_s, service, u"ActiveChanged"_s, u"b"_s,
                       {isActive});
    }
    EXPECT_TRUE(QTest::qWaitFor([&] { return !locked.isEmpty(); }, 10'000));
    EXPECT_EQ(locked.count(), 1);
}

TEST(LogindPower, AsksTheManagerToPowerOffAndThrowsItsRefusal) {
    PrivateBus bus;
    EXPECT_THROW(LogindPower(bus.connection()).shutDown(), std::exception);
    const QString service = u"org.freedesktop.login1"_s;
    const QString path = u"/org/freedesktop/login1"_s;
    const QString manager = u"org.freedesktop.login1.Manager"_s;
    bus.mock({u"--template"_s, u"logind"_s}, service);
    LogindPower power(bus.connection());
    EXPECT_NO_THROW(power.shutDown());
    const QDBusMessage made = askMock(bus, service, path, u"GetMethodCalls"_s, {u"PowerOff"_s});
    ASSERT_EQ(made.type(), QDBusMessage::ReplyMessage) << qPrintable(made.errorMessage());
    const auto argument = made.arguments().first().value<QDBusArgument>();
    argument.beginArray();
    EXPECT_FALSE(argument.atEnd());
    askMock(bus, service, path, u"AddMethod"_s,
            {manager, u"PowerOff"_s, u"b"_s, QString(),
             u"raise dbus.exceptions.DBusException('nicht erlaubt', name='a.b.Denied')"_s});
    try {
        power.shutDown();
        ADD_FAILURE() << "a refusal passed";
    } catch (const std::exception& error) {
        EXPECT_NE(std::string(error.what()).find("nicht erlaubt"), std::string::npos);
    }
}

}  // namespace
}  // namespace keeper
