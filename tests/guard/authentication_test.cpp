// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "guard/authentication.h"

#include "guard/column_switch.h"
#include "support/session_fixture.h"

namespace keeper {
namespace {

using Decision = Authentication::Result;
using Type = Authentication::SecretType;

class FakeReader final : public FingerprintReader {
  public:
    bool isFree = true;
    std::function<void(Outcome)> tell;

    [[nodiscard]] bool isAvailable() override { return isFree; }
    void lookFor(std::function<void(bool)> teller) override { teller(isFree); }
    [[nodiscard]] bool start(std::function<void(Outcome)> teller) override {
        if (isFree) {
            tell = std::move(teller);
        }
        return isFree;
    }
    void stop() override { tell = nullptr; }
};

/// The layers of protection over one start of the program.
struct Protection {
    explicit Protection(SessionProgram& of) : program(of) {
        // What a person does when the independent password is asked for.
        program.unlocksColumns = [this] {
            const auto record = program.users.makeUser();
            EXPECT_TRUE(record->ReadRegistry(program.system.p_userName()) &&
                        record->p_activeFile() == program.system.p_tmpFile())
                << "a kill at the question would give the tries back";
            form.load(Type::KeepPassword);
            for (const QString& entry : entries) {
                form.cmdOK(entry);
            }
            form.cmdCancel();
            return form.result() == Decision::Verified;
        };
    }

    SessionProgram& program;
    QStringList entries;
    FakeReader reader;
    IndependentPassword secret{
        {program.prompt, program.clock, program.system, program.sealed, program.logs}};
    Authentication form{{program.prompt, program.system, secret, reader}};
    ColumnCryption cryption{program.connection, program.prompt, program.loop, program.cipher,
                            program.columnKey};
    ColumnSwitch columns{{program.prompt, program.clock, program.system, program.connection, secret,
                          program.logs, cryption}};
};

class AuthenticationTest : public SessionTest {
  protected:
    void SetUp() override {
        SessionTest::SetUp();
        protect();
        program->system.SetHashIdpPwd(secret);
        ASSERT_TRUE(program->system.WriteDB(false));
    }
    void protect() { protection = std::make_unique<Protection>(*program); }
    void crashAndRestart() {
        restart();
        protect();
    }
    void turnColumnsOn() {
        protection->columns.load();
        prompt.answers = {Prompt::Answer::Ok};
        protection->columns.chkCryptionStatus(secret);
        ASSERT_TRUE(program->system.settings().p_idpPwdSwitch());
        prompt.boxes.clear();
    }
    int customPasswords(const QString& text) {
        Statement rows(program->connection, "SELECT count(*) FROM tb_Entry WHERE customPwd=?");
        rows.bind(1, text);
        return rows.step() ? static_cast<int>(rows.integer(0)) : -1;
    }

