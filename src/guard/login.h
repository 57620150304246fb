// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <QStringList>
#include <functional>
#include <memory>

#include "app/session_forms.h"

namespace keeper {

class Clock;
class FileOperator;
class Prompt;
class Regedit;
class User;
class Users;

/// Everything that the login form shows, as one value.
struct LoginState {
    enum class Tone { Normal, Warning, Refused };

    QStringList userNames;
    int currentUser = -1;
    bool hasUser = false;
    /// "登 录", or "新 建" while there is no user.
    QString okCaption;
    bool autoLogin = false;
    bool remLgnKey = false;
    /// The choice of logging in by a finger, where there is a reader.
    bool isFingerprintOffered = false;
    bool fingerprint = false;
    /// What the key box shows: empty, or blind characters for a key that nobody typed.
    QString keyText;
    QString keyToolTip;
    bool isPathShown = false;
    bool isPathMissing = false;
    QString pathText;
    QString pathToolTip;
    QString chancesText;
    Tone chancesTone = Tone::Normal;
};

/// The rules of the login form: picks the user, takes the key, counts failed attempts and applies
/// the ban of 24 hours. It never opens a database; its result is a user whose key passed the check.
///
/// The widget calls the operations and shows state() after each `changed`.
class Login {
  public:
    using Result = SessionForms::LoginResult;
    enum class Focus { Key, RememberKey };

    struct Ports {
        Prompt& prompt;
        Clock& clock;
        Users& users;
        FileOperator& files;
        Regedit& registry;
        std::function<bool()> isCapsLockOn;
        std::function<void()> beep;
        /// Opens a folder in the desktop's file manager.
        std::function<void(const QString&)> openFolder;
        /// Whether a finger can be verified on this machine at all; empty means no.
        std::function<bool()> hasFingerprintReader;
        /// Looks for one without waiting, to offer the choice of it.
        std::function<void(std::function<void(bool isFound)>)> lookForReader;
        /// The fingerprint dialog for the user of that name, which it may replace by the one it
        /// verified.
        std::function<bool(QString& userName)> verifyFingerprint;
        /// Makes `user` the user of the session.
        std::function<void(const std::shared_ptr<User>&)> beginSession;
    };

    explicit Login(Ports ports);
    ~Login();
    Login(const Login&) = delete;
    Login& operator=(const Login&) = delete;

    /// Folder of the database that the command line named; used once.
    void setStartFolder(const QString& folder) { m_startFolder = folder; }
    /// A new showing of the form: users are read into the list and the first one selected.
    void load();
    /// After the form is visible; may log in by itself. Returns where the focus belongs.
    Focus activate();

    [[nodiscard]] const LoginState& state() const { return m_state; }
    [[nodiscard]] Result m_result() const { return m_resultValue; }
    [[nodiscard]] bool isClosed() const { return m_isClosed; }
    /// Whether the box holds what the person typed, which a new state must not overwrite.
    [[nodiscard]] bool hasTypedKey() const {
        return !m_mirror.isEmpty() && m_state.keyText.isEmpty();
    }

    void selectUser(int index);
    void InitUserInterface(int state);
    /// Every change of the key box by the user.
    void setKeyText(const QString& text);
    void setAutoLogin(bool isOn);
    void setRemLgnKey(bool isOn);
    void setFingerprint(bool isOn);
    void OnLoginClicked();
    void cmdNewBuild();
    void cmdOpen();
    /// Selects the user of the database at `path`, as if it had been opened.
    void lookAt(const QString& path);
    void cmdRemove();
    void cmdCancel();
    void mn_about();
    void openPath();
    bool LoginThroughFingerprint();
    /// Once a second while the form is up, so that the time left of a ban counts down.
    void tick();

    bool CheckValid();
    bool VerifyTypedKey();
    bool IsBanned();
    bool ShowChances();
    /// False when the count could not be written.
    bool CountFailedAttempt();
    void DeleteUser();

    /// state() has changed, or the form is to close.
    std::function<void()> changed;

  private:
    void close(Result result);
    void notify();
    void ShowMessage(const QString& text, LoginState::Tone tone);
    [[nodiscard]] bool attemptsAreUsedUp() const;
    /// Whether the key need not be given. A user with a fingerprint gives the finger or the key.
    [[nodiscard]] bool needsNoKey() const;
    /// A finger stands for the remembered key, so there must be one.
    [[nodiscard]] bool offersFingerprint() const;
    /// A machine without a hash tests the key by unsealing, which destroys under a wrong one: the
    /// person must know before.
    [[nodiscard]] bool acceptsBlindTest();
    /// Whether the hash of the record is that of the sealed file's key, as far as can be told. If
    /// not, the user goes on as one whom this machine does not know.
    [[nodiscard]] bool knowsKeyOfFile();
    /// Whether the person may go on with what the form shows. Else another instance has changed
    /// what it stands on: the form shows that now, and the person is told.
    [[nodiscard]] bool isStillGood();
    /// Takes over what another instance has written for the selected user. What the person typed
    /// and chose stays; false when it could not, since the form spoke of another folder or of a key
    /// that it held.
    bool followRecord();
    /// True when the record had changed. The user keeps the folder where the form has moved to,
    /// unless that would lead a working copy to it.
    bool takeOver(User& user) const;
    /// False when the folder that the program was started with led to no user.
    bool takeStartFolder();
    /// Row of the user of that name, who is added for this run when this machine does not know it.
    /// -1 when moveTo() refuses.
    int userAt(const QString& name, const QString& folder);
    /// Lets a known user have another folder: all that is known goes along when the old one is not
    /// there any more, and only the name when both are. The folder of the record is as recorded.
    /// False, and a message, when that is refused.
    bool moveTo(User& user, const QString& folder);
    /// This machine knows the user's name alone from here on.
    static void forgetKeyOf(User& user);
    void showPath();

    Ports m_ports;
    LoginState m_state;
    QString m_startFolder;
    /// The key as typed, beside a box that may show blind characters.
    QString m_mirror;
    std::shared_ptr<User> m_user;
    Result m_resultValue = Result::End;
    bool m_isClosed = false;
    bool m_isActivated = false;
    bool m_hasAutoLoggedIn = false;
    /// The key has been taken for a database that this machine has no hash of.
    bool m_isBlindTest = false;
};

}  // namespace keeper
