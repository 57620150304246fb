// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/linux/x11_keyboard_state.h"

#include <gtest/gtest.h>

#include <QProcess>
#include <QSignalSpy>
#include <QTest>

// Last: it defines words such as Bool and None.
#include <X11/XKBlib.h>

namespace keeper {
namespace {

TEST(X11KeyboardState, TellsCapsLockNowAndAsItChanges) {
    QProcess server;
    server.start(QStringLiteral("Xvfb"), {QStringLiteral("-displayfd"), QStringLiteral("1"),
                                          QStringLiteral("-nolisten"), QStringLiteral("tcp")});
    ASSERT_TRUE(server.waitForReadyRead(20'000));
    const QByteArray name = ':' + server.readLine().trimmed();
    qputenv("DISPLAY", name);
    Display* person = XOpenDisplay(name.constData());
    ASSERT_NE(person, nullptr);
    {
        X11KeyboardState keyboard;
        QSignalSpy changes(&keyboard, &KeyboardState::capsLockChanged);
        EXPECT_FALSE(keyboard.capsLock());
        for (const bool isOn : {true, false}) {
            XkbLockModifiers(person, XkbUseCoreKbd, LockMask, isOn ? LockMask : 0);
            XSync(person, 0);
            EXPECT_EQ(keyboard.capsLock(), isOn);
            EXPECT_TRUE(QTest::qWaitFor([&] { return !changes.isEmpty(); }, 10'000));
            EXPECT_EQ(changes.takeFirst().first().toBool(), isOn);
        }
    }
    XCloseDisplay(person);
    server.kill();
    server.waitForFinished();

    qputenv("DISPLAY", ":none");
    EXPECT_FALSE(X11KeyboardState().capsLock());
}

}  // namespace
}  // namespace keeper
