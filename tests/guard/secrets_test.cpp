// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

// The layers between an open session and its secrets, over a real user with a real database: what
// counts is what the next session finds.

#include <map>

#include "guard/authorities.h"
#include "guard/authority_gate.h"
#include "guard/question_forms.h"
#include "guard/secret_age.h"
#include "guard/secret_management.h"
#include "guard/secret_modification.h"
#include "guard/secure_questions.h"
#include "platform/status_panels.h"
#include "support/session_fixture.h"

namespace keeper {
namespace {

using KeyType = SecretModification::KeyType;
using Field = SecretManagement::Field;

class SecretsTest : public SessionTest, public StatusPanels {
  protected:
    void SetUp() override {
        SessionTest::SetUp();
        settings().SetHashIdpPwd(password);
        load();
    }
    Settings& settings() { return program->system.settings(); }
    void load() {
        SessionProgram& now = *program;
        questions.emplace(now.connection, prompt);
        const QuestionPorts ports{prompt, clock, now.system, now.connection, now.logs, *questions};
        setting.emplace(ports);
        answering.emplace(ports);
        const auto ask = [this] { return asksQuestions; };
        modification.emplace(SecretModification::Ports{prompt, clock, now.system, now.connection,
                                                       now.sealed, now.logs, *questions, ask});
        management.emplace(SecretManagement::Ports{prompt, clock, now.system, *questions, ask});
        authorities.emplace(
            Authorities::Ports{prompt, clock, now.system, now.connection, now.sealed, now.logs});
    }
    /// The session ends in order, and the next one begins under `newKey`.
    void nextSession(const QString& keyNow) {
        leaveAndRestart();
        ASSERT_TRUE(program->enter(keyNow)) << prompt.takeTexts().join(u'|').toStdString();
        prompt.boxes.clear();
        load();
    }
    void crash(const QString& keyNow) {
        restart();
        ASSERT_TRUE(program->enter(keyNow)) << prompt.takeTexts().join(u'|').toStdString();
        prompt.boxes.clear();
        load();
    }
    void setThreeQuestions() {
        ASSERT_TRUE(setting->load());
        for (const int number : {1, 4, 6}) {
            setting->select(number);
            setting->setQuestion(u"问%1"_s.arg(number));
            setting->setAnswer(u"Answer %1"_s.arg(number));
        }
        prompt.answers = {Prompt::Answer::Ok};
        ASSERT_TRUE(setting->cmdOK());
    }
    QString lastLog() {
        std::vector<SysLogLine> lines;
        int count = 0;
        program->logs.Display(lines, {}, {}, u"0"_s, count);
        return lines.empty() ? QString() : lines.front().status;
    }
    void setPanel(StatusPanel panel, const QString& text) override { panels[panel] = text; }

