// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "ui/widgets/session_dialog.h"

class QLabel;
class QLineEdit;
class QListWidget;

namespace keeper {

class KeyBox;
class KeyboardState;
class QuestionAnswering;
class QuestionSetting;

/// The form of the security questions, in one of two modes: it sets them, or asks them.
class dlgSecureQuestion final : public SessionDialog {
    Q_OBJECT

  public:
    /// Both modes show what their logic was loaded with; all must outlive the form.
    dlgSecureQuestion(QuestionSetting& setting, const KeyboardState& keyboard);
    /// The result is QDialog::Accepted when all questions were answered.
    dlgSecureQuestion(QuestionAnswering& answering, const KeyboardState& keyboard);

    void done(int result) override;

  private:
    void buildSetting();
    QWidget* buildItem();
    void connectSetting();
    void showItem();
    void markItems();
    void buildAnswering();
    void showQuestion();
    void takeAnswer();
    KeyBox* makeAnswerBox();

    QuestionSetting* m_setting = nullptr;
    QuestionAnswering* m_answering = nullptr;
    const KeyboardState& m_keyboard;
    QListWidget* lsbQuestions = nullptr;
    QLineEdit* txtQuestion = nullptr;
    KeyBox* txtAnswer = nullptr;
    QPushButton* cmdClear = nullptr;
    QLabel* lblQuestion = nullptr;
};

}  // namespace keeper
