// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "ui/widgets/session_dialog.h"

class QCheckBox;
class QLabel;
class QProgressBar;

namespace keeper {

class ColumnSwitch;
class KeyBox;
class KeyboardState;

/// The form of column encryption. It shows the state of its ColumnSwitch and forwards what the
/// person does.
class dlgColumnCryption final : public SessionDialog {
    Q_OBJECT

  public:
    /// Both must outlive the form, which takes over `logic.changed` and `logic.emptyEntry`.
    dlgColumnCryption(ColumnSwitch& logic, const KeyboardState& keyboard);
    ~dlgColumnCryption() override;

    void closeForm() override;

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
};

}  // namespace keeper
