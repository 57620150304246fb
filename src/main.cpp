// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <QApplication>
#include <cstring>

#include "app/program_info.h"
#include "desktop_program.h"
#include "platform/linux/hardening.h"
#include "platform/linux/linux_folder_lock.h"

int main(int argc, char** argv) {
    using keeper::LinuxFolderLock;
    if (argc == 3 && std::strcmp(argv[1], LinuxFolderLock::kWatchdogOption) == 0) {
        return LinuxFolderLock::watchdogMain(argv[2]);
    }
    keeper::hardenProcess();
    const QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("morvane-keeper"));
    QApplication::setApplicationVersion(keeper::programVersion());
    QApplication::setDesktopFileName(QStringLiteral("morvane-keeper"));

    // A path with blanks that a shell or a desktop has split is one path all the same.
    keeper::DesktopProgram program;
    return program.run(QApplication::arguments().mid(1).join(QLatin1Char(' ')));
}
