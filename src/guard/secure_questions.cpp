// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "guard/secure_questions.h"

#include <algorithm>

#include "platform/database.h"
#include "store/failure.h"

namespace keeper {
namespace {

/// A null text would be stored as null.
QString stored(const QString& text) {
    return text.isNull() ? QStringLiteral("") : text;
}

}  // namespace

bool SecureQuestions::ReadDB() {
    return guardedRun(m_prompt, QStringLiteral("dlgSecureQuestion.ReadDB"), [this] {
        std::array<SecureQuestion, kCount> fresh;
        Statement select(m_database,
                         "SELECT Question,Answer,Effective FROM tb_SecureQuestion ORDER BY rowid");
        for (SecureQuestion& question : fresh) {
            if (!select.step()) {
                break;
            }
            question = {select.text(0), select.text(1), select.flag(2)};
        }
        m_questions = fresh;
    });
}

bool SecureQuestions::WriteDB() {
    return guardedRun(m_prompt, QStringLiteral("dlgSecureQuestion.WriteDB"), [this] {
        // The rows have no number of their own: their order is that of their making.
        Transaction transaction(m_database);
        m_database.execute("DELETE FROM tb_SecureQuestion");
        Statement insert(m_database, "INSERT INTO tb_SecureQuestion VALUES(?,?,?)");
        for (const SecureQuestion& question : m_questions) {
            insert.bind(1, stored(question.m_Question));
            insert.bind(2, stored(question.m_Answer));
            insert.bind(3, question.m_Effective);
            insert.run();
            insert.reset();
        }
        transaction.commit();
    });
}

const SecureQuestion& SecureQuestions::question(int number) const {
    return m_questions.at(static_cast<std::size_t>(number - 1));
}

SecureQuestion& SecureQuestions::question(int number) {
    return m_questions.at(static_cast<std::size_t>(number - 1));
}

int SecureQuestions::SearchNextEffective(int current) const {
    for (int number = current + 1; number <= kCount; ++number) {
        if (question(number).m_Effective) {
            return number;
        }
    }
    return 0;
}

int SecureQuestions::CheckEffectiveAmount() const {
    return static_cast<int>(std::count_if(m_questions.begin(), m_questions.end(),
                                          [](const auto& one) { return one.m_Effective; }));
}

std::optional<bool> SecureQuestions::CanResumePwd() {
    using Answer = std::optional<bool>;
    return guarded(
        m_prompt, QStringLiteral("dlgSecureQuestion.CanResumePwd"), Answer(), [this]() -> Answer {
            Statement count(m_database, "SELECT count(*) FROM tb_SecureQuestion WHERE Effective=1");
            return count.step() && count.integer(0) >= kRequired;
        });
}

}  // namespace keeper
