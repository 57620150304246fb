// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <gtest/gtest.h>

#include <QLabel>
#include <QProgressBar>

#include "app/program_info.h"
#include "ui/dlg_connecting.h"
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

TEST(FirstWindows, MainWindowAsksItsJudgeBeforeItCloses) {
    frmMain window;
    window.show();
    EXPECT_EQ(window.windowTitle(), programTitle());
    window.SetCaption(QStringLiteral("张三"));
    EXPECT_EQ(window.windowTitle(), programTitle() + QStringLiteral(" - 张三"));
    bool mayClose = false;
    window.setCloseJudge([&](frmMain::CloseSource source) {
        EXPECT_EQ(source, frmMain::CloseSource::Program);
        return mayClose;
    });
    EXPECT_FALSE(window.close());
    EXPECT_TRUE(window.isVisible());
    mayClose = true;
    EXPECT_TRUE(window.close());
}

TEST(FirstWindows, StatusPanelsShowTheirTextsAndHideWhenEmpty) {
    frmMain window;
    window.show();
    const auto* runTime = window.findChild<QLabel*>(QStringLiteral("runTime"));
    ASSERT_NE(runTime, nullptr);
    EXPECT_FALSE(runTime->isVisible());
    window.statusPanels().setPanel(StatusPanel::RunTime, QStringLiteral("5秒"));
    EXPECT_TRUE(runTime->isVisible());
    EXPECT_EQ(runTime->text(), QStringLiteral("5秒"));
    EXPECT_EQ(runTime->accessibleName(), QStringLiteral("运行时间：5秒"));
    const int width = window.width();
    window.statusPanels().setPanel(StatusPanel::Message, QString(2000, u'长'));
    EXPECT_EQ(window.width(), width);
    EXPECT_LT(window.minimumSizeHint().width(), width);
}

TEST(FirstWindows, ConnectingTellsModeAndProgressAndCannotBeClosedByThePerson) {
    dlgConnecting window;
    window.SetMsg(CryptMode::Seal);
    EXPECT_TRUE(window.isVisible());
    EXPECT_FALSE(static_cast<QWidget&>(window).close());
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(window.message(), QStringLiteral("正在加密……"));
    window.setProgress(142);
    EXPECT_EQ(window.findChild<QProgressBar*>()->value(), 100);
    EXPECT_EQ(window.findChild<QLabel*>(QStringLiteral("lblPercent"))->text(),
              QStringLiteral("100%"));
    window.SetMsg(CryptMode::SealAfterFailedBackup);
    EXPECT_EQ(window.findChild<QLabel*>(QStringLiteral("lblMsg"))->font().pointSize(), 15);
    EXPECT_EQ(window.findChild<QProgressBar*>()->value(), 0);
    window.close();
    EXPECT_FALSE(window.isVisible());
}

}  // namespace
}  // namespace keeper
