// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QDialog>
#include <QStringList>

class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;
class QTimer;
class QToolButton;

namespace keeper {

class KeyBox;
class KeyboardState;
class Login;
struct LoginState;

/// The login form. It shows the state of its Login and forwards what the person does.
class frmLogin final : public QDialog {
    Q_OBJECT

  public:
    /// Both must outlive the form. The form takes over `login.changed`.
    frmLogin(Login& login, const KeyboardState& keyboard, QWidget* parent = nullptr);
    ~frmLogin() override;

    /// Blocks until the login is decided; the decision is in the Login.
    void run();

  protected:
    void showEvent(QShowEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

  private:
    void build();
    void activate();
    QWidget* buildHead();
    QWidget* buildForm();
    QWidget* buildCommands();
    void connectControls();
    void updateState();
    /// The person changed the key box.
    void takeKey();
    /// Empties the key box, or fills it with what stands for a key that nobody typed.
    void showKey();
    void showUsers(const LoginState& state);
    void showChances(const LoginState& state);

    Login& m_login;
    const KeyboardState& m_keyboard;
    QComboBox* cboUsers = nullptr;
    KeyBox* txtLgnKey = nullptr;
    QCheckBox* chkAutoLogin = nullptr;
    QCheckBox* chkRemLgnKey = nullptr;
    QCheckBox* chkFingerprint = nullptr;
    QToolButton* lblPath = nullptr;
    QLabel* lblChances = nullptr;
    QPushButton* lblOK = nullptr;
    QPushButton* cmdNewBuild = nullptr;
    QPushButton* cmdOpen = nullptr;
    QPushButton* cmdRemove = nullptr;
    QPushButton* cmdCancel = nullptr;
    QTimer* tmrFlash = nullptr;
    bool m_isActivated = false;
    QStringList m_shownUsers;
};

}  // namespace keeper
