// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QDialog>

#include "app/open_forms.h"

class QCheckBox;
class QLabel;
class QProgressBar;
class QPushButton;

namespace keeper {

class ColumnSwitch;
class KeyBox;
class KeyboardState;

/// The form of column encryption. It shows the state of its ColumnSwitch and forwards what the
/// person does.
class dlgColumnCryption final : public QDialog, public OpenForm {
    Q_OBJECT

  public:
    /// Both must outlive the form, which takes over `logic.changed` and `logic.emptyEntry`.
    dlgColumnCryption(ColumnSwitch& logic, const KeyboardState& keyboard,
                      QWidget* parent = nullptr);
    ~dlgColumnCryption() override;

    [[nodiscard]] QString formName() const override { return objectName(); }
    void closeForm() override;
    void activateForm() override;

    /// A running conversion is stopped instead, and the form stays.
    void reject() override;

  private:
    void build();
    void updateState();

    ColumnSwitch& m_logic;
    const KeyboardState& m_keyboard;
    QLabel* lblIllustration = nullptr;
    KeyBox* txtIdpPwd = nullptr;
    QCheckBox* chkCryptionStatus = nullptr;
    QProgressBar* pgbHandleState = nullptr;
    QPushButton* cmdCancel = nullptr;
};

}  // namespace keeper
