// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/frm_main.h"

#include <QCloseEvent>

#include "app/program_info.h"

namespace keeper {

frmMain::frmMain(QWidget* parent) : QMainWindow(parent), m_panels(new StatusPanelBar(this)) {
    setObjectName(QStringLiteral("frmMain"));
    setStatusBar(m_panels);
    SetCaption({});
    resize(fontMetrics().averageCharWidth() * 140, fontMetrics().height() * 38);
}

void frmMain::SetCaption(const QString& userName) {
    setWindowTitle(userName.isEmpty() ? programTitle()
                                      : programTitle() + QStringLiteral(" - ") + userName);
}

void frmMain::bringToFront() {
    setWindowState((windowState() & ~Qt::WindowMinimized) | Qt::WindowActive);
    show();
    raise();
    activateWindow();
}

void frmMain::closeEvent(QCloseEvent* event) {
    const CloseSource source = event->spontaneous() ? CloseSource::Person : CloseSource::Program;
    event->setAccepted(!m_closeJudge || m_closeJudge(source));
}

}  // namespace keeper
