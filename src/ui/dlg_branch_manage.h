// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "ui/widgets/session_dialog.h"

class QCheckBox;
class QLabel;
class QSlider;

namespace keeper {

class BranchManage;

/// The form of the lifetime on branch machines. It shows the state of its BranchManage and forwards
/// what the person does.
class dlgBranchManage final : public SessionDialog {
    Q_OBJECT

  public:
    explicit dlgBranchManage(BranchManage& logic);

  private:
    void build();
    void updateState();

    BranchManage& m_logic;
    QLabel* lblDaysLeft = nullptr;
    QCheckBox* chkIsOnOrigin = nullptr;
    QSlider* sldBrchAliveDays = nullptr;
    QLabel* lblDays = nullptr;
    QCheckBox* chkAutoRenewBrchDeadCount = nullptr;
};

}  // namespace keeper
