// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <csignal>
#include <fstream>

#include "platform/linux/desktop_appearance.h"
#include "platform/linux/hardening.h"
#include "platform/linux/linux_single_instance.h"
#include "support/private_bus.h"
#include "support/temp_home.h"

namespace keeper {
namespace {

using Outcome = SingleInstance::Outcome;

TEST(SingleInstance, SecondIsRefusedAndItsFileReachesTheFirst) {
    QTemporaryDir dir;
    const QString folder = dir.filePath(QStringLiteral("运行 1"));
    LinuxSingleInstance first(folder);
    QSignalSpy raised(&first, &SingleInstance::raiseRequested);
    ASSERT_EQ(first.acquire(), Outcome::Holder);
    EXPECT_EQ(QFileInfo(folder).permissions() & 0x0077, QFile::Permissions());
    {
        LinuxSingleInstance second(folder);
        ASSERT_EQ(second.acquire(), Outcome::AlreadyRunning);
        EXPECT_TRUE(second.askHolder());
        EXPECT_TRUE(second.askHolder(QStringLiteral("/家/MORV - 张三/张三.kvdb")));
        EXPECT_FALSE(second.askHolder(QString(70'000, u'x')));
    }
    EXPECT_TRUE(QTest::qWaitFor([&] { return raised.count() == 2; }, 10'000));
    EXPECT_EQ(raised.at(0).first().toString(), QString());
    EXPECT_EQ(raised.at(1).first().toString(), QStringLiteral("/家/MORV - 张三/张三.kvdb"));
    LinuxSingleInstance third(folder);
    EXPECT_EQ(third.acquire(), Outcome::AlreadyRunning);
}

TEST(SingleInstance, AKilledHolderBindsNobody) {
    QTemporaryDir dir;
    std::array<int, 2> ready{};
    ASSERT_EQ(::pipe(ready.data()), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        LinuxSingleInstance holder(dir.path());
        const char got = holder.acquire() == Outcome::Holder ? 'y' : 'n';
        [[maybe_unused]] const ssize_t written = ::write(ready[1], &got, 1);
        for (;;) {
            ::pause();
        }
    }
    char got = 0;
    ASSERT_EQ(::read(ready[0], &got, 1), 1);
    EXPECT_EQ(got, 'y');
    LinuxSingleInstance next(dir.path());
    EXPECT_EQ(next.acquire(), Outcome::AlreadyRunning);
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    ASSERT_TRUE(QFile::exists(dir.filePath(QStringLiteral("instance.sock"))));
    ASSERT_EQ(next.acquire(), Outcome::Holder);
    QSignalSpy raised(&next, &SingleInstance::raiseRequested);
    LinuxSingleInstance other(dir.path());
    EXPECT_TRUE(other.askHolder());
    EXPECT_TRUE(QTest::qWaitFor([&] { return raised.count() == 1; }, 10'000));
}

TEST(SingleInstance, AFolderThatCannotHoldTheLockIsAFailureAndNotASecondInstance) {
    QTemporaryDir dir;
    std::ofstream(dir.filePath(QStringLiteral("file")).toStdString()) << "not a folder";
    LinuxSingleInstance instance(dir.filePath(QStringLiteral("file")));
    EXPECT_THROW((void)instance.acquire(), std::runtime_error);
}

TEST(SingleInstance, OnlyARuntimeFolderThatIsPrivateIsUsed) {
    TempHome home;
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    ::chmod(runtime.toUtf8().constData(), 0700);
    EXPECT_TRUE(LinuxSingleInstance::defaultFolder(QStringLiteral("/c")).startsWith(runtime));
    ::chmod(runtime.toUtf8().constData(), 0755);
    EXPECT_EQ(LinuxSingleInstance::defaultFolder(QStringLiteral("/c")),
              QStringLiteral("/c/morvane-keeper"));
}

TEST(Hardening, ClosesTheProcessToDebuggersAndWritesNoCore) {
    const pid_t child = ::fork();
    if (child == 0) {
        const Hardening done = hardenProcess();
        rlimit core{};
        ::getrlimit(RLIMIT_CORE, &core);
        const bool isClosed = ::prctl(PR_GET_DUMPABLE) == 0 && core.rlim_max == 0;
        ::_exit(done.isUndumpable && done.hasNoCore && isClosed ? 0 : 1);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
}

void writeFile(const QString& path, const char* text) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    std::ofstream(path.toStdString()) << text;
}

TEST(DesktopAppearance, ReadsTheSettingsFilesOfTheDesktops) {
    struct Row {
        const char* file;
        const char* text;
        Appearance::Scheme scheme;
    };
    using Scheme = Appearance::Scheme;
    for (const Row& row : {
             Row{"none", "", Scheme::Unknown},
             Row{"gtk-3.0/settings.ini", "[Settings]\ngtk-theme-name=Adwaita\n", Scheme::Light},
             Row{"gtk-3.0/settings.ini", "[Settings]\ngtk-theme-name=Yaru-dark\n", Scheme::Dark},
             Row{"gtk-4.0/settings.ini", "[Settings]\ngtk-application-prefer-dark-theme=1\n",
                 Scheme::Dark},
             Row{"kdeglobals", "[Colors:Window]\nBackgroundNormal=49,54,59\n", Scheme::Dark},
             Row{"kdeglobals", "[Colors:Window]\nBackgroundNormal=239,240,241\n", Scheme::Light},
             Row{"kdeglobals", "[Colors:Window]\nBackgroundNormal=oops\n", Scheme::Unknown},
         }) {
        QTemporaryDir dir;
        writeFile(dir.filePath(QLatin1StringView(row.file)), row.text);
        EXPECT_EQ(DesktopAppearance(dir.path()).scheme(), row.scheme) << row.file << row.text;
    }
}

TEST(DesktopAppearance, ThePortalsAnswerAndItsChangesWin) {
    PrivateBus bus;
    qputenv("DBUS_SESSION_BUS_ADDRESS", bus.address().toUtf8());
    const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
    const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
    const QString interface = QStringLiteral("org.freedesktop.portal.Settings");
    bus.mock({QStringLiteral("--session"), service, path, interface}, service);
    QDBusMessage add = QDBusMessage::createMethodCall(
        service, path, QStringLiteral("org.freedesktop.DBus.Mock"), QStringLiteral("AddMethod"));
    add << interface << QStringLiteral("Read") << QStringLiteral("ss") << QStringLiteral("v")
        << QStringLiteral("ret = dbus.UInt32(1, variant_level=2)");
    ASSERT_NE(bus.connection().call(add).type(), QDBusMessage::ErrorMessage);

    QTemporaryDir dir;
    DesktopAppearance appearance(dir.path());
    // A portal refuses a caller whose /proc it cannot read, so a closed process opens for its
    // answer.
    ::prctl(PR_SET_DUMPABLE, 0);
    appearance.watch();
    EXPECT_EQ(::prctl(PR_GET_DUMPABLE), 1);
    EXPECT_TRUE(
        QTest::qWaitFor([&] { return appearance.scheme() == Appearance::Scheme::Dark; }, 10'000));
    EXPECT_EQ(::prctl(PR_GET_DUMPABLE), 0);
    ::prctl(PR_SET_DUMPABLE, 1);
    bus.emitSignal(service, path, interface, QStringLiteral("SettingChanged"),
                   QStringLiteral("ssv"),
                   {QStringLiteral("org.freedesktop.appearance"), QStringLiteral("color-scheme"),
                    QVariant::fromValue(QDBusVariant(2U))});
    EXPECT_TRUE(
        QTest::qWaitFor([&] { return appearance.scheme() == Appearance::Scheme::Light; }, 10'000));
    QDBusConnection::disconnectFromBus(QStringLiteral("qt_default_session_bus"));
}

}  // namespace
}  // namespace keeper
