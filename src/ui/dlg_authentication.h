// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QDialog>

#include "app/open_forms.h"

class QLabel;
class QLineEdit;
class QPushButton;

namespace keeper {

class Authentication;
class KeyBox;
class KeyboardState;

/// The form that asks for the independent password, or waits for a finger. It shows the state of
/// its Authentication and forwards what the person does.
class dlgAuthentication final : public QDialog, public OpenForm {
    Q_OBJECT

  public:
    /// Both must outlive the form, which takes over `logic.changed` and `logic.entryRefused`.
    dlgAuthentication(Authentication& logic, const KeyboardState& keyboard,
                      QWidget* parent = nullptr);
    ~dlgAuthentication() override;

    /// Blocks until the verification is decided; the decision is in the Authentication.
    void run();

    [[nodiscard]] QString formName() const override { return objectName(); }
    void closeForm() override;
    void activateForm() override;

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
    QPushButton* cmdOK = nullptr;
    QPushButton* cmdCancel = nullptr;
};

}  // namespace keeper
