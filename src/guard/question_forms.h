// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <array>

#include "guard/secure_questions.h"

namespace keeper {

class Clock;
class SysLogs;
class System;

/// What both forms of the security questions need.
struct QuestionPorts {
    Prompt& prompt;
    const Clock& clock;
    System& system;
    Database& database;
    SysLogs& logs;
    SecureQuestions& questions;
};

/// The rules of the form that sets the security questions. It keeps what was typed for each of the
/// six while the person goes from one to another.
class QuestionSetting {
  public:
    struct Item {
        QString question;
        /// As typed now; the stored ones are digests and cannot be shown.
        QString answer;
        /// Digest of an answer that stands as long as its question is not changed.
        QString storedAnswer;

        [[nodiscard]] bool isEffective() const {
            return !question.isEmpty() && (!answer.isEmpty() || !storedAnswer.isEmpty());
        }
    };

    explicit QuestionSetting(const QuestionPorts& ports) : m_ports(ports) {}
    ~QuestionSetting();
    QuestionSetting(const QuestionSetting&) = delete;
    QuestionSetting& operator=(const QuestionSetting&) = delete;

    /// A new showing with the stored questions. False when they cannot be read, which was told.
    bool load();
    /// The number of the question on display, from 1.
    [[nodiscard]] int current() const { return m_current; }
    [[nodiscard]] const Item& item(int number) const;
    [[nodiscard]] int CheckEffectiveAmount() const;

    void select(int number) { m_current = number; }
    void setQuestion(const QString& text);
    void setAnswer(const QString& text);
    void cmdClear();
    /// True when the questions are stored and the form is to close.
    bool cmdOK();
    /// Forgets the answers. The form calls it when it closes.
    void wipe();

  private:
    [[nodiscard]] bool confirms(int effective);
    [[nodiscard]] QString listing() const;
    [[nodiscard]] bool store(int effective);
    [[nodiscard]] bool write(int effective);

    QuestionPorts m_ports;
    std::array<Item, SecureQuestions::kCount> m_items;
    int m_current = 1;
};

/// The rules of the form that asks the effective questions one after the other.
class QuestionAnswering {
  public:
    enum class Outcome { Wrong, Next, Passed };

    explicit QuestionAnswering(const QuestionPorts& ports) : m_ports(ports) {}

    /// A new showing, which begins with the first question. False when there is none to ask, or
    /// they cannot be read.
    bool load();
    /// The question in turn, such as "(2)：…".
    [[nodiscard]] QString lblQuestion() const;
    /// A wrong answer is told, and the same question stays. The last right one settles the check:
    /// its date moves to today, or stays when that cannot be stored, which is told.
    Outcome cmdOK(const QString& answer);

  private:
    void pass();

    QuestionPorts m_ports;
    int m_current = 0;
};

}  // namespace keeper
