// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/frm_main.h"

#include <QStatusBar>

#include "app/program_info.h"

namespace keeper {

frmMain::frmMain(QWidget* parent) : QMainWindow(parent) {
    setObjectName(QStringLiteral("frmMain"));
    setWindowTitle(programTitle());
    statusBar();
    resize(fontMetrics().averageCharWidth() * 140, fontMetrics().height() * 38);
}

}  // namespace keeper
