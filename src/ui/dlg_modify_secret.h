// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "guard/secret_modification.h"
#include "ui/widgets/session_dialog.h"

class QGroupBox;
class QLabel;
class QLineEdit;

namespace keeper {

class KeyBox;
class KeyboardState;
class StrengthMeter;

/// The form that changes the login key or the independent password.
class dlgModifySecret final : public SessionDialog {
    Q_OBJECT

  public:
    /// Shows what `logic` was loaded for; both must outlive the form.
    dlgModifySecret(SecretModification& logic, const KeyboardState& keyboard);

    void done(int result) override;

  private:
    QWidget* buildFields();
    QBoxLayout* buildCommands();
    KeyBox* makeBox(const char* name, const QString& what);
    void updateState();
    void measure();
    void takeOK();
    void takeForget();
    void wipeSecrets();
    void focus(SecretModification::Field field);

    SecretModification& m_logic;
    const KeyboardState& m_keyboard;
    KeyBox* txtOriginal = nullptr;
    KeyBox* txtNew1 = nullptr;
    KeyBox* txtNew2 = nullptr;
    QLineEdit* txtSecTip = nullptr;
    StrengthMeter* m_meter = nullptr;
    QPushButton* cmdShowExplicitly = nullptr;
    QPushButton* cmdForget = nullptr;
};

}  // namespace keeper
