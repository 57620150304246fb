// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTest>

#include "guard/question_forms.h"
#include "support/fake_desktop.h"
#include "support/session_fixture.h"
#include "ui/dlg_authority.h"
#include "ui/dlg_manage_secret.h"
#include "ui/dlg_modify_secret.h"
#include "ui/dlg_secure_question.h"
#include "ui/widgets/number_box.h"

namespace keeper {
namespace {

using namespace Qt::Literals::StringLiterals;

class SecretFormsTest : public SessionTest {
  protected:
    template <typename Control>
    static Control* the(QWidget& form, const char* name) {
        auto* control = form.findChild<Control*>(QString::fromLatin1(name));
        EXPECT_NE(control, nullptr) << name;
        return control;
    }
    void show(QWidget& form) {
        form.show();
        QApplication::setActiveWindow(&form);
    }
    [[nodiscard]] QuestionPorts ports(SecureQuestions& questions) {
        return {prompt, clock, program->system, program->connection, program->logs, questions};
    }

    FakeKeyboardState keyboard;
};

TEST_F(SecretFormsTest, NumbersOutsideTheRangeAreToldOnceAndNeverStored) {
    SecureQuestions questions(program->connection, prompt);
    SecretManagement logic({prompt, clock, program->system, questions, [] { return false; }});
    logic.load();
    dlgManageSecret form(logic);
    show(form);
    auto* days = the<NumberBox>(form, "txtLgnKeyModifyDays");
    auto* chances = the<NumberBox>(form, "txtIdpPwdChances0");
    days->setFocus();
    days->selectAll();
    QTest::keyClicks(days, u"30"_s);
    EXPECT_EQ(the<QLineEdit>(form, "txtLgnKeyPredicate")->text(), u"2026年06月19日，星期五"_s);
    QTest::keyClicks(days, u"0x0"_s);
    EXPECT_EQ(prompt.takeTexts(), QStringList(u"天数的取值范围在0~999之间！"_s));
    EXPECT_EQ(days->text(), u"300"_s);
    days->selectAll();
    QTest::keyClick(days, Qt::Key_Delete);
    EXPECT_EQ(days->text(), QString());
    chances->setFocus();
    EXPECT_EQ(days->text(), u"300"_s) << "an empty field is filled again";
    chances->selectAll();
    QTest::keyClicks(chances, u"1"_s);
    EXPECT_TRUE(prompt.boxes.empty()) << "it may become 10";
    QTest::keyClick(chances, Qt::Key_Return);
    EXPECT_EQ(prompt.takeTexts(), QStringList(u"尝试次数的取值范围在3~10之间！"_s));
    chances->selectAll();
    QTest::keyClicks(chances, u"1"_s);
    the<QPushButton>(form, "cmdOK")->click();
    EXPECT_EQ(prompt.takeTexts(), QStringList(u"尝试次数的取值范围在3~10之间！"_s))
        << "nor where the key of the button leaves the focus in the box";
    EXPECT_TRUE(form.isVisible());
    EXPECT_EQ(chances->text(), u"5"_s);
    QTest::keyClick(chances, Qt::Key_Up);
    EXPECT_EQ(chances->text(), u"6"_s);
    QTest::keyClick(the<NumberBox>(form, "txtLgnKeyChances0"), Qt::Key_Down);
    QTest::keyClick(chances, Qt::Key_Return);
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(stored()->p_lgnKeyChances0(), 9) << "the login form counts by it";
    EXPECT_EQ(program->system.settings().p_idpPwdChances0(), 6);
    EXPECT_EQ(program->system.settings().p_lgnKeyModifyDays(), 300);
}

TEST_F(SecretFormsTest, RefusedSecretsLeaveTheBoxesAndPlainViewNeedsOne) {
    SecureQuestions questions(program->connection, prompt);
    SecretModification logic({prompt, clock, program->system, program->connection, program->sealed,
                              program->logs, questions, [] { return false; }});
    logic.load(SecretModification::KeyType::LoginKey);
    dlgModifySecret form(logic, keyboard);
    show(form);
    auto* original = the<QLineEdit>(form, "txtOriginal");
    auto* first = the<QLineEdit>(form, "txtNew1");
    auto* second = the<QLineEdit>(form, "txtNew2");
    auto* cmdOK = the<QPushButton>(form, "cmdOK");
    EXPECT_EQ(the<QLineEdit>(form, "txtSecTip")->text(), u"提示"_s);
    original->setText(key);
    QTest::keyClicks(first, u"Abc123"_s);
    EXPECT_EQ(the<QLabel>(form, "lblStrength")->text(), u"6位：中强"_s);
    QTest::keyClicks(second, u"abc123"_s);
    cmdOK->click();
    EXPECT_EQ(first->text() + second->text(), QString());
    EXPECT_EQ(the<QLabel>(form, "lblStrength")->text(), QString());
    EXPECT_EQ(original->text(), key);
    the<QPushButton>(form, "cmdShowExplicitly")->click();
    EXPECT_FALSE(second->isEnabled());
    EXPECT_EQ(first->echoMode(), QLineEdit::Normal);
    QTest::keyClicks(first, u"Abc123"_s);
    prompt.answers = {Prompt::Answer::Yes};
    cmdOK->click();
    EXPECT_FALSE(form.isVisible());
    EXPECT_TRUE(program->sealed.CheckLgnKey(u"Abc123"_s));
    EXPECT_EQ(original->text() + first->text(), QString());
}

TEST_F(SecretFormsTest, QuestionsAreKeptWhileThePersonGoesFromOneToAnotherAndAskedInTurn) {
    SecureQuestions questions(program->connection, prompt);
    QuestionSetting setting(ports(questions));
    ASSERT_TRUE(setting.load());
    {
        dlgSecureQuestion form(setting, keyboard);
        show(form);
        auto* list = the<QListWidget>(form, "lsbQuestions");
        auto* question = the<QLineEdit>(form, "txtQuestion");
        auto* answer = the<QLineEdit>(form, "txtAnswer");
        for (const int row : {0, 2, 5}) {
            list->setCurrentRow(row);
            QTest::keyClicks(question, u"q&%1"_s.arg(row + 1));
            QTest::keyClicks(answer, u"a%1"_s.arg(row + 1));
        }
        list->setCurrentRow(2);
        EXPECT_EQ(question->text() + answer->text(), u"q&3a3"_s);
        prompt.answers = {Prompt::Answer::Ok};
        the<QPushButton>(form, "cmdOK")->click();
        EXPECT_EQ(form.result(), QDialog::Accepted);
        EXPECT_EQ(setting.item(3).answer, QString());
    }
    QuestionAnswering answering(ports(questions));
    ASSERT_TRUE(answering.load());
    dlgSecureQuestion form(answering, keyboard);
    show(form);
    auto* answer = the<QLineEdit>(form, "txtAnswer");
    auto* label = the<QLabel>(form, "lblQuestion");
    EXPECT_EQ(label->text(), u"(1)：q&1"_s);
    EXPECT_EQ(label->buddy(), nullptr) << "the mark of a key is not shown";
    for (const char* typed : {"a1", "a1", "a3", "a6"}) {
        EXPECT_TRUE(answer->accessibleName().endsWith(label->text()));
        QTest::keyClicks(answer, QString::fromLatin1(typed));
        QTest::keyClick(answer, Qt::Key_Return);
        EXPECT_EQ(answer->text(), QString());
    }
    EXPECT_EQ(prompt.boxes.back().text, u"答案错误！"_s);
    EXPECT_EQ(form.result(), QDialog::Accepted);
}

TEST_F(SecretFormsTest, AuthoritiesMirrorTheirBitsSpareOnesToo) {
    program->system.SetAuthority(1, 10);
    Authorities logic(
        {prompt, clock, program->system, program->connection, program->sealed, program->logs});
    logic.load();
    dlgAuthority form(logic);
    show(form);
    EXPECT_TRUE(the<QCheckBox>(form, "chkAuthority11")->isChecked());
    EXPECT_EQ(the<QCheckBox>(form, "chkAuthority11")->text(), u"分机登录管理"_s);
    the<QPushButton>(form, "cmdAllYes")->click();
    the<QCheckBox>(form, "chkAuthority11")->click();
    the<QPushButton>(form, "cmdOK")->click();
    EXPECT_EQ(program->system.settings().p_Authorities(), 0xFFFFF & ~(1 << 10));
    EXPECT_FALSE(the<QCheckBox>(form, "chkAuthority20")->isVisibleTo(&form));
}

}  // namespace
}  // namespace keeper
