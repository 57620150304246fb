// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <gtest/gtest.h>

#include <QSignalSpy>
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

    PrivateBus bus;
    std::unique_ptr<LinuxSessionWatch> watch;
};

TEST_F(LogindTest, ShutdownIsHeldUntilTheSlotsHaveReturnedAndToldOnce) {
    int endings = 0;
    bool wasHeld = false;
    QObject::connect(watch.get(), &SessionWatch::ending, [&](SessionWatch::Ending how) {
        EXPECT_EQ(how, SessionWatch::Ending::Shutdown);
        ++endings;
        wasHeld = watch->canDelay();
    });
    tell(QStringLiteral("PrepareForShutdown"), true);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !watch->canDelay(); }, 10'000));
    EXPECT_TRUE(wasHeld);
    // The signal that the shutdown itself sends afterwards must not seal a second time.
    ::raise(SIGTERM);
    QTest::qWait(20);
    EXPECT_EQ(endings, 1);

    tell(QStringLiteral("PrepareForShutdown"), false);
    EXPECT_TRUE(QTest::qWaitFor([this] { return watch->canDelay(); }, 10'000));
    tell(QStringLiteral("PrepareForShutdown"), true);
    EXPECT_TRUE(QTest::qWaitFor([&] { return endings == 2; }, 10'000));
}

TEST_F(LogindTest, SleepIsToldUnderTheInhibitorWhichComesBackOnWaking) {
    bool wasHeld = false;
    QObject::connect(watch.get(), &SessionWatch::goingToSleep,
                     [&] { wasHeld = watch->canDelay(); });
    QSignalSpy woke(watch.get(), &SessionWatch::wokeUp);
    tell(QStringLiteral("PrepareForSleep"), true);
    EXPECT_TRUE(QTest::qWaitFor([this] { return !watch->canDelay(); }, 10'000));
    EXPECT_TRUE(wasHeld);
    tell(QStringLiteral("PrepareForSleep"), false);
    EXPECT_TRUE(QTest::qWaitFor([&] { return woke.count() == 1 && watch->canDelay(); }, 10'000));
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
