// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <gtest/gtest.h>

#include <QLabel>

#include "app/program_info.h"
#include "ui/frm_main.h"
#include "ui/frm_splash.h"

namespace keeper {
namespace {

TEST(FirstWindows, SplashNamesTheProgramWithoutClippingAndTakesNoFocus) {
    frmSplash splash;
    splash.show();
    bool named = false;
    for (const QLabel* label : splash.findChildren<QLabel*>()) {
        named = named || label->text() == programTitle();
        EXPECT_GE(label->width(), label->sizeHint().width());
    }
    EXPECT_TRUE(named);
    EXPECT_TRUE(splash.windowFlags().testFlag(Qt::WindowDoesNotAcceptFocus));
}

TEST(FirstWindows, MainWindowOpensUnderItsTitle) {
    frmMain window;
    window.show();
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(window.windowTitle(), programTitle());
}

}  // namespace
}  // namespace keeper
