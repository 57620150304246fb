// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>

#include "platform/file_hold.h"
#include "support/fake_desktop.h"
#include "support/session_fixture.h"
#include "ui/frm_login.h"
#include "ui/frm_wizard.h"

namespace keeper {
namespace {

using namespace Qt::Literals::StringLiterals;

class SessionFormsTest : public SessionTest {
  protected:
    /// Up to the moment when the person can type.
    void show(QWidget& shown, const char* first) {
        form = &shown;
        form->show();
        QApplication::setActiveWindow(form);
        EXPECT_TRUE(QTest::qWaitFor([&] { return the<QWidget>(first)->hasFocus(); }));
    }
    template <typename Control>
    Control* the(const char* controlName) const {
        auto* control = form->findChild<Control*>(QString::fromLatin1(controlName));
        EXPECT_NE(control, nullptr) << controlName;
        return control;
    }
    void click(const char* button) {
        the<QPushButton>(button)->setFocus(Qt::MouseFocusReason);
        QTest::mouseClick(the<QPushButton>(button), Qt::LeftButton);
    }

    FakeKeyboardState keyboard;
    QWidget* form = nullptr;
};

TEST_F(SessionFormsTest, LoginByKeyboardComesBackToTheKeyUntilItIsRight) {
    leaveAndRestart();
    Login& login = program->login;
    frmLogin window(login, keyboard);
    form = &window;
    the<QPushButton>("lblOK")->click();
    EXPECT_FALSE(login.isClosed()) << "users who are not shown yet need no wizard";
    show(window, "txtLgnKey");
    auto* box = the<QLineEdit>("txtLgnKey");
    const auto* chances = the<QLabel>("lblChances");
    EXPECT_EQ(the<QComboBox>("cboUsers")->currentText(), name);
    EXPECT_EQ(chances->text(), u"您有10次登录尝试机会"_s);
    click("lblOK");
    EXPECT_EQ(prompt.takeTexts(), QStringList(u"您忘记输入密钥了！"_s));
    EXPECT_TRUE(box->hasFocus());

    prompt.answers = {Prompt::Answer::Yes};
    QTest::keyClicks(box, u"wrong key"_s);
    QTest::keyClick(box, Qt::Key_Return);
    EXPECT_EQ(prompt.takeTexts(), QStringList(u"登录密钥错误！是否再试一次？"_s));
    EXPECT_EQ(box->text(), QString());
    EXPECT_EQ(chances->text(), u"您有9次登录尝试机会"_s);

    // An automatic login needs the remembered key, and neither outlives the other.
    auto* remember = the<QCheckBox>("chkRemLgnKey");
    auto* automatic = the<QCheckBox>("chkAutoLogin");
    QTest::mouseClick(automatic, Qt::LeftButton, {}, {5, automatic->height() / 2});
    EXPECT_TRUE(remember->isChecked() && automatic->isChecked());
    QTest::mouseClick(remember, Qt::LeftButton, {}, {5, remember->height() / 2});
    EXPECT_FALSE(remember->isChecked() || automatic->isChecked());
    EXPECT_TRUE(box->hasFocus());

    for (const QChar letter : key) {
        QTest::sendKeyEvent(QTest::Click, box, Qt::Key_unknown, QString(letter), {});
    }
    QTest::keyClick(box, Qt::Key_Return);
    EXPECT_EQ(prompt.takeTexts(), QStringList());
    EXPECT_EQ(login.m_result(), Login::Result::LogIn);
    EXPECT_FALSE(window.isVisible());
    EXPECT_EQ(box->text(), QString()) << "the key does not stay in the box";
}

TEST_F(SessionFormsTest, AKeyTypedBesideTheStarsOfAFingerReplacesThem) {
    leaveAndRestart();
    const auto user = stored();
    user->p_plainLgnKey(key);
    user->p_remLgnKey(true);
    user->p_fingerprint(true);
    ASSERT_TRUE(user->WriteRegistry());
    program->hasReader = program->knowsFinger = true;
    FileHold elsewhere;
    ASSERT_TRUE(elsewhere.take(sealedFile));
    frmLogin window(program->login, keyboard);
    show(window, "txtLgnKey");
    auto* box = the<QLineEdit>("txtLgnKey");
    EXPECT_EQ(box->text().size(), key.size());
    EXPECT_EQ(prompt.takeTexts().size(), 1) << "the file is held elsewhere";
    QTest::keyClick(box, Qt::Key_Home);
    QTest::keyClicks(box, u"*"_s);
    QTest::keyClicks(box, QString(30, u'a'));
    EXPECT_EQ(box->text(), u"*"_s + QString(29, u'a'));
    EXPECT_TRUE(the<QLabel>("lblKeyWarning")->text().contains(u"最多30位"_s));
}

TEST_F(SessionFormsTest, LoginTellsABanAndEndsByEscape) {
    leaveAndRestart();
    frmLogin window(program->login, keyboard);
    show(window, "txtLgnKey");
    auto* box = the<QLineEdit>("txtLgnKey");
    for (int attempt = 0; attempt < 10; ++attempt) {
        prompt.answers = {Prompt::Answer::Yes};
        QTest::keyClicks(box, u"wrong key"_s);
        QTest::keyClick(box, Qt::Key_Return);
    }
    prompt.takeTexts();
    const auto* chances = the<QLabel>("lblChances");
    EXPECT_TRUE(chances->text().endsWith(u"后再试"_s)) << "from its first second on";
    clock.advanceSeconds(1);
    QTest::keyClicks(box, u"any key"_s);
    QTest::keyClick(box, Qt::Key_Return);
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(program->login.m_result(), Login::Result::End);
    EXPECT_EQ(chances->text(), u"请 23小时59分59秒 后再试"_s);

    // Behind the ban the attempts are there again, whether or not the timer has told so.
    clock.advanceSeconds(86'400);
    prompt.answers = {Prompt::Answer::Yes};
    QTest::keyClick(box, Qt::Key_Return);
    EXPECT_EQ(prompt.takeTexts(), QStringList(u"登录密钥错误！是否再试一次？"_s));
    EXPECT_EQ(stored()->p_usedTimes(), 1);
    QTest::keyClick(box, Qt::Key_Escape);
    EXPECT_FALSE(window.isVisible());
}

TEST_F(SessionFormsTest, WizardGoesThroughItsPagesByKeyboardAndForgetsTheSecrets) {
    leaveAndRestart();
    Wizard& wizard = program->wizard;
    wizard.load();
    frmWizard window(wizard, keyboard);
    show(window, "txtUserName");
    const auto next = [this] { QTest::keyClick(form, Qt::Key_Return); };
    auto* userName = the<QLineEdit>("txtUserName");
    EXPECT_FALSE(the<QPushButton>("cmdBack")->isVisible());
    QTest::keyClicks(userName, u"Alice"_s);
    EXPECT_TRUE(the<QLineEdit>("txtPrivateFolder")->text().contains(u"Alice"_s));
    next();

    auto* loginKey = the<QLineEdit>("txtSec");
    EXPECT_TRUE(loginKey->hasFocus());
    QTest::keyClicks(loginKey, u"short"_s);
    next();
    EXPECT_EQ(prompt.takeTexts().size(), 1);
    EXPECT_TRUE(loginKey->isVisible()) << "a key of five characters is refused";
    loginKey->selectAll();
    QTest::keyClicks(loginKey, u"Alice's key 1"_s);
    QTest::keyClicks(the<QLineEdit>("txtSecTip"), u"tip"_s);
    next();
    auto* password = the<QLineEdit>("txtSec2");
    EXPECT_TRUE(password->hasFocus());
    QTest::keyClicks(password, u"Other-2"_s);
    click("cmdBack");
    EXPECT_EQ(loginKey->text(), u"Alice's key 1"_s) << "going back loses nothing";
    next();
    EXPECT_EQ(password->text(), u"Other-2"_s);
    next();
    const QString summary = the<QPlainTextEdit>("txtSummarize")->toPlainText();
    EXPECT_TRUE(summary.contains(u"Alice"_s)) << summary.toStdString();
    next();
    EXPECT_EQ(prompt.takeTexts(), QStringList());
    EXPECT_EQ(wizard.m_result(), 2);
    EXPECT_FALSE(window.isVisible());
    EXPECT_EQ(loginKey->text() + password->text(), QString());
    EXPECT_TRUE(program->connection.isOpen());
}

}  // namespace
}  // namespace keeper
