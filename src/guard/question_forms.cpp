// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "guard/question_forms.h"

#include <algorithm>

#include "app/system.h"
#include "crypto/cryptor2.h"
#include "crypto/secure_wipe.h"
#include "guard/new_user.h"
#include "platform/clock.h"
#include "platform/database.h"
#include "platform/prompt.h"
#include "store/failure.h"
#include "store/sys_logs.h"

namespace keeper {
namespace {

constexpr int kQuestionsSet = 21;
constexpr int kQuestionsAnswered = 22;

bool logQuestions(const QuestionPorts& ports, int status, int count) {
    SysLog log;
    log.m_dateTime = ports.clock.now();
    log.m_statusNo = status;
    log.m_lCount = count;
    return ports.logs.Add(log);
}

}  // namespace

QuestionSetting::~QuestionSetting() {
    wipe();
}

bool QuestionSetting::load() {
    wipe();
    m_current = 1;
    if (!m_ports.questions.ReadDB()) {
        return false;
    }
    for (int number = 1; number <= SecureQuestions::kCount; ++number) {
        const SecureQuestion& stored = m_ports.questions.question(number);
        m_items.at(static_cast<std::size_t>(number - 1)) = {
            stored.m_Question, QString(), stored.m_Effective ? stored.m_Answer : QString()};
    }
    return true;
}

const QuestionSetting::Item& QuestionSetting::item(int number) const {
    return m_items.at(static_cast<std::size_t>(number - 1));
}

int QuestionSetting::CheckEffectiveAmount() const {
    return static_cast<int>(std::count_if(m_items.begin(), m_items.end(),
                                          [](const Item& one) { return one.isEffective(); }));
}

void QuestionSetting::setQuestion(const QString& text) {
    Item& item = m_items.at(static_cast<std::size_t>(m_current - 1));
    if (item.question != text) {
        item.question = text;
        // An old answer under a new question would vouch for what nobody has answered.
        item.storedAnswer.clear();
    }
}

void QuestionSetting::setAnswer(const QString& text) {
    Item& item = m_items.at(static_cast<std::size_t>(m_current - 1));
    secureWipe(item.answer);
    // A copy of our own: the box wipes and changes its buffer.
    item.answer = QString(text.constData(), text.size());
}

void QuestionSetting::cmdClear() {
    setAnswer(QString());
    m_items.at(static_cast<std::size_t>(m_current - 1)) = Item();
}

void QuestionSetting::wipe() {
    for (Item& item : m_items) {
        secureWipe(item.answer);
        item = Item();
    }
}

bool QuestionSetting::cmdOK() {
    const int effective = CheckEffectiveAmount();
    return confirms(effective) && store(effective);
}

bool QuestionSetting::confirms(int effective) {
    if (effective == 0) {
        return m_ports.prompt.messageBox(QStringLiteral("您确定不使用安全问题吗？"),
                                         Prompt::Icon::Question,
                                         Prompt::Buttons::OkCancel) == Prompt::Answer::Ok;
    }
    if (effective < SecureQuestions::kRequired) {
        m_ports.prompt.messageBox(QStringLiteral("如果要启用安全问题，那么您必须至少设置三个。"),
                                  Prompt::Icon::Exclamation);
        return false;
    }
    for (const Item& item : m_items) {
        QString message;
        if (!checkCharacters(item.answer, message)) {
            m_ports.prompt.messageBox(message, Prompt::Icon::Exclamation);
            return false;
        }
    }
    QString text = listing();
    const WipeGuard wipeText(text);
    return m_ports.prompt.messageBox(text, Prompt::Icon::Information, Prompt::Buttons::OkCancel) ==
           Prompt::Answer::Ok;
}

QString QuestionSetting::listing() const {
    QString text = QStringLiteral("以下是您设置的全部有效的安全问题，请确认：");
    for (int number = 1; number <= SecureQuestions::kCount; ++number) {
        const Item& one = item(number);
        if (one.isEffective()) {
            text += QStringLiteral("\r\n%1.").arg(number) + one.question +
                    QStringLiteral("\r\n答：") +
                    (one.answer.isEmpty() ? QStringLiteral("（保持原答案）") : one.answer);
        }
    }
    return text;
}

bool QuestionSetting::store(int effective) {
    Settings& settings = m_ports.system.settings();
    const std::int16_t days = settings.p_sqUpdateDays();
    const QDateTime start = settings.p_sqUpdateStart();
    for (int number = 1; number <= SecureQuestions::kCount; ++number) {
        const Item& one = item(number);
        m_ports.questions.question(number) = {
            one.question,
            one.answer.isEmpty() ? one.storedAnswer : Cryptor2::hashString(one.answer),
            one.isEffective()};
    }
    if (effective == 0) {
        settings.p_sqUpdateDays(0);
    }
    settings.p_sqUpdateStart(m_ports.clock.today().startOfDay());
    if (!write(effective)) {
        settings.p_sqUpdateDays(days);
        settings.p_sqUpdateStart(start);
        m_ports.prompt.messageBox(QStringLiteral("设置安全问题失败！"), Prompt::Icon::Exclamation);
        return false;
    }
    return true;
}

bool QuestionSetting::write(int effective) {
    return guarded(m_ports.prompt, QStringLiteral("dlgSecureQuestion.WriteDB"), false, [&] {
        Transaction transaction(m_ports.database);
        if (!m_ports.questions.WriteDB() || !m_ports.system.WriteDB(/*isNew=*/false) ||
            !logQuestions(m_ports, kQuestionsSet, effective)) {
            return false;
        }
        transaction.commit();
        return true;
    });
}

bool QuestionAnswering::load() {
    m_current = m_ports.questions.ReadDB() ? m_ports.questions.SearchNextEffective(0) : 0;
    return m_current != 0;
}

QString QuestionAnswering::lblQuestion() const {
    return m_current == 0 ? QString()
                          : QStringLiteral("(%1)：").arg(m_current) +
                                m_ports.questions.question(m_current).m_Question;
}

QuestionAnswering::Outcome QuestionAnswering::cmdOK(const QString& answer) {
    if (m_current == 0 ||
        Cryptor2::hashString(answer) != m_ports.questions.question(m_current).m_Answer) {
        m_ports.prompt.messageBox(QStringLiteral("答案错误！"), Prompt::Icon::Exclamation);
        return Outcome::Wrong;
    }
    m_current = m_ports.questions.SearchNextEffective(m_current);
    if (m_current != 0) {
        return Outcome::Next;
    }
    pass();
    return Outcome::Passed;
}

void QuestionAnswering::pass() {
    Settings& settings = m_ports.system.settings();
    const QDateTime start = settings.p_sqUpdateStart();
    settings.p_sqUpdateStart(m_ports.clock.today().startOfDay());
    const bool isKept =
        guarded(m_ports.prompt, QStringLiteral("dlgSecureQuestion.cmdOK_Click"), false, [this] {
            Transaction transaction(m_ports.database);
            if (!m_ports.system.WriteDB(/*isNew=*/false) ||
                !logQuestions(m_ports, kQuestionsAnswered,
                              m_ports.questions.CheckEffectiveAmount())) {
                return false;
            }
            transaction.commit();
            return true;
        });
    if (!isKept) {
        settings.p_sqUpdateStart(start);
    }
}

}  // namespace keeper
