// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <array>
#include <optional>

namespace keeper {

class Database;
class Prompt;

/// A question that its user alone can answer.
struct SecureQuestion {
    QString m_Question;
    /// SHA-1 of the answer, 40 upper-case digits; empty without an answer.
    QString m_Answer;
    bool m_Effective = false;
};

/// The six security questions of the open database. Failures are shown as
/// "[number]dlgSecureQuestion.Operation:" and give false.
class SecureQuestions {
  public:
    static constexpr int kCount = 6;
    /// With fewer effective ones they vouch for nobody.
    static constexpr int kRequired = 3;

    SecureQuestions(Database& database, Prompt& prompt) : m_database(database), m_prompt(prompt) {}

    /// On failure the questions in memory stay as they were.
    bool ReadDB();
    /// Writes all six in one transaction.
    bool WriteDB();

    /// Questions are numbered from 1.
    [[nodiscard]] const SecureQuestion& question(int number) const;
    [[nodiscard]] SecureQuestion& question(int number);
    /// The effective question behind the number `current`, with 0 the first; 0 when there is none.
    [[nodiscard]] int SearchNextEffective(int current) const;
    [[nodiscard]] int CheckEffectiveAmount() const;
    /// Whether the stored questions are enough to reset the independent password; none when they
    /// cannot be read, which was told.
    [[nodiscard]] std::optional<bool> CanResumePwd();

  private:
    Database& m_database;
    Prompt& m_prompt;
    std::array<SecureQuestion, kCount> m_questions;
};

}  // namespace keeper
