// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "guard/authentication.h"

#include "app/system.h"
#include "platform/prompt.h"

namespace keeper {
namespace {

/// So many strange fingers in a row end the form: the key can still be typed.
constexpr int kStrangeFingers = 3;

}  // namespace

Authentication::~Authentication() {
    m_ports.reader.stop();
}

void Authentication::begin(const QString& userName) {
    m_ports.reader.stop();
    m_state = State();
    m_state.userName = userName;
    m_result = Result::NotVerified;
    m_isClosed = false;
    m_strangeFingers = 0;
}

void Authentication::load(SecretType type) {
    begin(m_ports.system.p_userName());
    m_type = type;
    const bool isLoginKey = type == SecretType::LoginKey;
    m_state.title = isLoginKey ? QStringLiteral("验证登录密钥") : QStringLiteral("验证独立密码");
    m_state.label = isLoginKey ? QStringLiteral("登录密钥：") : QStringLiteral("独立密码：");
    m_state.hint =
        isLoginKey ? m_ports.system.p_lgnKeyTip() : m_ports.system.settings().p_idpPwdTip();
    m_state.isFingerShown = m_ports.system.p_fingerprint();
}

void Authentication::loadFinger(const QString& userName) {
    begin(userName);
    m_state.title = QStringLiteral("指纹登录");
    m_state.isFingerMode = true;
    m_state.isFingerShown = true;
    showFinger(QStringLiteral("请把手指放在指纹识别器上"), /*isRefused=*/false);
    if (!m_ports.reader.start(
            [this](FingerprintReader::Outcome outcome) { takeFinger(outcome); })) {
        m_ports.prompt.messageBox(QStringLiteral("指纹识别器现在不可用，请输入登录密钥。"),
                                  Prompt::Icon::Exclamation);
        close(Result::NotVerified);
    }
}

void Authentication::cmdOK(const QString& entry) {
    if (m_isClosed || m_state.isFingerMode) {
        return;
    }
    if (entry.isEmpty()) {
        m_ports.prompt.messageBox(QStringLiteral("您还未输入密码！"), Prompt::Icon::Exclamation);
        return;
    }
    using Outcome = IndependentPassword::Outcome;
    switch (
        m_ports.secret.IdentifySecret(entry, QStringLiteral("dlgAuthentication.IdentifySecret"))) {
        case Outcome::Right:
            if (m_type == SecretType::KeepPassword) {
                m_ports.system.p_plainIdpPwd(entry);
            }
            close(Result::Verified);
            break;
        case Outcome::UsedUp:
            close(Result::UsedUp);
            break;
        case Outcome::Wrong:
        case Outcome::Unknown:
            if (entryRefused) {
                entryRefused();
            }
            break;
    }
}

void Authentication::cmdCancel() {
    if (!m_isClosed) {
        close(Result::NotVerified);
    }
}

void Authentication::takeFinger(FingerprintReader::Outcome outcome) {
    switch (outcome) {
        case FingerprintReader::Outcome::Match:
            close(Result::Verified);
            break;
        case FingerprintReader::Outcome::NoMatch:
            if (++m_strangeFingers < kStrangeFingers) {
                showFinger(QStringLiteral("指纹不匹配，请再试一次"), /*isRefused=*/true);
                break;
            }
            m_ports.reader.stop();
            m_ports.prompt.messageBox(QStringLiteral("指纹验证失败，请输入登录密钥。"),
                                      Prompt::Icon::Exclamation);
            close(Result::NotVerified);
            break;
        case FingerprintReader::Outcome::TryAgain:
            showFinger(QStringLiteral("没有读清指纹，请把手指放正后再试一次"),
                       /*isRefused=*/false);
            break;
        case FingerprintReader::Outcome::Disconnected:
            m_ports.prompt.messageBox(QStringLiteral("指纹识别器已断开，请输入登录密钥。"),
                                      Prompt::Icon::Exclamation);
            close(Result::NotVerified);
            break;
    }
}

void Authentication::showFinger(const QString& text, bool isRefused) {
    m_state.fingerText = text;
    m_state.isFingerRefused = isRefused;
    notify();
}

void Authentication::close(Result result) {
    m_ports.reader.stop();
    m_result = result;
    m_isClosed = true;
    notify();
}

void Authentication::notify() {
    if (changed) {
        changed();
    }
}

}  // namespace keeper
