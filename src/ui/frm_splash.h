// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QWidget>

namespace keeper {

/// The first window: the program's name while the prerequisites are checked. It never takes focus.
class frmSplash : public QWidget {
    Q_OBJECT

  public:
    explicit frmSplash(QWidget* parent = nullptr);

  protected:
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace keeper
