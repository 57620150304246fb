// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QDialog>
#include <array>

class QGroupBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QStackedWidget;

namespace keeper {

class KeyBox;
class KeyboardState;
class StrengthMeter;
class Wizard;

/// The new-user wizard. It shows the state of its Wizard and forwards what the person does.
class frmWizard final : public QDialog {
    Q_OBJECT

  public:
    /// Both must outlive the form. The form takes over `wizard.changed`.
    frmWizard(Wizard& wizard, const KeyboardState& keyboard, QWidget* parent = nullptr);
    ~frmWizard() override;

    /// Blocks until the wizard closes; true when a database of a new user is open.
    bool run();

  private:
    /// The controls of one of the two pages with a secret.
    struct SecretPage {
        KeyBox* txtSec = nullptr;
        QLineEdit* txtSecTip = nullptr;
        StrengthMeter* meter = nullptr;
    };

    QWidget* buildNamePage();
    QWidget* buildSecretPage(int page);
    QWidget* buildLastPage();
    [[nodiscard]] QLabel* textOf(int page);
    void connectSecretPage(int page);
    void updateState();
    void updateMeter(SecretPage& controls);
    void focusPage();

    Wizard& m_wizard;
    const KeyboardState& m_keyboard;
    QGroupBox* fraWizard = nullptr;
    QStackedWidget* m_pages = nullptr;
    QLineEdit* txtUserName = nullptr;
    QLineEdit* txtPrivateFolder = nullptr;
    QPushButton* cmdOpen = nullptr;
    std::array<SecretPage, 2> m_secrets;
    QPlainTextEdit* txtSummarize = nullptr;
    QLabel* lblWait = nullptr;
    QPushButton* cmdBack = nullptr;
    QPushButton* cmdNext = nullptr;
    QPushButton* cmdCancel = nullptr;
    int m_shownPage = -1;
};

}  // namespace keeper
