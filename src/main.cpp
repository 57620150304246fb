// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <QApplication>

#include "app/program_info.h"
#include "ui/frm_main.h"
#include "ui/frm_splash.h"

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("morvane-keeper"));
    QApplication::setApplicationDisplayName(keeper::programTitle());
    QApplication::setApplicationVersion(keeper::programVersion());

    keeper::frmSplash splash;
    splash.show();
    QApplication::processEvents();

    keeper::frmMain window;
    window.show();
    splash.close();
    return QApplication::exec();
}
