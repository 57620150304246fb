// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QMainWindow>

namespace keeper {

/// The main window.
class frmMain : public QMainWindow {
    Q_OBJECT

  public:
    explicit frmMain(QWidget* parent = nullptr);
};

}  // namespace keeper
