// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "store/ass_nums.h"
#include "store/ass_pwds.h"
#include "store/ent_logs.h"
#include "store/store_fixture.h"

namespace keeper {
namespace {

using namespace Qt::StringLiterals;

class AssociationsTest : public StoreTest {
  protected:
    void SetUp() override {
        StoreTest::SetUp();
        ASSERT_TRUE(m_assPwds.Add(passwordNamed(u"O'Neil"_s)));
        ASSERT_TRUE(m_assPwds.Add(passwordNamed(u"other"_s)));
        ASSERT_TRUE(m_assNums.Add(numberNamed(u"手机's"_s)));
        ASSERT_TRUE(m_assNums.Add(numberNamed(u"second"_s)));
        for (const QString& number : {u"0101"_s, u"0102"_s, u"0103"_s, u"0104"_s}) {
            Web web = webAt(number);
            web.m_recentModPwd = QDate(2020, 1, 1);
            web.m_pwdName = number == u"0104"_s ? kCustomName : u"O'Neil"_s;
            web.m_numName = number == u"0104"_s ? kCustomName : u"手机's"_s;
            ASSERT_TRUE(m_webs.Add(web));
        }
    }
    static AssPwd passwordNamed(const QString& name) {
        AssPwd object;
        object.m_Name = name;
        object.m_Content = u"旧pass"_s;
        object.m_Length = 5;
        object.m_updateTime = QDateTime(QDate(2026, 1, 2), QTime(3, 4, 5));
        return object;
    }
    static AssNum numberNamed(const QString& name) {
        AssNum object;
        object.m_Name = name;
        object.m_Content = u"13900000000"_s;
        object.m_Type = u"手机号"_s;
        object.m_Comment = u"备注"_s;
        return object;
    }
    int restarted() { return count(u"tb_Entry where recentModPwd = '2026-05-20T00:00:00'"_s); }

