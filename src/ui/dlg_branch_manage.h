// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QDialog>

#include "app/open_forms.h"

class QCheckBox;
class QLabel;
class QPushButton;
class QSlider;

namespace keeper {

class BranchManage;

/// The form of the lifetime on branch machines. It shows the state of its BranchManage and forwards
/// what the person does.
class dlgBranchManage final : public QDialog, public OpenForm {
    Q_OBJECT

  public:
    explicit dlgBranchManage(BranchManage& logic, QWidget* parent = nullptr);

    [[nodiscard]] QString formName() const override { return objectName(); }
    void closeForm() override { reject(); }
    void activateForm() override;

  private:
    void build();
    void updateState();

    BranchManage& m_logic;
    QLabel* lblDaysLeft = nullptr;
    QCheckBox* chkIsOnOrigin = nullptr;
    QSlider* sldBrchAliveDays = nullptr;
    QLabel* lblDays = nullptr;
    QCheckBox* chkAutoRenewBrchDeadCount = nullptr;
    QPushButton* cmdOK = nullptr;
    QPushButton* cmdCancel = nullptr;
};

}  // namespace keeper
