// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "store/entries.h"

#include <array>
#include <random>

#include "store/store_fixture.h"

namespace keeper {
namespace {

using namespace Qt::StringLiterals;

class EntriesTest : public StoreTest {
  protected:
    void SetUp() override {
        StoreTest::SetUp();
        for (const QString& path : {u"0105"_s, u"010501"_s, u"0201"_s, u"0301"_s}) {
            ASSERT_TRUE(addDirectory(path));
        }
        m_database.execute(
            "insert into tb_AssPwd values ('共用', 'shared', 6, null, 1);"
            "insert into tb_AssNum values ('手机', '139', '', '', 1);");
    }
    QString column(const char* name, const char* number) {
        return value(u"select %1 from tb_Entry where dirPath || entNo = '%2'"_s.arg(
            QLatin1String(name), QLatin1String(number)));
    }
    QString column(const char* name) { return column(name, "010503"); }
    /// The raw cell of tb_Net of the one entry.
    QString net(const char* name) {
        return value(u"select %1 from tb_Net"_s.arg(QLatin1String(name)));
    }
};

TEST_F(EntriesTest, ANewEntryStartsUnusedWhateverTheObjectSays) {
    Web web = webAt(u"010503"_s);
    web.m_usedTimes = 5;
    web.m_Bookmark = true;
    web.m_recentModPwd = QDate(2020, 2, 29);
    web.m_modPwdDays = 30;
    web.m_Remarks = u"两行\r\n备注 'quoted' 😀"_s;
    ASSERT_TRUE(m_webs.Add(web));
    const Web read = m_webs.Search(u"010503"_s);
    EXPECT_EQ(read.p_No(), u"010503"_s);
    EXPECT_EQ(read.m_entNo, u"03"_s);
    EXPECT_EQ(read.m_usedTimes, 0);
    EXPECT_TRUE(read.m_Effective);
    EXPECT_FALSE(read.m_Bookmark);
    EXPECT_EQ(read.m_createDate, m_clock.today());
    EXPECT_EQ(read.m_recentUpdate, m_clock.now());
    EXPECT_EQ(read.m_recentModPwd, QDate(2020, 2, 29));
    EXPECT_EQ(read.m_modPwdDays, 30);
    EXPECT_EQ(read.m_Remarks, web.m_Remarks);
    EXPECT_EQ(read.m_customPwd, web.m_customPwd);
    EXPECT_EQ(read.m_Address, web.m_Address);
    EXPECT_EQ(m_webs.Search(u"010504"_s).p_No(), QString());
    EXPECT_EQ(m_webs.Search(u"3"_s).p_No(), QString());
    EXPECT_EQ(m_fils.Search(u"010503"_s).p_No(), QString()) << "another kind";
}

TEST_F(EntriesTest, AnEntryBoundToANameKeepsNoValueOfItsOwn) {
    Web web = webAt(u"010503"_s);
    web.m_pwdName = u"共用"_s;
    web.m_numName = u"手机"_s;
    ASSERT_TRUE(m_webs.Add(web));
    EXPECT_EQ(column("customPwd"), QString());
    EXPECT_EQ(net("customNum"), QString());
    web.m_pwdName = web.m_numName = kCustomName;
    ASSERT_TRUE(m_webs.Modify(u"010503"_s, web));
    EXPECT_EQ(column("customPwd"), web.m_customPwd);
    web.m_pwdName = u"共用"_s;
    web.m_numName = u"手机"_s;
    ASSERT_TRUE(m_webs.Modify(u"010503"_s, web));
    EXPECT_EQ(column("customPwd"), QString());
    EXPECT_EQ(net("customNum"), QString());
}

TEST_F(EntriesTest, ModifyMayRenumberAndLeavesTheRest) {
    ASSERT_TRUE(m_webs.Add(webAt(u"010503"_s)));
    ASSERT_TRUE(m_entries.SetBookmark(u"010503"_s, true));
    EXPECT_EQ(m_entries.AddUsedTimes(u"010503"_s), 1);
    m_clock.advanceDays(3);
    Web web = webAt(u"01050177"_s);
    web.m_Address = u"ftp://b"_s;
    ASSERT_TRUE(m_webs.Modify(u"010503"_s, web));
    const Web read = m_webs.Search(u"01050177"_s);
    EXPECT_EQ(read.m_Address, u"ftp://b"_s);
    EXPECT_TRUE(read.m_Bookmark);
    EXPECT_EQ(read.m_usedTimes, 1);
    EXPECT_EQ(read.m_createDate, m_clock.today().addDays(-3));
    EXPECT_EQ(read.m_recentUpdate, m_clock.now());
    EXPECT_EQ(count(u"tb_Net"_s), 1);

    // A missing entry is no failure, and whoever has the new number keeps its companion row.
    web.m_Address = u"x"_s;
    EXPECT_TRUE(m_webs.Modify(u"010555"_s, web));
    EXPECT_EQ(m_webs.Search(u"01050177"_s).m_Address, u"ftp://b"_s);
}

TEST_F(EntriesTest, BothRowsAreWrittenOrNone) {
    Web web = webAt(u"010503"_s);
    web.m_numName = u"没有这个号码"_s;
    EXPECT_FALSE(m_webs.Add(web));
    EXPECT_TRUE(onlyMessage().contains(u"]Webs.Add:\r\n"_s));
    EXPECT_EQ(count(u"tb_Entry"_s), 0);

    Prg prg;
    static_cast<NetEntry&>(prg) = webAt(u"020103"_s);
    ASSERT_TRUE(m_prgs.Add(prg));
    prg.m_numName = u"没有这个号码"_s;
    prg.m_Title = u"新"_s;
    EXPECT_FALSE(m_prgs.Modify(u"020103"_s, prg));
    EXPECT_TRUE(onlyMessage().contains(u"]Prgs.Modify:\r\n"_s));
    EXPECT_EQ(m_prgs.Search(u"020103"_s).m_Title, u"邮箱"_s);

    m_database.execute(
        "create trigger t before insert on tb_Fil begin select raise(abort, 'disk'); end");
    EXPECT_FALSE(m_fils.Add(filAt(u"030101"_s)));
    EXPECT_TRUE(onlyMessage().contains(u"]Fils.Add:\r\n"_s));
    EXPECT_FALSE(m_fils.Add(filAt(u"037701"_s)));
    EXPECT_TRUE(onlyMessage().contains(u"]Entries.Add:\r\n"_s));
    EXPECT_EQ(count(u"tb_Entry"_s), 1);
}

TEST_F(EntriesTest, DeletesOneOrADirectorysOwn) {
    for (const QString& number : {u"010501"_s, u"010502"_s, u"01050101"_s}) {
        ASSERT_TRUE(m_webs.Add(webAt(number)));
    }
    EXPECT_TRUE(m_entries.Delete(webAt(u"010502"_s)));
    EXPECT_FALSE(m_entries.Delete(webAt(u"010502"_s)));
    EXPECT_TRUE(onlyMessage().startsWith(u"[3021]Entries.Delete:\r\n"_s));
    m_entries.DeleteLike(u"0105"_s);
    EXPECT_EQ(value(u"select group_concat(dirPath || entNo) from tb_Net"_s), u"01050101"_s);
}

TEST_F(EntriesTest, DiscardingCancelsTheReminderForGood) {
    Web web = webAt(u"010503"_s);
    web.m_modPwdDays = 30;
    ASSERT_TRUE(m_webs.Add(web));
    EXPECT_TRUE(m_entries.SetEffective(u"010503"_s, false));
    EXPECT_EQ(column("Effective") + column("modPwdDays"), u"00"_s);
    EXPECT_TRUE(m_entries.SetEffective(u"010503"_s, true));
    EXPECT_EQ(column("Effective") + column("modPwdDays"), u"10"_s);
    EXPECT_FALSE(m_entries.SetEffective(u"010504"_s, true));
    EXPECT_FALSE(m_entries.SetBookmark(u"010504"_s, true));
    EXPECT_EQ(m_entries.AddUsedTimes(u"010504"_s), 0);
}

TEST_F(EntriesTest, MovingKeepsTheCompanionAndTheTimeOfChange) {
    Web web = webAt(u"010503"_s);
    web.m_numName = u"手机"_s;
    ASSERT_TRUE(m_webs.Add(web));
    const QDateTime added = m_clock.now();
    m_clock.advanceDays(1);
    EXPECT_TRUE(m_entries.MoveTo(u"010503"_s, u"020107"_s));
    const Prg prg = m_prgs.Search(u"020107"_s);
    EXPECT_EQ(prg.m_numName, u"手机"_s);
    EXPECT_EQ(prg.m_recentUpdate, added);
    EXPECT_FALSE(m_entries.MoveTo(u"020107"_s, u"030107"_s));
    EXPECT_EQ(onlyMessage(), u"[5]Entries.MoveTo:\r\n网络类和文件类的条目或目录不能互相移动。"_s);
    EXPECT_TRUE(m_entries.MoveTo(u"010599"_s, u"010501"_s));
    EXPECT_EQ(count(u"tb_Entry"_s), 1);
}

TEST_F(EntriesTest, ListsForTreeAndRecentUpdatesHaveAnOrder) {
    for (const QString& number : {u"01050102"_s, u"010507"_s, u"010502"_s, u"030101"_s}) {
        ASSERT_TRUE(m_entries.Add(webAt(number)));
    }
    m_clock.advanceSeconds(1);
    ASSERT_TRUE(m_entries.Modify(u"010507"_s, webAt(u"010507"_s)));
    QStringList numbers;
    EXPECT_EQ(m_entries.Display([&](const EntryLine& line) { numbers << line.number(); }), 4);
    EXPECT_EQ(numbers, QStringList({u"010502"_s, u"010507"_s, u"01050102"_s, u"030101"_s}));
    QStringList lines;
    EXPECT_EQ(m_entries.GetRecentUpdates(lines, 3), 3);
    EXPECT_EQ(lines.value(0), u"邮箱"_s.leftJustified(200) + u"010507"_s);
    // Of one second the last added first.
    EXPECT_TRUE(lines.value(1).endsWith(u"030101"_s));
    EXPECT_TRUE(lines.value(2).endsWith(u"010502"_s));
    EXPECT_EQ(m_entries.GetRecentUpdates(lines, -1), 0);
}

TEST_F(EntriesTest, EnciphersSecretsAtTheBoundary) {
    m_ground.key.isOn = true;
    ASSERT_TRUE(m_webs.Add(webAt(u"010503"_s)));
    EXPECT_EQ(column("customPwd"), m_ground.cryptor.EncryptString(u"密码p1"_s, m_ground.key.key));
    EXPECT_EQ(net("customNum"), m_ground.cryptor.EncryptString(u"账号n1"_s, m_ground.key.key));
    const Web read = m_webs.Search(u"010503"_s);
    EXPECT_EQ(read.m_customPwd, u"密码p1"_s);
    EXPECT_EQ(read.m_customNum, u"账号n1"_s);

    m_ground.key.key.clear();
    EXPECT_FALSE(m_webs.Add(webAt(u"010504"_s)));
    EXPECT_TRUE(onlyMessage().startsWith(u"[5]Entries.Add:\r\n"_s));
    EXPECT_EQ(count(u"tb_Entry"_s), 1);
}

TEST_F(EntriesTest, EveryTextHasOneCellThatReadsBack) {
    constexpr std::array kUnits{u'a',  u'0',      u'é',      u'č',     u'密',
                                u'\0', u'\xF781', u'\xF740', u'\xFFFF'};
    std::mt19937 draw(1);
    m_ground.key.isOn = true;
    for (int i = 0; i < 4000; ++i) {
        // Keys of every block; texts within the page, beyond it, and halves of pairs.
        m_ground.key.key = QString(1 + i % 40, QChar(u'a' + i % 26));
        QString plain;
        const bool isAny = draw() % 2 == 0;
        for (auto left = 1 + draw() % 40; left > 0; --left) {
            plain += isAny ? QChar(static_cast<char16_t>(draw()))
                           : QChar(kUnits.at(draw() % kUnits.size()));
        }
        const QString cell = m_ground.columns.toColumn(plain);
        ASSERT_EQ(m_ground.columns.toPlain(cell), plain) << "draw " << i;
        const QString text = m_ground.cryptor.EncryptString(plain, m_ground.key.key);
        const bool isText = m_ground.cryptor.DecryptString(text, m_ground.key.key) == plain;
        ASSERT_EQ(cell == text, isText) << "draw " << i;
        ASSERT_EQ(m_ground.cryptor.DecryptString(cell, m_ground.key.key),
                  isText ? plain : QString());
    }
    // Only from outside: more units than there are bytes, and bytes behind the units.
    for (const QString& bytes : {u"\0\xF7FF\xF7FF\xF7FF\xF7FFx"_s, u"\0\0\0\0\1\0xx"_s}) {
        EXPECT_EQ(m_ground.columns.toPlain(m_ground.cryptor.EncryptString(bytes, m_ground.key.key)),
                  QString());
    }
}

TEST_F(EntriesTest, PathsFollowAChangedUserNameLiterally) {
    const QStringList paths{u"MORV - a_%['b/加密文件/x.aes"_s, u"MORV - a_%['b/MORV - a_%['b/y"_s,
                            u"MORV - A_%['b/z"_s, u"MORV - aXY['b/z"_s, u"/mnt/MORV - a_%['b/z"_s};
    for (int i = 0; i < paths.size(); ++i) {
        Fil fil = filAt(u"03010%1"_s.arg(i + 1));
        fil.m_filePath = paths.at(i);
        fil.m_hashCode = u"0123"_s;
        fil.m_Encrypted = true;
        ASSERT_TRUE(m_fils.Add(fil));
    }
    EXPECT_TRUE(m_fils.UpdateFilePathOnUserNameChange(u"a_%['b"_s, u"新用户"_s));
    EXPECT_EQ(m_fils.Search(u"030101"_s).m_filePath, u"MORV - 新用户/加密文件/x.aes"_s);
    EXPECT_EQ(m_fils.Search(u"030102"_s).m_filePath, u"MORV - 新用户/MORV - 新用户/y"_s);
    for (int i = 2; i < paths.size(); ++i) {
        EXPECT_EQ(m_fils.Search(u"03010%1"_s.arg(i + 1)).m_filePath, paths.at(i));
    }
    EXPECT_TRUE(m_fils.Search(u"030101"_s).m_Encrypted);
    EXPECT_EQ(m_fils.Search(u"030101"_s).m_hashCode, u"0123"_s);
}

TEST_F(EntriesTest, MarkersOfProgramFoldersMigrateStepByStep) {
    Prg prg;
    static_cast<NetEntry&>(prg) = webAt(u"020103"_s);
    prg.m_Address = u"MORV - Programs/a/MORV - Programs/b"_s;
    ASSERT_TRUE(m_prgs.Add(prg));
    const auto location = [&] { return m_prgs.Search(u"020103"_s).m_Address; };
    EXPECT_TRUE(m_entries.UpdateReducedLocation(2));
    EXPECT_TRUE(m_entries.UpdateReducedLocation(9));
    EXPECT_EQ(location(), prg.m_Address);
    EXPECT_TRUE(m_entries.UpdateReducedLocation(1));
    EXPECT_EQ(location(), u"MORV_Programs/a/MORV - Programs/b"_s);
    EXPECT_TRUE(m_entries.UpdateReducedLocation(2));
    EXPECT_EQ(location(), u"MORV_Programs(x86)/a/MORV - Programs/b"_s);
    prg.m_Address = u"MORV_Programs(x64)/c"_s;
    ASSERT_TRUE(m_prgs.Modify(u"020103"_s, prg));
    EXPECT_TRUE(m_prgs.UpgradeData());
    EXPECT_EQ(location(), u"MORV_Programs/c"_s);
}

}  // namespace
}  // namespace keeper
