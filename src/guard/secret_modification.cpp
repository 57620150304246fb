// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "guard/secret_modification.h"

#include <optional>
#include <utility>

#include "app/system.h"
#include "guard/new_user.h"
#include "guard/secure_questions.h"
#include "platform/clock.h"
#include "platform/database.h"
#include "platform/prompt.h"
#include "store/failure.h"
#include "store/sealed_database.h"
#include "store/sys_logs.h"

namespace keeper {
namespace {

constexpr int kShortestSecret = 6;
constexpr int kLongestKey = 30;
constexpr int kLongestPassword = 32;

constexpr int kLoginKeyModified = 17;
constexpr int kIndependentPasswordModified = 18;
/// Counts of both statuses.
constexpr int kTipOnly = -1;
constexpr int kSecretItself = 0;

}  // namespace

SecretModification::SecretModification(Ports ports) : m_ports(std::move(ports)) {}

void SecretModification::load(KeyType type) {
    m_type = type;
    m_isPlain = false;
    m_isReset = false;
    m_isRenewed = false;
}

QString SecretModification::title() const {
    return m_type == KeyType::LoginKey ? QStringLiteral("修改登录密钥")
                                       : QStringLiteral("修改独立密码");
}

QString SecretModification::lblPwdLength() const {
    return m_type == KeyType::LoginKey ? QStringLiteral("登录密钥长度为6-30位。")
                                       : QStringLiteral("独立密码长度最长为32位。");
}

QString SecretModification::tip() const {
    const Settings& settings = m_ports.system.settings();
    return m_type == KeyType::LoginKey ? settings.p_lgnKeyTip() : settings.p_idpPwdTip();
}

QString SecretModification::showCaption() const {
    return m_isPlain ? QStringLiteral("隐式显示(&S)") : QStringLiteral("显式显示(&S)");
}

bool SecretModification::cmdForget() {
    if (m_ports.system.settings().p_idpPwdSwitch()) {
        warn(QStringLiteral("仅当列级加密关闭时，安全问题才可用于重设独立密码。"));
        return false;
    }
    const std::optional<bool> canResume = m_ports.questions.CanResumePwd();
    if (!canResume) {
        return false;
    }
    if (!*canResume) {
        warn(QStringLiteral("至少设置三个安全问题后，才可以用它们重设独立密码。"));
        return false;
    }
    if (!m_ports.answerQuestions()) {
        return false;
    }
    m_isReset = true;
    m_ports.prompt.messageBox(QStringLiteral("验证通过，请直接输入新的独立密码。"),
                              Prompt::Icon::Information);
    return true;
}

bool SecretModification::CheckValid(const Fields& fields, Verdict& verdict) {
    if (!m_isPlain && fields.txtNew1 != fields.txtNew2) {
        warn(QStringLiteral("两次输入的新密码不一致！"));
        verdict = {.focus = Field::New1, .emptiesNew = true};
        return false;
    }
    QString message;
    if (!CheckSecretTip(fields.txtSecTip, message)) {
        warn(message);
        verdict = {.focus = Field::SecTip};
        return false;
    }
    const bool isValid = m_type == KeyType::LoginKey ? checkLoginKey(fields, verdict)
                                                     : checkIndependentPassword(fields, verdict);
    if (isValid && !checkCharacters(fields.txtNew1, message)) {
        warn(message);
        verdict = {.focus = Field::New1, .emptiesNew = true};
        return false;
    }
    return isValid;
}

bool SecretModification::checkLoginKey(const Fields& fields, Verdict& verdict) {
    if (fields.txtOriginal.isEmpty()) {
        warn(QStringLiteral("您忘记输入原密钥了！"));
        verdict = {.focus = Field::Original};
        return false;
    }
    verdict = {.focus = Field::New1, .emptiesNew = true};
    if (fields.txtNew1.size() < kShortestSecret) {
        warn(QStringLiteral("登录密钥的长度不能小于6位！"));
        return false;
    }
    if (fields.txtNew1.size() > kLongestKey) {
        warn(QStringLiteral("登录密钥的长度不能大于30位！"));
        return false;
    }
    return true;
}

bool SecretModification::checkIndependentPassword(const Fields& fields, Verdict& verdict) {
    verdict = {.focus = Field::New1, .emptiesNew = true};
    if (m_ports.system.settings().p_idpPwdSwitch() && !keepsSecret(fields)) {
        verdict.focus = Field::SecTip;
        warn(QStringLiteral("列级加密已开启，禁止修改独立密码！\r\n您只能修改密码提示。"));
        return false;
    }
    if (fields.txtNew1.isEmpty()) {
        return true;
    }
    if (fields.txtNew1.size() < kShortestSecret) {
        warn(QStringLiteral("如果要设置非空密码，则其长度不能小于6位！"));
        return false;
    }
    if (fields.txtNew1.size() > kLongestPassword) {
        warn(QStringLiteral("独立密码的长度不能大于32位！"));
        return false;
    }
    return true;
}

bool SecretModification::keepsSecret(const Fields& fields) const {
    // The columns hang on the password, so nobody can mean to empty it: no new one is none wanted.
    if (fields.txtNew1.isEmpty() && m_ports.system.settings().p_idpPwdSwitch() &&
        m_type == KeyType::IndependentPassword) {
        return true;
    }
    return m_isReset ? m_ports.database.CheckIdpPwd(fields.txtNew1)
                     : fields.txtNew1 == fields.txtOriginal;
}

bool SecretModification::checkOriginal(const QString& original, Verdict& verdict) {
    const bool isLoginKey = m_type == KeyType::LoginKey;
    const bool isRight = m_isReset || (isLoginKey ? m_ports.database.CheckLgnKey(original)
                                                  : m_ports.database.CheckIdpPwd(original));
    if (!isRight) {
        warn(isLoginKey ? QStringLiteral("原密钥错误！") : QStringLiteral("原密码错误！"));
        verdict = {.focus = Field::Original, .emptiesOriginal = true};
    }
    return isRight;
}

SecretModification::Verdict SecretModification::cmdOK(const Fields& fields) {
    Verdict verdict;
    if (!CheckValid(fields, verdict) || !checkOriginal(fields.txtOriginal, verdict)) {
        return verdict;
    }
    verdict = {.focus = Field::New1};
    if (keepsSecret(fields)) {
        verdict.isDone = modifyTip(fields.txtSecTip);
        return verdict;
    }
    const bool isLoginKey = m_type == KeyType::LoginKey;
    const auto answer =
        m_ports.prompt.messageBox(isLoginKey ? QStringLiteral("你确定要修改原登录密钥吗？")
                                             : QStringLiteral("你确定要修改原独立密码吗？"),
                                  Prompt::Icon::Question, Prompt::Buttons::YesNo);
    if (answer == Prompt::Answer::Yes) {
        m_isRenewed = isLoginKey ? modifyLoginKey(fields) : modifyIndependentPassword(fields);
        verdict.isDone = m_isRenewed;
    }
    return verdict;
}

bool SecretModification::modifyTip(const QString& tip) {
    const QString before = this->tip();
    setTip(tip);
    if (!write(kTipOnly, QString())) {
        setTip(before);
        return false;
    }
    if (m_type == KeyType::LoginKey) {
        m_ports.system.WriteUser();
    }
    m_ports.prompt.messageBox(m_type == KeyType::LoginKey ? QStringLiteral("仅修改了密钥提示。")
                                                          : QStringLiteral("仅修改了密码提示。"),
                              Prompt::Icon::Information);
    return true;
}

bool SecretModification::modifyLoginKey(const Fields& fields) {
    if (!m_ports.database.SetLgnKey(/*scheme=*/false, fields.txtNew1)) {
        return false;
    }
    setTip(fields.txtSecTip);
    // For the hint, which the login form shows: the key itself is in the record by now.
    m_ports.system.WriteUser();
    m_ports.system.settings().p_lgnKeyModifyStart(m_ports.clock.today().startOfDay());
    // It cannot be taken back for a date or a log that were not written, which is told.
    write(kSecretItself, QString());
    return true;
}

bool SecretModification::modifyIndependentPassword(const Fields& fields) {
    Settings& settings = m_ports.system.settings();
    const QString hash = settings.p_idpPwdHashCode();
    const QDateTime start = settings.p_idpPwdModifyStart();
    const std::int16_t chances = settings.p_idpPwdChances1();
    const QString before = tip();
    setTip(fields.txtSecTip);
    settings.SetHashIdpPwd(fields.txtNew1);
    settings.p_idpPwdModifyStart(m_ports.clock.today().startOfDay());
    // Tries at the old password say nothing about the new one.
    settings.p_idpPwdChances1(settings.p_idpPwdChances0());
    const QString description =
        m_isReset ? QStringLiteral("(通过验证安全问题重新设置)") : QString();
    if (!write(kSecretItself, description)) {
        setTip(before);
        settings.RestoreIdpPwdHashCode(hash);
        settings.p_idpPwdModifyStart(start);
        settings.p_idpPwdChances1(chances);
        return false;
    }
    m_ports.system.p_plainIdpPwd(QString());  // the old one, if a verification kept it
    return true;
}

void SecretModification::setTip(const QString& tip) {
    if (m_type == KeyType::LoginKey) {
        m_ports.system.p_lgnKeyTip(tip);
    } else {
        m_ports.system.settings().p_idpPwdTip(tip);
    }
}

bool SecretModification::write(int count, const QString& description) {
    return guarded(m_ports.prompt, QStringLiteral("dlgModifySecret.cmdOK_Click"), false, [&] {
        Transaction transaction(m_ports.connection);
        SysLog log;
        log.m_dateTime = m_ports.clock.now();
        log.m_statusNo =
            m_type == KeyType::LoginKey ? kLoginKeyModified : kIndependentPasswordModified;
        log.m_lCount = count;
        log.m_Description = description;
        if (!m_ports.system.WriteDB(/*isNew=*/false) || !m_ports.logs.Add(log)) {
            return false;
        }
        transaction.commit();
        return true;
    });
}

void SecretModification::warn(const QString& text) {
    m_ports.prompt.messageBox(text, Prompt::Icon::Exclamation);
}

}  // namespace keeper
