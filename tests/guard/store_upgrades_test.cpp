// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "guard/store_upgrades.h"

#include "app/settings.h"
#include "guard/guard_fixture.h"
#include "store/companions.h"
#include "store/entries.h"
#include "support/store_ground.h"

namespace keeper {
namespace {

/// The guard joined to the classes that own the tables.
class StoreUpgradesTest : public GuardTest {
  protected:
    void SetUp() override {
        GuardTest::SetUp();
        ASSERT_TRUE(settings.NewBuild(u"某人"_s));
        settings.p_backupPeriod(true);
        settings.p_backupType(true);
        settings.p_deadCountType(false);
        ASSERT_TRUE(settings.WriteDB(false));
    }
    void addProgram(const QString& location) {
        database.execute(
            "insert into tb_Entry(dirPath,entNo,Title,pwdName,usedTimes,Effective,Bookmark,"
            "modPwdDays) values('02','09','t','自定义',0,1,0,0)");
        Statement row(database,
                      "insert into tb_Net(dirPath,entNo,numName,Location) "
                      "values('02','09','自定义',?)");
        row.bind(1, location).run();
    }
    QString location() {
        Statement row(database, "select Location from tb_Net where dirPath='02' and entNo='09'");
        EXPECT_TRUE(row.step());
        return row.text(0);
    }
    /// A login to a database of an older version.
    GuardVerdict upgradeFrom(const QString& version) {
        SWProtect older({database, clock, random, prompt, *osInfo, storeUpgrades}, version);
        EXPECT_TRUE(older.ReadDB());
        EXPECT_TRUE(older.SetDBVersionAsApp());
        return examine();
    }
    GuardVerdict examine() {
        SWProtect program({database, clock, random, prompt, *osInfo, storeUpgrades}, u"3.4.0"_s);
        EXPECT_TRUE(program.ReadDB());
        return program.ExamineDBVersion();
    }
    bool storedDeadCountType() {
        Settings fresh(database, prompt, clock);
        QString message;
        EXPECT_TRUE(fresh.ReadDB(message));
        return fresh.p_deadCountType();
    }

    Settings settings{database, prompt, clock};

  private:
    StoreGround m_ground{database, prompt, clock};
    Entries m_entries{m_ground.context};
    Prgs m_programs{m_ground.context, m_entries};

  protected:
    StoreUpgrades storeUpgrades{m_entries, m_programs, settings};
};

TEST_F(StoreUpgradesTest, EachVersionRunsItsOwnMigration) {
    addProgram(u"MORV - Programs/a.exe"_s);
    EXPECT_TRUE(upgradeFrom(u"3.2.1"_s).ok);
    EXPECT_EQ(location(), u"MORV_Programs/a.exe"_s);
    EXPECT_TRUE(upgradeFrom(u"3.2.2"_s).ok);
    EXPECT_EQ(location(), u"MORV_Programs(x86)/a.exe"_s);
    database.execute("update tb_Net set Location='MORV_Programs(x64)/a.exe'");
    EXPECT_TRUE(upgradeFrom(u"3.2.6"_s).ok);
    EXPECT_EQ(location(), u"MORV_Programs/a.exe"_s);
    EXPECT_FALSE(storedDeadCountType());
}

TEST_F(StoreUpgradesTest, SettingsAreTurnedOnceAndStoredWithTheStamp) {
    EXPECT_EQ(upgradeFrom(u"3.2.5"_s).message, u"您的数据库版本已升级为v3.2.6！"_s);
    EXPECT_TRUE(storedDeadCountType());
    EXPECT_FALSE(settings.p_backupPeriod());
    EXPECT_EQ(field("02"), u"3.4.0"_s);
    // The caller's own stamp never came: nothing is turned back.
    EXPECT_EQ(examine().message, QString());
    EXPECT_TRUE(storedDeadCountType());
}

TEST_F(StoreUpgradesTest, AStampThatFailsTakesTheMigrationBack) {
    SWProtect older({database, clock, random, prompt, *osInfo, storeUpgrades}, u"3.2.4"_s);
    ASSERT_TRUE(older.ReadDB());
    ASSERT_TRUE(older.SetDBVersionAsApp());
    stopGuardWrites(database);
    const GuardVerdict verdict = examine();
    EXPECT_TRUE(verdict.ok);
    EXPECT_EQ(verdict.message, QString());
    EXPECT_EQ(prompt.takeTexts().last(), u"升级数据库失败！"_s);
    EXPECT_FALSE(storedDeadCountType());
    EXPECT_FALSE(settings.p_deadCountType());
    EXPECT_TRUE(settings.p_backupPeriod());
}

}  // namespace
}  // namespace keeper