    const QString password = u"second-77"_s;
    const QString newKey = u"另一个Key-9"_s;
    bool asksQuestions = true;
    std::optional<SecureQuestions> questions;
    std::optional<QuestionSetting> setting;
    std::optional<QuestionAnswering> answering;
    std::optional<SecretModification> modification;
    std::optional<SecretManagement> management;
    std::optional<Authorities> authorities;
    std::map<StatusPanel, QString> panels;
};

TEST_F(SecretsTest, EachRuleOfANewSecretIsToldInOrder) {
    struct Case {
        KeyType type;
        SecretModification::Fields fields;
        QString told;
        bool emptiesNew;
    };
    const QString bad = u"a|b"_s;
    const QString longest(33, u'k');
    const QString warning = u"提示文本不能包含下列任何字符：\r\n\\ / : * ? \" < > |"_s;
    const QString strange = u"输入的内容含有无法区分的字符（如表情符号），请改用其它字符！"_s;
    const Case cases[] = {
        {KeyType::LoginKey, {{}, u"x"_s, u"y"_s, bad}, u"两次输入的新密码不一致！"_s, true},
        {KeyType::LoginKey, {{}, u"x"_s, u"x"_s, bad}, warning, false},
        {KeyType::LoginKey, {{}, u"x"_s, u"x"_s, {}}, u"您忘记输入原密钥了！"_s, false},
        {KeyType::LoginKey,
         {key, u"12345"_s, u"12345"_s, {}},
         u"登录密钥的长度不能小于6位！"_s,
         true},
        {KeyType::LoginKey, {key, longest, longest, {}}, u"登录密钥的长度不能大于30位！"_s, true},
        {KeyType::LoginKey, {key, u"key🐱🐱"_s, u"key🐱🐱"_s, {}}, strange, true},
        {KeyType::LoginKey, {u"wrong"_s, newKey, newKey, {}}, u"原密钥错误！"_s, false},
        {KeyType::IndependentPassword,
         {{}, u"12345"_s, u"12345"_s, {}},
         u"如果要设置非空密码，则其长度不能小于6位！"_s,
         true},
        {KeyType::IndependentPassword,
         {{}, longest, longest, {}},
         u"独立密码的长度不能大于32位！"_s,
         true},
        {KeyType::IndependentPassword, {u"wrong"_s, {}, {}, {}}, u"原密码错误！"_s, false},
    };
    for (const Case& one : cases) {
        modification->load(one.type);
        const SecretModification::Verdict verdict = modification->cmdOK(one.fields);
        EXPECT_FALSE(verdict.isDone);
        EXPECT_EQ(verdict.emptiesNew, one.emptiesNew) << one.told.toStdString();
        EXPECT_EQ(prompt.takeTexts(), QStringList(one.told));
    }
    EXPECT_TRUE(program->sealed.CheckLgnKey(key));
    EXPECT_TRUE(program->sealed.CheckIdpPwd(password));
}

TEST_F(SecretsTest, ANewLoginKeyOpensTheNextSessionAndTheHintAloneLeavesItsDate) {
    const QDateTime start = settings().p_lgnKeyModifyStart();
    clock.advanceDays(5);
    modification->load(KeyType::LoginKey);
    EXPECT_TRUE(modification->cmdOK({key, key, key, u"hint 1"_s}).isDone);
    EXPECT_FALSE(modification->isRenewed());
    EXPECT_EQ(prompt.takeTexts(), QStringList(u"仅修改了密钥提示。"_s));
    EXPECT_EQ(lastLog(), u"修改登录密钥提示"_s);
    EXPECT_EQ(stored()->p_lgnKeyTip(), u"hint 1"_s);
    EXPECT_EQ(settings().p_lgnKeyModifyStart(), start);

    prompt.answers = {Prompt::Answer::No, Prompt::Answer::Yes};
    EXPECT_FALSE(modification->cmdOK({key, newKey, newKey, {}}).isDone);
    EXPECT_TRUE(program->sealed.CheckLgnKey(key));
    modification->cmdShowExplicitly();  // typed once
    EXPECT_TRUE(modification->cmdOK({key, newKey, {}, u"hint 2"_s}).isDone);
    EXPECT_TRUE(modification->isRenewed());
    EXPECT_EQ(prompt.boxes.back().text, u"你确定要修改原登录密钥吗？"_s);
    EXPECT_EQ(lastLog(), u"修改登录密钥"_s);
    prompt.boxes.clear();
    crash(newKey);
    EXPECT_EQ(settings().p_lgnKeyModifyStart().date(), clock.today());
    nextSession(newKey);
    EXPECT_EQ(settings().p_lgnKeyTip(), u"hint 2"_s);
}

TEST_F(SecretsTest, ANewIndependentPasswordIsKeptThroughACrashAndColumnsForbidIt) {
    settings().KeepIdpPwdChances(1);
    modification->load(KeyType::IndependentPassword);
    prompt.answers = {Prompt::Answer::Yes};
    EXPECT_TRUE(modification->cmdOK({password, u"third-88"_s, u"third-88"_s, {}}).isDone);
    EXPECT_EQ(lastLog(), u"修改独立密码"_s);
    prompt.boxes.clear();
    crash(key);
    EXPECT_TRUE(program->sealed.CheckIdpPwd(u"third-88"_s));
    EXPECT_EQ(settings().p_idpPwdChances1(), settings().p_idpPwdChances0());

    settings().p_idpPwdSwitch(true);
    modification->load(KeyType::IndependentPassword);
    EXPECT_FALSE(modification->cmdForget());
    EXPECT_FALSE(modification->cmdOK({u"third-88"_s, password, password, {}}).isDone);
    EXPECT_TRUE(modification->cmdOK({u"third-88"_s, {}, {}, u"only a hint"_s}).isDone);
    EXPECT_EQ(prompt.takeTexts(),
              QStringList({u"仅当列级加密关闭时，安全问题才可用于重设独立密码。"_s,
                           u"列级加密已开启，禁止修改独立密码！\r\n您只能修改密码提示。"_s,
                           u"仅修改了密码提示。"_s}));
    EXPECT_TRUE(program->sealed.CheckIdpPwd(u"third-88"_s));
    EXPECT_EQ(settings().p_idpPwdTip(), u"only a hint"_s);
}

TEST_F(SecretsTest, AnsweredQuestionsStandInForTheOldPassword) {
    modification->load(KeyType::IndependentPassword);
    EXPECT_FALSE(modification->cmdForget()) << "no question is set";
    program->connection.execute("ALTER TABLE tb_SecureQuestion RENAME TO away");
    EXPECT_FALSE(modification->cmdForget());
    program->connection.execute("ALTER TABLE away RENAME TO tb_SecureQuestion");
    const QStringList told = prompt.takeTexts();
    ASSERT_EQ(told.size(), 2) << "a failure is told once, and is no lack of questions";
    EXPECT_EQ(told.front(), u"至少设置三个安全问题后，才可以用它们重设独立密码。"_s);
    EXPECT_TRUE(told.back().contains(u"]dlgSecureQuestion.CanResumePwd:"_s));
    setThreeQuestions();
    asksQuestions = false;
    EXPECT_FALSE(modification->cmdForget());
    asksQuestions = true;
    prompt.boxes.clear();
    EXPECT_TRUE(modification->cmdForget());
    EXPECT_EQ(prompt.takeTexts(), QStringList(u"验证通过，请直接输入新的独立密码。"_s));
    prompt.answers = {Prompt::Answer::Yes};
    EXPECT_TRUE(modification->cmdOK({{}, {}, {}, {}}).isDone);
    EXPECT_TRUE(program->sealed.IsIdpPwdNull());
    Statement row(program->connection,
                  "SELECT Description FROM tb_SysLog WHERE statusNo=18 ORDER BY rowid DESC");
    ASSERT_TRUE(row.step());
    EXPECT_EQ(row.text(0), u"(通过验证安全问题重新设置)"_s);
    modification->load(KeyType::IndependentPassword);
    EXPECT_FALSE(modification->isReset()) << "a new showing asks for the old one again";
}

TEST_F(SecretsTest, QuestionsNeedThreeAndKeepTheirAnswersAsDigests) {
    ASSERT_TRUE(setting->load());
    prompt.answers = {Prompt::Answer::Cancel};
    EXPECT_FALSE(setting->cmdOK());
    setting->setQuestion(u"one"_s);
    setting->setAnswer(u"1"_s);
    setting->select(2);
    setting->setQuestion(u"a question alone"_s);
    EXPECT_FALSE(setting->cmdOK());
    EXPECT_EQ(prompt.takeTexts(), QStringList({u"您确定不使用安全问题吗？"_s,
                                               u"如果要启用安全问题，那么您必须至少设置三个。"_s}));
    EXPECT_EQ(questions->CanResumePwd(), false);
    setThreeQuestions();
    EXPECT_EQ(prompt.boxes.back().text,
              u"以下是您设置的全部有效的安全问题，请确认：\r\n1.问1\r\n答：Answer 1"
              "\r\n4.问4\r\n答：Answer 4\r\n6.问6\r\n答：Answer 6"_s);
    EXPECT_EQ(lastLog(), u"设置安全问题3个"_s);
    prompt.boxes.clear();

    crash(key);
    ASSERT_TRUE(questions->ReadDB());
    EXPECT_EQ(questions->CanResumePwd(), true);
    EXPECT_EQ(questions->question(4).m_Answer, Cryptor2::hashString(u"Answer 4"));
    // An answer stands as long as its question does.
    ASSERT_TRUE(setting->load());
    setting->select(1);
    setting->setQuestion(u"changed"_s);
    EXPECT_EQ(setting->CheckEffectiveAmount(), 2);
    setting->setAnswer(u"new"_s);
    prompt.answers = {Prompt::Answer::Ok};
    ASSERT_TRUE(setting->cmdOK());
    EXPECT_EQ(questions->question(4).m_Answer, Cryptor2::hashString(u"Answer 4"));
    EXPECT_EQ(questions->question(1).m_Answer, Cryptor2::hashString(u"new"));

    settings().p_sqUpdateDays(30);
    for (const int number : {1, 4, 6}) {
        setting->select(number);
        setting->cmdClear();
    }
    prompt.answers = {Prompt::Answer::Ok};
    ASSERT_TRUE(setting->cmdOK());
    EXPECT_EQ(settings().p_sqUpdateDays(), 0);
    EXPECT_FALSE(answering->load());
}

TEST_F(SecretsTest, OnlyEffectiveQuestionsAreAskedAndTheLastRightAnswerMovesTheDate) {
    setThreeQuestions();
    clock.advanceDays(9);
    ASSERT_TRUE(answering->load());
    prompt.boxes.clear();
    for (const int number : {1, 4, 6}) {
        EXPECT_EQ(answering->lblQuestion(), u"(%1)：问%1"_s.arg(number));
        const QString right = u"Answer %1"_s.arg(number);
        for (const QString& wrong : {right.toLower(), u" "_s + right, QString()}) {
            EXPECT_EQ(answering->cmdOK(wrong), QuestionAnswering::Outcome::Wrong);
        }
        EXPECT_NE(settings().p_sqUpdateStart().date(), clock.today());
        EXPECT_EQ(answering->cmdOK(right), number == 6 ? QuestionAnswering::Outcome::Passed
                                                       : QuestionAnswering::Outcome::Next);
    }
    EXPECT_EQ(prompt.takeTexts(), QStringList(9, u"答案错误！"_s));
    EXPECT_EQ(settings().p_sqUpdateStart().date(), clock.today());
    EXPECT_EQ(lastLog(), u"验证3个安全问题通过"_s);
}

TEST_F(SecretsTest, AFullDiskLeavesSecretsQuestionsAndAuthoritiesAsTheyWere) {
    setThreeQuestions();
    clock.advanceDays(9);
    const QDateTime answered = settings().p_sqUpdateStart();
    const auto expectUnchanged = [&] {
        modification->load(KeyType::IndependentPassword);
        prompt.answers = {Prompt::Answer::Yes, Prompt::Answer::Ok};
        EXPECT_FALSE(modification->cmdOK({password, {}, {}, u"hint"_s}).isDone);
        EXPECT_TRUE(program->sealed.CheckIdpPwd(password));
        EXPECT_EQ(settings().p_idpPwdTip(), QString());
        ASSERT_TRUE(setting->load());
        setting->setAnswer(u"other"_s);
        EXPECT_FALSE(setting->cmdOK());
        EXPECT_EQ(prompt.boxes.back().text, u"设置安全问题失败！"_s);
        ASSERT_TRUE(answering->load());
        for (const char* answer : {"Answer 1", "Answer 4", "Answer 6"}) {
            EXPECT_NE(answering->cmdOK(QString::fromLatin1(answer)),
                      QuestionAnswering::Outcome::Wrong);
        }
        EXPECT_EQ(settings().p_sqUpdateStart(), answered);
        authorities->load();
        authorities->cmdAllYes();
        EXPECT_FALSE(authorities->cmdOK());
        EXPECT_EQ(settings().p_Authorities(), 0);
    };
    program->connection.execute("PRAGMA query_only=ON");
    expectUnchanged();
    management->load();
    EXPECT_EQ(management->type(Field::IdpPwdChances, u"3"_s), SecretManagement::Typed::Taken);
    EXPECT_FALSE(management->cmdOK());
    EXPECT_EQ(settings().p_idpPwdChances0(), 5);
    program->connection.execute("PRAGMA query_only=OFF");
    // Room for all but the record.
    program->connection.execute(
        "CREATE TRIGGER full BEFORE INSERT ON tb_SysLog BEGIN SELECT RAISE(ABORT,'full'); END");
    expectUnchanged();
    QString message;
    ASSERT_TRUE(settings().ReadDB(message));
    EXPECT_EQ(settings().p_Authorities(), 0);
    EXPECT_EQ(settings().p_sqUpdateStart(), answered);
    ASSERT_TRUE(questions->ReadDB());
    EXPECT_EQ(questions->question(1).m_Answer, Cryptor2::hashString(u"Answer 1"));
}

TEST_F(SecretsTest, DaysAndChancesStayInTheirRangesAndANewMaximumRestoresAllChances) {
    settings().KeepIdpPwdChances(1);
    management->load();
    using Typed = SecretManagement::Typed;
    const struct {
        Field field;
        QString text;
        Typed typed;
    } cases[] = {{Field::LgnKeyModifyDays, u"1000"_s, Typed::Refused},
                 {Field::LgnKeyModifyDays, u"-1"_s, Typed::Refused},
                 {Field::LgnKeyModifyDays, {}, Typed::Incomplete},
                 {Field::LgnKeyModifyDays, u"999"_s, Typed::Taken},
                 {Field::IdpPwdChances, u"2"_s, Typed::Refused},
                 {Field::IdpPwdChances, u"11"_s, Typed::Refused},
                 {Field::IdpPwdChances, u"1"_s, Typed::Incomplete},
                 {Field::IdpPwdChances, u"3"_s, Typed::Taken}};
    for (const auto& one : cases) {
        EXPECT_EQ(management->type(one.field, one.text), one.typed) << one.text.toStdString();
    }
    management->refuse(Field::SQUpdateDays);
    management->refuse(Field::LgnKeyChances);
    EXPECT_EQ(prompt.takeTexts(),
              QStringList({u"天数的取值范围在0~999之间！"_s, u"尝试次数的取值范围在3~10之间！"_s}));
    // Made on Wednesday, 20 May 2026.
    EXPECT_EQ(management->prediction(Field::IdpPwdModifyDays), QString());
    management->type(Field::IdpPwdModifyDays, u"12"_s);
    EXPECT_EQ(management->prediction(Field::IdpPwdModifyDays), u"2026年06月01日，星期一"_s);
    clock.advanceDays(20);
    EXPECT_EQ(management->prediction(Field::IdpPwdModifyDays), u"2026年06月09日，星期二"_s);
    EXPECT_FALSE(management->forceUpdate());
    EXPECT_EQ(prompt.takeTexts(), QStringList(u"当前未设有任何安全问题，不能执行强制更新！"_s));
    EXPECT_TRUE(management->cmdOK());
    crash(key);
    EXPECT_EQ(settings().p_idpPwdChances0(), 3);
    EXPECT_EQ(settings().p_idpPwdChances1(), 3);
    EXPECT_EQ(settings().p_lgnKeyModifyDays(), 999);
}

TEST_F(SecretsTest, EveryAuthorityOpensAndShutsItsOwnGate) {
    int asked = 0;
    auto answer = Authentication::Result::NotVerified;
    IndependentPasswordGate gate({settings(), program->sealed,
                                  [&] {
                                      ++asked;
                                      return answer;
                                  },
                                  [] {}});
    for (int number = 1; number <= Authorities::kCount; ++number) {
        authorities->load();
        authorities->cmdAllNo();
        authorities->check(number, true);
        ASSERT_TRUE(authorities->cmdOK());
        EXPECT_EQ(lastLog(), u"设置二级权限，%1项需要验证独立密码"_s.arg(number));
        for (int other = 1; other <= Authorities::kCount; ++other) {
            EXPECT_EQ(gate.demandAuthority(other), other != number);
        }
    }
    EXPECT_EQ(asked, Authorities::kCount);
    crash(key);
    authorities->load();
    EXPECT_TRUE(authorities->isChecked(Authorities::kCount));
    authorities->cmdAllNo();
    ASSERT_TRUE(authorities->cmdOK());
    EXPECT_EQ(lastLog(), u"设置二级权限，全部无需验证独立密码"_s);
}

TEST_F(SecretsTest, OnlyUsedUpChancesEndTheSessionAndAnEmptyPasswordAsksNothing) {
    int ended = 0;
    auto answer = Authentication::Result::Verified;
    IndependentPasswordGate gate(
        {settings(), program->sealed, [&] { return answer; }, [&] { ++ended; }});
    EXPECT_TRUE(gate.CheckAuthority(true));
    answer = Authentication::Result::NotVerified;
    EXPECT_FALSE(gate.CheckAuthority(true));
    EXPECT_EQ(ended, 0);
    answer = Authentication::Result::UsedUp;
    EXPECT_FALSE(gate.CheckAuthority(true));
    EXPECT_EQ(ended, 1);
    EXPECT_TRUE(gate.CheckAuthority(false));
    authorities->activate();
    EXPECT_TRUE(prompt.boxes.empty());
    settings().SetHashIdpPwd(QString());
    EXPECT_TRUE(gate.CheckAuthority(true));
    authorities->activate();
    EXPECT_EQ(prompt.takeTexts(),
              QStringList(u"请注意，您当前的独立密码为空！二级权限仅当独立密码非空时才有效。"_s));
}

TEST_F(SecretsTest, AnAgedSecretIsAnnouncedRemindedOfAndForcedOnItsDays) {
    std::vector<SecretAge::Kind> renewed;
    bool renews = false;
    bool hasPassword = true;
    SecretAge age({prompt, clock, settings(), *this,
                   [&](SecretAge::Kind kind) {
                       renewed.push_back(kind);
                       return renews;
                   },
                   [&] { return hasPassword; }});
    const QDateTime start = clock.now();
    const auto after = [&](int days, SecretAge::Kind kind = SecretAge::Kind::LoginKey) {
        clock.set(start.addDays(days));
        return age.CheckSecretAge(kind, start, 30);
    };
    EXPECT_TRUE(age.CheckSecretAge(SecretAge::Kind::LoginKey, start.addYears(-9), 0));
    EXPECT_TRUE(after(29));
    EXPECT_EQ(panels[StatusPanel::Message], u"登录密钥将于 2026/6/22 星期一 失效"_s);
    EXPECT_TRUE(prompt.boxes.empty());
    EXPECT_TRUE(after(30));
    EXPECT_TRUE(after(32));
    EXPECT_EQ(prompt.boxes.back().title, u"提醒"_s);
    EXPECT_EQ(prompt.boxes.back().text,
              u"您的登录密钥已经使用了32天，将于 2026/6/22 星期一 失效，请尽快更新！"_s);
    EXPECT_TRUE(renewed.empty());
    EXPECT_FALSE(after(33));
    EXPECT_EQ(prompt.boxes.back().text,
              u"您的登录密钥已经使用了33天，已于 2026/6/22 星期一 "
              "失效，必须更新才能继续访问本数据库！"_s);
    renews = true;
    EXPECT_TRUE(after(33, SecretAge::Kind::Questions));
    EXPECT_EQ(renewed.size(), 2U);
    // Forbidden to change: a session that ended for it could never be entered again.
    settings().p_idpPwdSwitch(true);
    renews = false;
    EXPECT_TRUE(after(99, SecretAge::Kind::IndependentPassword));
    EXPECT_EQ(renewed.size(), 2U);
    settings().p_idpPwdSwitch(false);
    settings().p_idpPwdModifyDays(30);
    settings().p_idpPwdModifyStart(start);
    EXPECT_FALSE(age.checkAll());
    hasPassword = false;
    EXPECT_TRUE(age.checkAll()) << "none is set that could be too old";
}

}  // namespace
}  // namespace keeper