    std::unique_ptr<Protection> protection;
    const QString secret = u"独立pwd-77"_s;
};

TEST_F(AuthenticationTest, AnErrorNobodyKnowsIsToldAtLoginAndDestroysNothing) {
    turnColumnsOn();
    leaveAndRestart();
    program->unlocksColumns = []() -> bool { throw std::runtime_error("out of order"); };
    EXPECT_FALSE(program->enter(key));
    ASSERT_FALSE(prompt.boxes.empty());
    EXPECT_EQ(prompt.boxes.back().title, u"未知错误"_s);
    EXPECT_TRUE(prompt.boxes.back().text.contains(u"out of order"_s));
    crashAndRestart();
    protection->entries = {secret};
    EXPECT_TRUE(program->enter(key)) << lastText().toStdString();
}

TEST_F(AuthenticationTest, ChancesOutliveCrashesAndSessionsUntilTheRightEntry) {
    Authentication* form = &protection->form;
    form->load(Type::IndependentPassword);
    EXPECT_EQ(form->state().title, u"验证独立密码"_s);
    EXPECT_EQ(form->state().userName, name);
    form->cmdOK(QString());
    EXPECT_EQ(lastText(), u"您还未输入密码！"_s);
    form->cmdOK(u"wrong"_s);
    EXPECT_EQ(lastText(), u"密码错误！你还有4次尝试机会。"_s);
    form->cmdCancel();
    EXPECT_EQ(form->result(), Decision::NotVerified);

    crashAndRestart();
    ASSERT_TRUE(program->enter(key));
    prompt.boxes.clear();
    leaveAndRestart();
    protect();
    ASSERT_TRUE(program->enter(key));
    prompt.boxes.clear();
    form = &protection->form;
    form->load(Type::LoginKey);
    EXPECT_EQ(form->state().label, u"登录密钥："_s);
    for (const int left : {3, 2, 1}) {
        form->cmdOK(u"wrong"_s);
        EXPECT_EQ(lastText(), u"密码错误！你还有%1次尝试机会。"_s.arg(left));
    }
    form->cmdOK(u"wrong"_s);
    EXPECT_EQ(prompt.boxes.back().icon, Prompt::Icon::Critical);
    EXPECT_EQ(lastText(), u"密码错误！独立密码的尝试机会已用完！"_s);
    EXPECT_EQ(form->result(), Decision::UsedUp);
    EXPECT_TRUE(form->isClosed());
    Statement row(program->connection, "SELECT lCount FROM tb_SysLog WHERE statusNo=7");
    ASSERT_TRUE(row.step());
    EXPECT_EQ(row.integer(0), 5);

    // A session that begins without chances can be had back by the right password alone.
    form->load(Type::IndependentPassword);
    form->cmdOK(u"wrong"_s);
    EXPECT_EQ(form->result(), Decision::UsedUp);
    form->load(Type::IndependentPassword);
    form->cmdOK(secret);
    EXPECT_EQ(form->result(), Decision::Verified);
    EXPECT_EQ(program->system.settings().p_idpPwdChances1(), 5);
    EXPECT_EQ(program->system.p_plainIdpPwd(), QString()) << "nobody asked to keep it";
    form->load(Type::KeepPassword);
    form->cmdOK(secret);
    EXPECT_EQ(program->system.p_plainIdpPwd(), secret);
    EXPECT_EQ(prompt.takeTexts().size(), 1);
}

TEST_F(AuthenticationTest, AnAttemptThatCannotBeCountedIsNone) {
    program->connection.execute(
        "CREATE TRIGGER full BEFORE UPDATE ON tb_TypeByte BEGIN SELECT RAISE(ABORT,'full'); END");
    protection->form.load(Type::IndependentPassword);
    protection->form.cmdOK(secret);
    EXPECT_TRUE(lastText().contains(u"]dlgAuthentication.IdentifySecret:\r\n"_s));
    EXPECT_FALSE(protection->form.isClosed());
    EXPECT_EQ(program->system.settings().p_idpPwdChances1(), 5);
}

TEST_F(AuthenticationTest, WithColumnEncryptionALoginStopsBeforeAnythingIsReadable) {
    program->connection.execute("UPDATE tb_Entry SET customPwd='canary'");
    turnColumnsOn();
    EXPECT_EQ(customPasswords(u"canary"_s), 0);
    leaveAndRestart();
    protect();

    const QByteArray sealedBefore = contentOf(sealedFile);
    protection->entries = {u"wrong"_s};
    EXPECT_FALSE(program->enter(key));
    EXPECT_EQ(lastText(), u"密码错误！你还有4次尝试机会。"_s);
    EXPECT_FALSE(program->connection.isOpen());
    EXPECT_EQ(program->system.p_plainIdpPwd(), QString());
    EXPECT_NE(contentOf(sealedFile), sealedBefore) << "the attempt is sealed in";

    restart();
    protect();
    protection->entries = {u"wrong"_s, secret};
    ASSERT_TRUE(program->enter(key));
    EXPECT_TRUE(prompt.takeTexts().contains(u"密码错误！你还有3次尝试机会。"_s));
    EXPECT_EQ(program->fils.Search(u"0301"_s).m_customPwd, u"canary"_s);

    // A crash leaves a working copy, and the question stands in front of that, too.
    crashAndRestart();
    EXPECT_FALSE(program->enter(key));
    EXPECT_FALSE(program->connection.isOpen());
    crashAndRestart();
    protection->entries = {secret};
    ASSERT_TRUE(program->enter(key));
    EXPECT_TRUE(program->resumed);
    EXPECT_EQ(program->fils.Search(u"0301"_s).m_customPwd, u"canary"_s);
}

TEST_F(AuthenticationTest, AFingerStandsForARememberedKey) {
    leaveAndRestart();
    program->login.activate();
    EXPECT_FALSE(program->login.state().isFingerprintOffered) << "no reader";
    restart();
    program->hasReader = program->knowsFinger = true;
    program->login.activate();
    EXPECT_TRUE(program->login.state().isFingerprintOffered);
    program->login.setAutoLogin(true);
    program->login.setFingerprint(true);
    EXPECT_FALSE(program->login.state().autoLogin);
    EXPECT_TRUE(program->login.state().remLgnKey) << "a finger stands for a remembered key";
    program->login.setRemLgnKey(false);
    EXPECT_FALSE(program->login.state().fingerprint);
    program->login.setFingerprint(true);
    ASSERT_TRUE(program->enter(key));
    EXPECT_EQ(program->fingersAsked, 0);
    leaveAndRestart();
    program->hasReader = true;
    program->login.activate();
    EXPECT_EQ(program->fingersAsked, 1);
    EXPECT_TRUE(stored()->p_fingerprint());
    EXPECT_EQ(program->login.state().keyText, QString());
    program->login.OnLoginClicked();
    EXPECT_EQ(lastText(), u"您忘记输入密钥了！"_s);
    EXPECT_FALSE(program->login.isClosed()) << "neither a strange finger nor none leads in";
    restart();
    program->hasReader = program->knowsFinger = true;
    program->login.activate();
    EXPECT_EQ(program->login.m_result(), Login::Result::LogIn);
    EXPECT_TRUE(program->road.ConnectDatabase(program->resumed));
}

TEST_F(AuthenticationTest, TheReaderIsWaitedForAndSetFree) {
    using Outcome = FingerprintReader::Outcome;
    Authentication& form = protection->form;
    FakeReader& reader = protection->reader;
    const auto touch = [&](Outcome outcome) {
        const auto tell = reader.tell;
        ASSERT_TRUE(tell);
        tell(outcome);
    };
    form.loadFinger(name);
    form.cmdOK(secret);
    EXPECT_FALSE(form.isClosed()) << "a password is no finger";
    touch(Outcome::NoMatch);
    EXPECT_TRUE(form.state().isFingerRefused);
    touch(Outcome::TryAgain);
    EXPECT_FALSE(form.state().isFingerRefused);
    touch(Outcome::Match);
    EXPECT_EQ(form.result(), Decision::Verified);
    EXPECT_FALSE(reader.tell);
    form.loadFinger(name);
    for (int i = 0; i < 3; ++i) {
        touch(Outcome::NoMatch);
    }
    EXPECT_TRUE(form.isClosed());
    EXPECT_EQ(form.result(), Decision::NotVerified);
    EXPECT_EQ(prompt.takeTexts().size(), 1);
    form.loadFinger(name);
    form.cmdCancel();
    EXPECT_FALSE(reader.tell);
    reader.isFree = false;
    form.loadFinger(name);
    EXPECT_TRUE(form.isClosed());
    EXPECT_EQ(form.result(), Decision::NotVerified);
}

}  // namespace
}  // namespace keeper
