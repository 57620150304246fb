// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "guard/login.h"

#include <QFileInfo>
#include <utility>

#include "app/private_folder.h"
#include "app/program_info.h"
#include "app/user.h"
#include "app/users.h"
#include "crypto/code_page.h"
#include "crypto/secure_wipe.h"
#include "platform/file_hold.h"
#include "platform/prompt.h"
#include "store/failure.h"

namespace keeper {

Login::Login(Ports ports) : m_ports(std::move(ports)) {}

Login::~Login() {
    secureWipe(m_mirror);
}

void Login::load() {
    m_isClosed = false;
    m_isActivated = false;
    m_resultValue = Result::End;
    if (m_user != nullptr && std::exchange(m_isBlindTest, false)) {
        // The test came to no verdict, so the key is no measure for the next one, and must not
        // come back as a remembered one that nobody is asked about.
        forgetKeyOf(*m_user);
    }
    m_user = nullptr;
    m_state = LoginState();
    m_state.userNames = m_ports.users.names();
    InitUserInterface(0);
}

Login::Focus Login::activate() {
    if (std::exchange(m_isActivated, true)) {
        return Focus::Key;
    }
    if (m_ports.lookForReader) {
        m_ports.lookForReader([this](bool isFound) {
            m_state.isFingerprintOffered = isFound;
            notify();
        });
    }
    if (!takeStartFolder()) {
        // Whoever asked for a certain database is not to find another user's open.
        m_hasAutoLoggedIn = true;
    }
    if (m_state.userNames.isEmpty()) {
        InitUserInterface(0);
        return Focus::Key;
    }
    if (m_state.currentUser < 0) {
        const auto last = m_state.userNames.indexOf(m_ports.users.p_defaultUserName());
        selectUser(static_cast<int>(qMax(qsizetype{0}, last)));
    }
    // Once: a database that cannot be opened would keep the person from ever reaching the form.
    if (m_user->p_autoLogin() && !std::exchange(m_hasAutoLoggedIn, true)) {
        OnLoginClicked();
    } else if (offersFingerprint()) {
        if (LoginThroughFingerprint()) {
            OnLoginClicked();
        }
    } else if (m_ports.isCapsLockOn && m_ports.isCapsLockOn()) {
        m_ports.prompt.messageBox(QStringLiteral("注意：大写锁定已打开！"),
                                  Prompt::Icon::Exclamation);
    }
    return m_user != nullptr && needsNoKey() ? Focus::RememberKey : Focus::Key;
}

void Login::selectUser(int index) {
    if (index < 0 || index >= m_state.userNames.size()) {
        return;
    }
    m_state.currentUser = index;
    m_user = m_ports.users.GetUser(m_state.userNames.at(index));
    takeOver(*m_user);
    InitUserInterface(1);
}

void Login::InitUserInterface(int state) {
    m_state.hasUser = state == 1 && m_user != nullptr;
    m_state.okCaption =
        m_state.userNames.isEmpty() ? QStringLiteral("新 建") : QStringLiteral("登 录");
    m_state.autoLogin = m_state.hasUser && m_user->p_autoLogin();
    m_state.remLgnKey = m_state.hasUser && m_user->p_remLgnKey();
    m_state.fingerprint = m_state.hasUser && m_user->p_fingerprint();
    secureWipe(m_mirror);
    m_state.keyText = m_state.hasUser && needsNoKey() ? QStringLiteral("*") : QString();
    m_state.keyToolTip = m_state.hasUser ? m_user->p_lgnKeyTip() : QString();
    m_state.chancesText.clear();
    m_state.chancesTone = LoginState::Tone::Normal;
    showPath();
    if (m_state.hasUser && !IsBanned()) {
        ShowChances();
    }
    notify();
}

void Login::showPath() {
    m_state.isPathShown = m_state.hasUser && !m_user->p_hideDBPath();
    m_state.pathText = m_state.isPathShown ? m_user->p_kvdbFile() : QString();
    m_state.isPathMissing = m_state.isPathShown && !QFileInfo(m_state.pathText).isFile();
    m_state.pathToolTip = m_state.isPathMissing ? QStringLiteral("密码数据库不存在")
                                                : QStringLiteral("点击定位私人文件夹");
}

void Login::openPath() {
    if (m_state.isPathShown && !m_state.isPathMissing) {
        m_ports.openFolder(m_user->p_privateFolder());
    }
}

void Login::setKeyText(const QString& text) {
    secureWipe(m_mirror);
    // A copy of our own: the box wipes and changes its buffer.
    m_mirror = QString(text.constData(), text.size());
    m_state.keyText.clear();
}

void Login::setAutoLogin(bool isOn) {
    m_state.autoLogin = isOn;
    m_state.remLgnKey = m_state.remLgnKey || isOn;
    m_state.fingerprint = m_state.fingerprint && !isOn;
    notify();
}

void Login::setFingerprint(bool isOn) {
    m_state.fingerprint = isOn;
    // A finger stands for the remembered key, and is pointless where nothing is asked.
    m_state.remLgnKey = m_state.remLgnKey || isOn;
    m_state.autoLogin = m_state.autoLogin && !isOn;
    notify();
}

void Login::setRemLgnKey(bool isOn) {
    m_state.remLgnKey = isOn;
    m_state.autoLogin = m_state.autoLogin && isOn;
    m_state.fingerprint = m_state.fingerprint && isOn;
    notify();
}

void Login::OnLoginClicked() {
    if (m_state.userNames.isEmpty()) {
        close(Result::Wizard);
        return;
    }
    if (m_user == nullptr || !isStillGood()) {
        return;
    }
    // A ban may have ended since the last tick: the attempts must be there before one is used.
    const bool hasChances = !IsBanned() && ShowChances();
    notify();
    if (!hasChances) {
        return;
    }
    // The question may stand for long.
    if (!CheckValid() || !knowsKeyOfFile() || !acceptsBlindTest() || !isStillGood()) {
        return;
    }
    if (VerifyTypedKey()) {
        m_user->p_autoLogin(m_state.autoLogin);
        m_user->p_remLgnKey(m_state.remLgnKey);
        m_user->p_fingerprint(m_state.fingerprint && !m_state.autoLogin);
        m_ports.beginSession(m_user);
        close(Result::LogIn);
        return;
    }
    if (!CountFailedAttempt()) {
        m_ports.prompt.messageBox(
            QStringLiteral("登录密钥错误！\r\n失败次数无法记录，因此不能再试。请检查配置文件夹是否"
                           "可写、磁盘是否已满。"),
            Prompt::Icon::Exclamation);
        close(Result::End);
        return;
    }
    const auto answer = m_ports.prompt.messageBox(QStringLiteral("登录密钥错误！是否再试一次？"),
                                                  Prompt::Icon::Exclamation, Prompt::Buttons::YesNo,
                                                  QString(), Prompt::Answer::Yes);
    if (answer != Prompt::Answer::Yes) {
        close(Result::End);
        return;
    }
    secureWipe(m_mirror);
    m_state.keyText.clear();
    m_state.keyToolTip.clear();
    ShowChances();
    notify();
}

bool Login::acceptsBlindTest() {
    return needsNoKey() || !m_user->p_hashLgnKey().isEmpty() ||
           m_ports.prompt.messageBox(
               QStringLiteral("本机没有登录过这个密码数据库，无法预先核对密钥。\r\n"
                              "密钥错误时，密码数据库及私人文件夹会被紧急销毁。"
                              "请确认已有备份，确定用刚才输入的密钥登录吗？"),
               Prompt::Icon::Exclamation, Prompt::Buttons::YesNo) == Prompt::Answer::Yes;
}

bool Login::VerifyTypedKey() {
    if (needsNoKey()) {
        return true;
    }
    // No database has a key with other characters, so that not even the unsealing need try it.
    if (!isInCodePage(m_mirror) ||
        (!m_user->p_hashLgnKey().isEmpty() && !m_user->CheckLgnKey(m_mirror))) {
        return false;
    }
    // Without a hash this machine has never seen the database: the unsealing is the test.
    m_isBlindTest = m_user->p_hashLgnKey().isEmpty();
    m_user->p_plainLgnKey(m_mirror);
    return true;
}

bool Login::CheckValid() {
    const auto refuse = [this](const QString& text) {
        m_ports.prompt.messageBox(text, Prompt::Icon::Exclamation);
        return false;
    };
    return guarded(
        m_ports.prompt, QStringLiteral("frmLogin.CheckValid"), false,
        [&] {
            const QString path = m_user->p_kvdbFile();
            const bool isThere = QFileInfo(path).isFile();
            // What a crash has left opens without it, and is all that there is.
            if (!isThere && !QFileInfo(m_user->p_activeFile()).isFile()) {
                return refuse(QStringLiteral("密码数据库不存在！"));
            }
            if (!path.endsWith(privatefolder::databaseExtension())) {
                return refuse(QStringLiteral("数据库类型不合法！"));
            }
            if (m_mirror.isEmpty() && m_state.keyText.isEmpty()) {
                return refuse(QStringLiteral("您忘记输入密钥了！"));
            }
            if (isThere && (!QFileInfo(path).isReadable() || isFileHeld(path))) {
                return refuse(QStringLiteral("[%1]:该密码数据库已被占用！").arg(path));
            }
            return true;
        },
        Prompt::Icon::Exclamation);
}

bool Login::needsNoKey() const {
    return m_user->p_remLgnKey() && !m_user->p_fingerprint();
}

bool Login::offersFingerprint() const {
    return m_user->p_fingerprint() && m_user->p_remLgnKey() && m_ports.hasFingerprintReader &&
           m_ports.hasFingerprintReader();
}

bool Login::LoginThroughFingerprint() {
    return guarded(
        m_ports.prompt, QStringLiteral("frmLogin.LoginThroughFingerprint"), false,
        [&] {
            QString userName = m_state.userNames.value(m_state.currentUser);
            if (!m_ports.verifyFingerprint(userName) || !isStillGood()) {
                return false;
            }
            if (userName != m_user->p_userName()) {
                m_ports.prompt.messageBox(QStringLiteral("用户名错误！"),
                                          Prompt::Icon::Exclamation);
                return false;
            }
            QString key = m_user->p_plainLgnKey();
            const WipeGuard wipe(key);
            setKeyText(key);
            m_state.keyText = QString(key.size(), QLatin1Char('*'));
            notify();
            return true;
        },
        Prompt::Icon::Exclamation);
}

void Login::cmdNewBuild() {
    close(Result::Wizard);
}

void Login::mn_about() {
    m_ports.prompt.messageBox(aboutText(), Prompt::Icon::Information, Prompt::Buttons::Ok,
                              QStringLiteral("关于"));
}

void Login::cmdCancel() {
    close(Result::End);
}

void Login::ShowMessage(const QString& text, LoginState::Tone tone) {
    m_state.chancesText = text;
    m_state.chancesTone = tone;
}

void Login::close(Result result) {
    m_resultValue = result;
    m_isClosed = true;
    secureWipe(m_mirror);
    notify();
}

void Login::notify() {
    if (changed) {
        changed();
    }
}

}  // namespace keeper
