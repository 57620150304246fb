// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/settings.h"

#include <gtest/gtest.h>

#include <ctime>
#include <limits>

#include "app/open_forms.h"
#include "store/schema.h"
#include "support/fake_ports.h"
#include "support/scripted_prompt.h"
#include "support/temp_home.h"

namespace keeper {
namespace {

class SettingsTest : public testing::Test {
  protected:
    void SetUp() override {
        database.create(home.path(QStringLiteral("a.db")), QStringLiteral("key"));
        createSchema(database, clock.now());
    }
    QString answer(const QByteArray& sql) {
        Statement statement(database, sql.constData());
        return statement.step() ? statement.text(0) : QStringLiteral("(no row)");
    }
    bool readFails() {
        Settings fresh(database, prompt, clock);
        fresh.p_backupDays(77);
        QString message;
        const bool read = fresh.ReadDB(message);
        EXPECT_EQ(read, message.isEmpty());
        EXPECT_EQ(fresh.p_backupDays() == 77, !read) << "a failure leaves the rows in memory";
        const QStringList shown = prompt.takeTexts();
        EXPECT_EQ(shown, read ? QStringList()
                              : QStringList(QStringLiteral("[4]cSystem.ReadDB:\r\n") + message));
        return !read;
    }

    TempHome home;
    FakeClock clock;
    ScriptedPrompt prompt;
    Database database{{.keyRounds = 10}};
    Settings settings{database, prompt, clock};
};

TEST_F(SettingsTest, NewDatabaseHasEachDefaultAtItsPosition) {
    ASSERT_TRUE(settings.NewBuild(QStringLiteral("王小明")));
    const auto rows = [this](const QByteArray& table) {
        return answer("SELECT group_concat(coalesce(value,'-'),' ') FROM (SELECT value FROM " +
                      table + " ORDER BY rowNo)");
    };
    EXPECT_EQ(rows("tb_TypeBoolean"),
              QStringLiteral("0 0 0 0 0 0 0 0 0 0 0 0 0 0 1 0 0 0 0 0 0 0 0 0 0"));
    EXPECT_EQ(rows("tb_TypeByte"), QStringLiteral("0 2 5 10 0 1 0 1 0 7 8 0 0 0 0"));
    EXPECT_EQ(rows("tb_TypeInteger"), QStringLiteral("0 10 0 0 0 0 0 0 0 0 0 0 0 0 0"));
    EXPECT_EQ(rows("tb_TypeLong"),
              QStringLiteral("0 0 -2147483633 -2147483630 0 0 0 6100 0 0 0 0 0 0 0"));
    const QString day = QStringLiteral("2026-05-20T00:00:00");
    EXPECT_EQ(rows("tb_TypeDate"),
              QStringList({day, day, day, day, day}).join(u' ') + QStringLiteral(" - - - - -"));
    EXPECT_EQ(rows("tb_TypeText"), QStringLiteral(" MORV - 王小明/我的备份        "));
    EXPECT_EQ(settings.p_lgnKeyChances1(), 10);
    EXPECT_EQ(settings.p_idpPwdChances1(), 5);
    EXPECT_FALSE(settings.NewBuild(QStringLiteral("x"))) << "the tables are not empty any more";
    EXPECT_EQ(prompt.takeTexts().size(), 1);
}

TEST_F(SettingsTest, RowsComeBackAtTheEdgesOfTheirTypes) {
    ASSERT_TRUE(settings.NewBuild(QStringLiteral("a")));
    settings.p_implicitlyShowPwd(true);
    settings.p_idpPwdChances0(255);
    settings.p_networkBackupDays(std::numeric_limits<std::int16_t>::min());
    settings.p_sheetsWidth(std::numeric_limits<std::int32_t>::max());
    settings.p_lastSynchDate(QDateTime(QDate(1899, 12, 30), QTime(23, 59, 59)));
    settings.p_backupStart(QDateTime());
    settings.p_idpPwdTip(QStringLiteral("'\";\n😀"));
    settings.p_backImagePath(QString());
    QString hint;
    settings.onLgnKeyTip = [&](const QString& text) { hint = text; };
    settings.p_lgnKeyTip(QStringLiteral("提示"));
    EXPECT_EQ(hint, QStringLiteral("提示"));
    ASSERT_TRUE(settings.WriteDB(false));
    database.execute("UPDATE tb_TypeText SET value=NULL WHERE rowNo=10");
    database.execute("INSERT INTO tb_TypeByte VALUES(16,1)");  // surplus

    Settings fresh(database, prompt, clock);
    QString message;
    ASSERT_TRUE(fresh.ReadDB(message)) << message.toStdString();
    EXPECT_TRUE(fresh.p_implicitlyShowPwd());
    EXPECT_EQ(fresh.p_idpPwdChances1(), 255);
    EXPECT_EQ(fresh.p_networkBackupDays(), -32768);
    EXPECT_EQ(fresh.p_sheetsWidth(), 2147483647);
    EXPECT_EQ(fresh.p_lastSynchDate(), settings.p_lastSynchDate());
    EXPECT_FALSE(fresh.p_backupStart().isValid());
    EXPECT_EQ(fresh.p_idpPwdTip(), settings.p_idpPwdTip());
    EXPECT_EQ(fresh.p_lgnKeyTip(), QStringLiteral("提示"));
    ASSERT_TRUE(fresh.WriteDB(false));
    EXPECT_EQ(answer("SELECT count(*) FROM tb_TypeText WHERE value=''"), QStringLiteral("7"));
    EXPECT_EQ(answer("SELECT count(*) FROM tb_TypeByte"), QStringLiteral("16"));
}

TEST_F(SettingsTest, WrongRowsAreAFailureOfTheWhole) {
    EXPECT_TRUE(readFails()) << "the tables of a template are empty";
    ASSERT_TRUE(settings.NewBuild(QStringLiteral("a")));
    EXPECT_FALSE(readFails());
    // A file of another make may lack the constraints.
    database.execute(
        "DROP TABLE tb_TypeByte; CREATE TABLE tb_TypeByte(rowNo INTEGER PRIMARY KEY, value);"
        "DROP TABLE tb_TypeDate; CREATE TABLE tb_TypeDate(rowNo INTEGER PRIMARY KEY, value);"
        "WITH n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<15)"
        "INSERT INTO tb_TypeByte SELECT i,0 FROM n;"
        "INSERT INTO tb_TypeDate(rowNo) SELECT rowNo FROM tb_TypeText");
    ASSERT_FALSE(readFails());
    for (const char* fault :
         {"UPDATE tb_TypeByte SET value=256 WHERE rowNo=2", "UPDATE tb_TypeByte SET value=-1",
          "UPDATE tb_TypeByte SET value='7'", "UPDATE tb_TypeByte SET value=NULL",
          "UPDATE tb_TypeDate SET value='yesterday'",
          "UPDATE tb_TypeBoolean SET rowNo=99 WHERE rowNo=3",
          "DELETE FROM tb_TypeText WHERE rowNo=10", "DROP TABLE tb_TypeLong"}) {
        database.execute("SAVEPOINT fault");
        database.execute(fault);
        if (QByteArray(fault).startsWith("DROP")) {
            Settings fresh(database, prompt, clock);
            QString message;
            EXPECT_FALSE(fresh.ReadDB(message));
            EXPECT_EQ(prompt.takeTexts().size(), 1);
        } else {
            EXPECT_TRUE(readFails()) << fault;
        }
        database.execute("ROLLBACK TO fault; RELEASE fault");
    }
}

TEST_F(SettingsTest, ADayWithoutMidnightInAnotherZoneIsNoFault) {
    ASSERT_TRUE(settings.NewBuild(QStringLiteral("a")));
    const QByteArray before = qgetenv("TZ");
    qputenv("TZ", "America/Santiago");
    ::tzset();
    database.execute("UPDATE tb_TypeDate SET value='2026-09-06T00:00:00'");
    EXPECT_FALSE(readFails());
    QString message;
    EXPECT_TRUE(settings.ReadDB(message));
    EXPECT_EQ(settings.p_backupStart(), QDate(2026, 9, 6).startOfDay());
    before.isNull() ? qunsetenv("TZ") : qputenv("TZ", before);
    ::tzset();
}

TEST_F(SettingsTest, ANewUserGetsNothingOfTheLastOne) {
    settings.p_autoLock(true);
    settings.p_networkBackupDays(9);
    settings.p_lastSynchDate(clock.now());
    settings.p_backImagePath(QStringLiteral("/old"));
    settings.SetHashIdpPwd(QStringLiteral("new"));
    settings.p_idpPwdTip(QStringLiteral("tip 1"));
    settings.p_lgnKeyTip(QStringLiteral("tip 2"));
    const QString digest = settings.p_idpPwdHashCode();
    ASSERT_TRUE(settings.NewBuild(QStringLiteral("a")));
    EXPECT_FALSE(settings.p_autoLock() || settings.p_lastSynchDate().isValid());
    EXPECT_EQ(settings.p_networkBackupDays(), 0);
    EXPECT_EQ(settings.p_backImagePath(), QString());
    EXPECT_EQ(settings.p_idpPwdHashCode(), digest);
    EXPECT_EQ(settings.p_idpPwdTip() + settings.p_lgnKeyTip(), QStringLiteral("tip 1tip 2"));
}

TEST_F(SettingsTest, WritingIsAllOrNothing) {
    ASSERT_TRUE(settings.NewBuild(QStringLiteral("a")));
    database.execute("DELETE FROM tb_TypeText WHERE rowNo=9");
    settings.p_autoEnter(true);
    EXPECT_FALSE(settings.WriteDB(false));
    EXPECT_EQ(answer("SELECT value FROM tb_TypeBoolean WHERE rowNo=1"), QStringLiteral("0"));
    ASSERT_EQ(prompt.boxes.size(), 1U);
    EXPECT_TRUE(prompt.boxes.front().text.startsWith(QStringLiteral("[4]cSystem.WriteDB:\r\n")));
}

TEST_F(SettingsTest, AuthoritiesAndRemindersAreBits) {
    for (int i = 0; i <= 30; ++i) {
        settings.SetAuthority(1, i);
        EXPECT_EQ(settings.GetAuthority(i), 1);
    }
    EXPECT_EQ(settings.p_Authorities(), 0x7FFFFFFF);
    settings.SetAuthority(0, 31);
    settings.SetAuthority(1, 31);
    settings.SetAuthority(1, -1);
    EXPECT_EQ(settings.p_Authorities(), 0x7FFFFFFF);
    EXPECT_EQ(settings.GetAuthority(31) + settings.GetAuthority(-1), 0);
    settings.SetAuthority(2, 30);
    settings.SetAuthority(0, 0);
    EXPECT_EQ(settings.p_Authorities(), 0x3FFFFFFE);

    settings.p_entPwdModifyType(7);
    settings.p_remindFil(false);
    EXPECT_EQ(settings.p_entPwdModifyType(), 3);
    settings.p_remindWeb(false);
    EXPECT_TRUE(settings.p_remindClp() && !settings.p_remindWeb() && !settings.p_remindFil());
}

TEST_F(SettingsTest, EarlierVersionsMeantOtherThings) {
    settings.p_themeBackground(true);
    settings.p_backupType(true);
    settings.p_backupPeriod(true);
    settings.UpgradeDatabase(6);
    EXPECT_TRUE(settings.p_themeBackground() && settings.p_backupType());
    settings.p_backupPeriod(false);
    settings.UpgradeDatabase(4);
    EXPECT_TRUE(settings.p_backupType()) << "not the old period";
    EXPECT_FALSE(settings.p_backupPeriod()) << "not the old type";
    EXPECT_TRUE(settings.p_deadCountType() && settings.p_themeBackground());
    settings.UpgradeDatabase(3);
    EXPECT_FALSE(settings.p_themeBackground());
    EXPECT_TRUE(settings.p_deadCountType());
}

struct Form final : OpenForm {
    Form(OpenForms& owner, const char* formsName, QStringList& log)
        : forms(owner), name(QString::fromLatin1(formsName)), calls(log) {
        forms.ManageForms(*this, true);
    }
    QString formName() const override { return name; }
    void closeForm() override {
        calls << QStringLiteral("close ") + name;
        forms.ManageForms(*this, false);
        if (child != nullptr) {
            child->closeForm();
        }
    }
    void activateForm() override { calls << QStringLiteral("front ") + name; }
    OpenForms& forms;
    QString name;
    QStringList& calls;
    Form* child = nullptr;
};

TEST(OpenForms, CloseInTheOrderOfTheTableAndComeToTheFrontFromItsEnd) {
    OpenForms forms;
    QStringList log;
    Form unknown(forms, "frmMain", log);
    EXPECT_FALSE(forms.IsAnyFormOn());
    Form last(forms, "frmLog", log);
    Form first(forms, "dlgAbout", log);
    Form child(forms, "dlgSearchEngine", log);
    first.child = &child;
    forms.ActivateForm();
    forms.CloseForms();
    EXPECT_EQ(log.join(u','), QStringLiteral("front frmLog,close dlgAbout,close dlgSearchEngine,"
                                             "close frmLog"));
    EXPECT_FALSE(forms.IsAnyFormOn());
    forms.ActivateForm();
    Form older(forms, "dlgDemo", log);
    const Form younger(forms, "dlgDemo", log);
    forms.ManageForms(older, false);
    EXPECT_TRUE(forms.IsAnyFormOn()) << "the younger form of the name is still there";
}

}  // namespace
}  // namespace keeper
