// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <QApplication>

#include "app/program_info.h"
#include "platform/linux/desktop_appearance.h"
#include "platform/linux/hardening.h"
#include "platform/user_folders.h"
#include "ui/frm_main.h"
#include "ui/frm_splash.h"
#include "ui/theme/theme.h"

int main(int argc, char** argv) {
    keeper::hardenProcess();
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("morvane-keeper"));
    QApplication::setApplicationDisplayName(keeper::programTitle());
    QApplication::setApplicationVersion(keeper::programVersion());
    QApplication::setDesktopFileName(QStringLiteral("morvane-keeper"));
    keeper::DesktopAppearance appearance(keeper::UserFolders::ofSystem().configuration);
    keeper::Theme theme(application, appearance);

    keeper::frmSplash splash;
    splash.show();
    QApplication::processEvents();

    keeper::frmMain window;
    window.show();
    splash.close();
    appearance.watch();
    return QApplication::exec();
}
