// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <gtest/gtest.h>

#include <unistd.h>

#include <QDBusArgument>
#include <QSignalSpy>
#include <array>
#include <csignal>

#include "platform/linux/linux_session_watch.h"
#include "platform/linux/unix_signals.h"
#include "support/private_bus.h"

namespace keeper {
namespace {

QString service() {
    return QStringLiteral("org.freedesktop.login1");
}

class LogindTest : public ::testing::Test {
  protected:
    LogindTest() {
        bus.mock({QStringLiteral("--template"), QStringLiteral("logind")}, service());
        // The template's Inhibit gives the descriptor of a fifo; a waiter on it sees the release.
        watch = std::make_unique<LinuxSessionWatch>(bus.connection());
        watch->start();
        EXPECT_TRUE(QTest::qWaitFor([this] { return watch->canDelay(); }, 10'000));
    }
    void tell(const QString& signal, bool isBeginning) {
        bus.emitSignal(service(), QStringLiteral("/org/freedesktop/login1"),
                       QStringLiteral("org.freedesktop.login1.Manager"), signal,
                       QStringLiteral("b"), {isBeginning});
    }

    /// How many the manager knows of.
    int inhibitors() {
        const QDBusMessage answer = bus.connection().call(QDBusMessage::createMethodCall(
            service(), QStringLiteral("/org/freedesktop/login1"),
            QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("ListInhibitors")));
        const auto rows = answer.arguments().value(0).value<QDBusArgument>();
        int count = 0;
        rows.beginArray();
        for (; !rows.atEnd(); ++count) {
            std::array<QString, 4> texts;
            std::array<uint, 2> numbers{};
            rows.beginStructure();
            rows >> texts[0] >> texts[1] >> texts[2] >> texts[3] >> numbers[0] >> numbers[1];
            rows.endStructure();
        }
        return count;
    }

    PrivateBus bus;
    std::unique_ptr<LinuxSessionWatch> watch;
};

TEST_F(LogindTest, TheLockOfTheSessionIsHeardHoweverTheSessionIsFound) {
    const QString session = QStringLiteral("/org/freedesktop/login1/session/c7");
    const QString mock = QStringLiteral("org.freedesktop.DBus.Mock");
    const auto call = [&](const QString& path, const QString& interface, const QString& method,
                          const QVariantList& arguments) {
        QDBusMessage message = QDBusMessage::createMethodCall(service(), path, interface, method);
        message.setArguments(arguments);
        const QDBusMessage answer = bus.connection().call(message);
        EXPECT_EQ(answer.type(), QDBusMessage::ReplyMessage) << qPrintable(answer.errorMessage());
    };
    const QString manager = QStringLiteral("/org/freedesktop/login1");
    call(
        manager, mock, QStringLiteral("AddSession"),
        {QStringLiteral("c7"), QStringLiteral("seat0"), ::getuid(), QStringLiteral("alice"), true});
    // A program started by the person's own services: the display's session is the last resort.
    call(manager, mock, QStringLiteral("AddMethod"),
         {QStringLiteral("a.b.Test"), QStringLiteral("Show"), QString(), QString(),
          QStringLiteral("objects['%1/user/%2'].props['org.freedesktop.login1.User']['Display'] = "
                         "dbus.Struct(('c7', dbus.ObjectPath('%3')), signature='so')")
              .arg(manager)
              .arg(::getuid())
              .arg(session)});
    call(manager, QStringLiteral("a.b.Test"), QStringLiteral("Show"), {});
    call(manager, mock, QStringLiteral("AddMethod"),
         {QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("GetUser"),
          QStringLiteral("u"), QStringLiteral("o"),
          QStringLiteral("ret = '%1/user/%d' % args[0]").arg(manager)});
    for (const QByteArray& name : {QByteArray("c7"), QByteArray()}) {
        name.isEmpty() ? qunsetenv("XDG_SESSION_ID") : qputenv("XDG_SESSION_ID", name);
        LinuxSessionWatch another(bus.connection());
        QSignalSpy locks(&another, &SessionWatch::lockRequested);
        another.start();
        const auto isHeard = [&](const QString& method, const QVariantList& arguments) {
            return QTest::qWaitFor(
                [&] {
                    call(session, QStringLiteral("org.freedesktop.login1.Session"), method,
                         arguments);
                    QTest::qWait(20);
                    return locks.count() > 0;
                },
                10'000);
        };
        EXPECT_TRUE(isHeard(QStringLiteral("Lock"), {})) << name.constData();
        call(session, QStringLiteral("org.freedesktop.login1.Session"),
             QStringLiteral("SetLockedHint"), {false});
        QTest::qWait(50);
        locks.clear();
        EXPECT_TRUE(isHeard(QStringLiteral("SetLockedHint"), {true})) << name.constData();
    }
}

TEST_F(LogindTest, ShutdownIsHeldUntilTheProcessEndsAndToldOnce) {
    int endings = 0;
    QObject::connect(watch.get(), &SessionWatch::ending, [&](SessionWatch::Ending how) {
        EXPECT_EQ(how, SessionWatch::Ending::Shutdown);
        ++endings;
    });
    tell(QStringLiteral("PrepareForShutdown"), true);
    EXPECT_TRUE(QTest::qWaitFor([&] { return endings == 1; }, 10'000));
    // The signal that the shutdown itself sends afterwards must not seal a second time.
    ::raise(SIGTERM);
    QTest::qWait(20);
    EXPECT_EQ(endings, 1);
    EXPECT_EQ(inhibitors(), 1) << "the sealing may go on behind the signal";

    tell(QStringLiteral("PrepareForShutdown"), false);
    tell(QStringLiteral("PrepareForShutdown"), true);
    EXPECT_TRUE(QTest::qWaitFor([&] { return endings == 2; }, 10'000));
    watch.reset();
    EXPECT_TRUE(QTest::qWaitFor([this] { return inhibitors() == 0; }, 10'000));
}

TEST_F(LogindTest, SleepIsToldUnderTheInhibitorWhichComesBackOnWaking) {
    std::shared_ptr<const void> held;
    QObject::connect(watch.get(), &SessionWatch::goingToSleep, [&] { held = watch->hold(); });
    QSignalSpy woke(watch.get(), &SessionWatch::wokeUp);
    tell(QStringLiteral("PrepareForSleep"), true);
    EXPECT_TRUE(QTest::qWaitFor([this] { return !watch->canDelay(); }, 10'000));
    EXPECT_EQ(inhibitors(), 1) << "somebody is not done yet";
    held.reset();
    EXPECT_TRUE(QTest::qWaitFor([this] { return inhibitors() == 0; }, 10'000));
    tell(QStringLiteral("PrepareForSleep"), false);
    EXPECT_TRUE(QTest::qWaitFor([&] { return woke.count() == 1 && watch->canDelay(); }, 10'000));

    // A slot that waits for somebody returns when the machine has slept and is awake again.
    QObject::connect(watch.get(), &SessionWatch::goingToSleep, [&] {
        EXPECT_TRUE(
            QTest::qWaitFor([&] { return woke.count() == 2 && inhibitors() == 2; }, 10'000));
    });
    tell(QStringLiteral("PrepareForSleep"), true);
    tell(QStringLiteral("PrepareForSleep"), false);
    EXPECT_TRUE(QTest::qWaitFor([&] { return woke.count() == 2; }, 10'000));
    held.reset();
    QTest::qWait(100);
    EXPECT_TRUE(watch->canDelay()) << "the next sleep is held back";
    EXPECT_EQ(inhibitors(), 1);
}

TEST(SessionWatch, WithoutLogindSignalsStillEndTheSession) {
    PrivateBus empty;
    LinuxSessionWatch watch(empty.connection());
    QSignalSpy endings(&watch, &SessionWatch::ending);
    watch.start();
    ::raise(SIGTERM);
    ::raise(SIGINT);
    EXPECT_TRUE(QTest::qWaitFor([&] { return endings.count() > 0; }, 10'000));
    EXPECT_EQ(endings.count(), 1);
    EXPECT_EQ(endings.first().first().value<SessionWatch::Ending>(),
              SessionWatch::Ending::Terminated);
    EXPECT_FALSE(watch.canDelay());
}

TEST(UnixSignals, GivesTheFormerHandlersBack) {
    struct sigaction before {};
    ::sigaction(SIGTERM, nullptr, &before);
    {
        UnixSignals watched;
        struct sigaction during {};
        ::sigaction(SIGTERM, nullptr, &during);
        EXPECT_NE(during.sa_handler, before.sa_handler);
    }
    struct sigaction after {};
    ::sigaction(SIGTERM, nullptr, &after);
    EXPECT_EQ(after.sa_handler, before.sa_handler);
}

}  // namespace
}  // namespace keeper
