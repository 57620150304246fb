// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "ui/widgets/session_dialog.h"

class QLabel;
class QLineEdit;

namespace keeper {

class Authentication;
class KeyBox;
class KeyboardState;

/// The form that asks for the independent password, or waits for a finger. It shows the state of
/// its Authentication and forwards what the person does.
class dlgAuthentication final : public SessionDialog {
    Q_OBJECT

  public:
    /// Both must outlive the form, which takes over `logic.changed` and `logic.entryRefused`.
    dlgAuthentication(Authentication& logic, const KeyboardState& keyboard);
    ~dlgAuthentication() override;

    /// Blocks until the verification is decided; the decision is in the Authentication.
    void run(System& system);

    void reject() override;

  protected:
    void changeEvent(QEvent* event) override;

  private:
    void build();
    QWidget* buildFields();
    void updateState();
    void showFinger();

    Authentication& m_logic;
    const KeyboardState& m_keyboard;
    QLabel* imgFingerprint = nullptr;
    QLineEdit* txtUserName = nullptr;
    QLabel* lblSecret = nullptr;
    KeyBox* txtSecret = nullptr;
    QLabel* lblFingerprint = nullptr;
};

}  // namespace keeper