    EntLogs m_entLogs{m_context};
    AssPwds m_assPwds{m_context, m_entLogs};
    AssNums m_assNums{m_context};
};

TEST_F(AssociationsTest, RowsComeBackAsTheyWereWritten) {
    const AssPwd pwd = m_assPwds.Search(u"O'Neil"_s);
    EXPECT_EQ(pwd.m_Content, u"旧pass"_s);
    EXPECT_EQ(pwd.m_Length, 5);
    EXPECT_EQ(pwd.m_updateTime, passwordNamed({}).m_updateTime);
    EXPECT_TRUE(pwd.m_Effective);
    EXPECT_EQ(m_assPwds.Search(u"o'neil"_s).m_Name, QString()) << "names are exact";
    EXPECT_EQ(m_assPwds.Search(u"O'Neil "_s).m_Name, QString());
    EXPECT_TRUE(m_assPwds.Search(u"absent"_s).m_Effective && m_assNums.Search({}).m_Effective)
        << "as a new object";
    const AssNum num = m_assNums.Search(u"手机's"_s);
    EXPECT_EQ(num.m_Content + num.m_Type + num.m_Comment, u"13900000000手机号备注"_s);
    EXPECT_FALSE(m_assPwds.Add(passwordNamed(kCustomName)));
    EXPECT_TRUE(onlyMessage().contains(u"]AssPwds.Add:\r\n"_s));
    EXPECT_FALSE(m_assNums.Add(numberNamed(u"second"_s)));
    EXPECT_TRUE(onlyMessage().contains(u"]AssNums.Add:\r\n"_s));
}

TEST_F(AssociationsTest, AChangedPasswordIsRecordedForEachBoundEntry) {
    AssPwd after = passwordNamed(u"O'Neil"_s);
    after.m_Content = u"新pass"_s;
    EXPECT_TRUE(m_assPwds.Modify(passwordNamed(u"O'Neil"_s), after));
    EXPECT_EQ(count(u"tb_EntLog where statusNo=2 and pwdName='O''Neil' and originalPwd='旧pass'"
                    " and dirPath='01' and entNo in ('01','02','03')"_s),
              3);
    EXPECT_EQ(restarted(), 3);
    EXPECT_EQ(m_assPwds.Search(u"O'Neil"_s).m_Content, u"新pass"_s);
}

TEST_F(AssociationsTest, ANewNameAloneReachesTheEntriesAndNothingElse) {
    AssPwd renamed = passwordNamed(u"新'名"_s);
    renamed.m_Effective = false;
    EXPECT_TRUE(m_assPwds.Modify(passwordNamed(u"O'Neil"_s), renamed));
    EXPECT_EQ(count(u"tb_EntLog"_s), 0);
    EXPECT_EQ(restarted(), 0);
    QStringList lines;
    EXPECT_EQ(m_assPwds.GetEntBoundedPwd(u"新'名"_s, lines), 3);
    EXPECT_EQ(lines.value(2), u"邮箱"_s.leftJustified(200) + u"0103"_s);
    EXPECT_TRUE(m_assNums.Modify(u"手机's"_s, numberNamed(u"座机"_s)));
    EXPECT_EQ(m_assNums.GetNetBoundedNum(u"座机"_s, lines), 3);
    EXPECT_EQ(lines.size(), 6) << "lines are added to what the caller holds";
}

TEST_F(AssociationsTest, AFailedRecordKeepsTheOldPassword) {
    m_database.execute(
        "create trigger t before insert on tb_EntLog when new.entNo = '02'"
        " begin select raise(abort, 'full'); end");
    AssPwd after = passwordNamed(u"O'Neil"_s);
    after.m_Content = u"新pass"_s;
    EXPECT_FALSE(m_assPwds.Modify(passwordNamed(u"O'Neil"_s), after));
    EXPECT_TRUE(onlyMessage().contains(u"]EntLogs.Add:\r\n"_s));
    EXPECT_EQ(count(u"tb_EntLog"_s), 0);
    EXPECT_EQ(restarted(), 0);
    m_database.execute("drop trigger t");
    after.m_Name = u"other"_s;
    EXPECT_FALSE(m_assPwds.Modify(passwordNamed(u"O'Neil"_s), after)) << "a name that is taken";
    EXPECT_TRUE(onlyMessage().contains(u"]AssPwds.Modify:\r\n"_s));
    EXPECT_EQ(count(u"tb_EntLog"_s) + restarted(), 0);
    EXPECT_EQ(m_assPwds.Search(u"O'Neil"_s).m_Content, u"旧pass"_s);
}

TEST_F(AssociationsTest, DeletingAPasswordTakesItsEntriesAndDeletingANumberDoesNot) {
    EXPECT_FALSE(m_assNums.NetRebindNewAssNum(u"second"_s, kCustomName));
    EXPECT_FALSE(m_assNums.Delete(u"手机's"_s)) << "still bound";
    EXPECT_TRUE(onlyMessage().contains(u"]AssNums.Delete:\r\n"_s));
    EXPECT_TRUE(m_assNums.NetRebindNewAssNum(u"手机's"_s, u"second"_s));
    EXPECT_TRUE(m_assNums.Delete(u"手机's"_s));
    EXPECT_EQ(m_webs.Search(u"0101"_s).m_numName, u"second"_s);
    EXPECT_TRUE(m_assPwds.Delete(u"O'Neil"_s));
    EXPECT_FALSE(m_assPwds.Delete(u"O'Neil"_s));
    EXPECT_EQ(value(u"select group_concat(entNo) from tb_Net"_s), u"04"_s);
}

TEST_F(AssociationsTest, TheReservedRowsAreFixed) {
    EXPECT_FALSE(m_assPwds.Delete(kCustomName));
    EXPECT_EQ(onlyMessage(), u"[5]AssPwds.Delete:\r\n不能删除【自定义】密码！"_s);
    EXPECT_FALSE(m_assNums.Delete(kCustomName));
    EXPECT_EQ(onlyMessage(), u"[5]AssNums.Delete:\r\n不能删除【自定义】号码！"_s);
    EXPECT_FALSE(m_assPwds.Modify(passwordNamed(kCustomName), passwordNamed(u"x"_s)));
    EXPECT_EQ(onlyMessage(), u"[5]AssPwds.Modify:\r\n不能修改“自定义”密码！"_s);
    EXPECT_FALSE(m_assNums.Modify(kCustomName, numberNamed(u"x"_s)));
    EXPECT_EQ(onlyMessage(), u"[5]AssNums.Modify:\r\n不能修改“自定义”号码！"_s);
    EXPECT_EQ(m_webs.Search(u"0104"_s).m_pwdName, kCustomName);
}

TEST_F(AssociationsTest, ListsNamesAndTotals) {
    AssPwd hidden = passwordNamed(u"other"_s);
    hidden.m_Effective = false;
    ASSERT_TRUE(m_assPwds.Modify(hidden, hidden));
    QStringList names;
    EXPECT_EQ(m_assPwds.DisplayNames(names), 2);
    EXPECT_EQ(names, QStringList({u"O'Neil"_s, kCustomName}));
    EXPECT_EQ(m_assNums.DisplayNames(names), 3);

    m_ground.key.isOn = true;
    ASSERT_TRUE(m_assPwds.Add(passwordNamed(u"sealed"_s)));
    EXPECT_EQ(m_assPwds.Search(u"sealed"_s).m_Content, u"旧pass"_s);
    std::vector<AssPwdTotal> rows;
    ASSERT_EQ(m_assPwds.DisplayAll(rows), 4);
    QString totals;
    for (const AssPwdTotal& total : rows) {
        totals += u"%1=%2;"_s.arg(total.row.m_Name).arg(total.Total);
    }
    EXPECT_EQ(totals, u"O'Neil=3;other=0;sealed=0;自定义=1;"_s);
    EXPECT_FALSE(rows.at(1).row.m_Effective);
    EXPECT_EQ(rows.at(2).row.m_Content,
              m_ground.cryptor.EncryptString(u"旧pass"_s, m_ground.key.key));
    std::vector<AssNumTotal> numbers;
    ASSERT_EQ(m_assNums.DisplayAll(numbers), 3);
    EXPECT_EQ(numbers.at(1).Total, 3);
    EXPECT_EQ(numbers.at(1).row.m_Comment, u"备注"_s);
}

}  // namespace
}  // namespace keeper
