// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "store/ent_logs.h"
#include "store/store_fixture.h"
#include "store/sys_logs.h"

namespace keeper {
namespace {

using namespace Qt::StringLiterals;

class LogsTest : public StoreTest {
  protected:
    void log(const QDateTime& when, std::int32_t status, std::int32_t number = 0,
             const QString& description = {}) {
        SysLog row;
        row.m_dateTime = when;
        row.m_statusNo = status;
        row.m_lCount = number;
        row.m_Description = description;
        ASSERT_TRUE(m_sysLogs.Add(row));
    }
    void log(const QDate& day, std::int32_t status) { log(day.startOfDay(), status); }
    void logPassword(const QString& number, const QDateTime& when, std::int32_t status) {
        EntLog row;
        row.SetEntry(number, status, when);
        if (status == EntLog::kModifyPassword) {
            row.SetOrgPwd(u"共用"_s, u"旧密码"_s);
        }
        ASSERT_TRUE(m_entLogs.Add(row));
    }
    QString statuses(const QDate& from, const QDate& to, const QString& list) {
        std::vector<SysLogLine> lines;
        int total = -1;
        EXPECT_TRUE(m_sysLogs.Display(lines, from, to, list, total));
        EXPECT_EQ(total, static_cast<int>(lines.size()));
        QString found;
        for (const SysLogLine& line : lines) {
            found += line.statusNo + u' ';
        }
        return found.trimmed();
    }
    [[nodiscard]] QDate ago(int days) const { return m_clock.today().addDays(-days); }

    SysLogs m_sysLogs{m_context};
    EntLogs m_entLogs{m_context};
};

TEST_F(LogsTest, FiltersByWholeDaysAndStatuses) {
    const QDateTime lastSecond(ago(3), QTime(23, 59, 59));
    log(ago(5), 3);
    log(lastSecond, 38);
    log(ago(2), 7);
    log(m_clock.now(), 54);
    log(m_clock.now(), 45);
    log(m_clock.now().addDays(1), 9);
    EXPECT_EQ(statuses({}, {}, u"0"_s), u"09 45 54 07 38 03"_s) << "newest first";
    EXPECT_EQ(statuses(ago(3), ago(3), u"0"_s), u"38"_s);
    EXPECT_EQ(statuses(ago(3), {}, u"0"_s), u"45 54 07 38"_s) << "until today";
    EXPECT_EQ(statuses({}, ago(2), u"0"_s), u"07 38 03"_s);
    EXPECT_EQ(statuses({}, {}, u"3, 54"_s), u"54 03"_s);
    EXPECT_EQ(statuses(ago(2), {}, u"3,7"_s), u"07"_s);
    EXPECT_EQ(m_sysLogs.Count(), 6);

    std::vector<SysLogLine> lines;
    int total = 0;
    EXPECT_FALSE(m_sysLogs.Display(lines, {}, {}, u"3) or (1"_s, total));
    EXPECT_TRUE(onlyMessage().startsWith(u"[13]SysLogs.Display:\r\n"_s));
    ASSERT_TRUE(m_sysLogs.Display(lines, ago(3), ago(3), u"0"_s, total));
    EXPECT_EQ(lines.front().no, 1);
    EXPECT_EQ(lines.front().dateTime, u"2026年05月17日 23:59:59"_s);
    EXPECT_EQ(lines.front().status, u"添加条目[(条目编号)]【(条目标题)】"_s);
}

TEST_F(LogsTest, DescriptionsAreCutAtAHundredAndFifty) {
    log(m_clock.now(), 38, 0, QString(200, u'x'));
    EXPECT_EQ(value(u"select length(Description) from tb_SysLog"_s), u"150"_s);
    ASSERT_EQ(m_sysLogs.Clear(0), 1);
    log(m_clock.now(), 38, 0, QString(149, u'x') + u"😀"_s);
    EXPECT_EQ(value(u"select Description from tb_SysLog"_s), QString(149, u'x'));
}

TEST_F(LogsTest, ClearKeepsTheLastDays) {
    for (const int days : {0, 29, 30, 31, 32}) {
        log(QDateTime(ago(days), QTime(23, 59)), 3);
        logPassword(u"0101"_s, QDateTime(ago(days), QTime(0, 0)), EntLog::kCreateEntry);
    }
    EXPECT_EQ(m_sysLogs.Clear(30), 2);
    EXPECT_EQ(m_entLogs.Clear(30), 2);
    EXPECT_EQ(m_sysLogs.Clear(0), 3);
    EXPECT_EQ(m_entLogs.Clear(0), 3);
    EXPECT_EQ(m_sysLogs.Clear(0), 0);
}

TEST_F(LogsTest, TellsTheLastStayByTheLastExit) {
    QString text;
    log(m_clock.now(), 3);
    log(m_clock.now(), 4);
    EXPECT_FALSE(m_sysLogs.GetLastTime(text));
    EXPECT_EQ(text, u"这是阁下第一次登入本数据库。"_s);
    log(QDateTime(QDate(2026, 5, 18), QTime(23, 0)), 13, 60);
    log(QDateTime(QDate(2026, 5, 19), QTime(0, 30, 5)), 14, 3725);
    log(QDateTime(QDate(2026, 5, 18), QTime(22, 0)), 15, 60);
    EXPECT_TRUE(m_sysLogs.GetLastTime(text));
    EXPECT_EQ(text,
              u"上次登入本数据库的时间为：\r\n2026/5/18 23:28:00，星期一；\r\n并于\r\n"
              "2026/5/19 0:30:05，星期二\r\n自动退出，运行时长：01小时02分05秒。"_s);
}

TEST_F(LogsTest, EntryLogShowsPasswordsOnlyWithTheirBinding) {
    m_ground.key.isOn = true;
    logPassword(u"010503"_s, m_clock.now().addDays(-2), EntLog::kCreateEntry);
    logPassword(u"010503"_s, m_clock.now(), EntLog::kModifyPassword);
    logPassword(u"010504"_s, m_clock.now().addSecs(1), EntLog::kModifyPassword);
    logPassword(u"010504"_s, m_clock.now().addSecs(2), 3);
    EXPECT_EQ(count(u"tb_EntLog where originalPwd = '旧密码'"_s), 0);

    std::vector<EntLogLine> lines;
    int total = 0;
    ASSERT_TRUE(m_entLogs.Display(lines, u"010503"_s, {}, {}, 0, total));
    ASSERT_EQ(total, 2);
    EXPECT_EQ(lines.at(0).no, 1);
    EXPECT_EQ(lines.at(0).dateTime, u"2026年05月20日 12:00:00"_s);
    EXPECT_EQ(lines.at(0).number, u"010503"_s);
    EXPECT_EQ(lines.at(0).status, u"2.修改密码"_s);
    EXPECT_EQ(lines.at(0).password, u"共用：旧密码"_s);
    EXPECT_EQ(lines.at(1).status, u"1.创建条目"_s);
    EXPECT_EQ(lines.at(1).password, u"(不予显示)"_s);
    ASSERT_TRUE(m_entLogs.Display(lines, {}, {}, {}, 0, total));
    EXPECT_EQ(total, 4);
    EXPECT_EQ(lines.at(0).status, u"(过时状态)"_s);
    ASSERT_TRUE(m_entLogs.Display(lines, u"010503"_s, ago(1), {}, 2, total));
    EXPECT_EQ(total, 1);
    ASSERT_TRUE(m_entLogs.Display(lines, u"010503"_s, {}, ago(1), 2, total));
    EXPECT_EQ(total, 0);

    EXPECT_EQ(m_entLogs.Count(u"010504"_s), 2);
    EXPECT_EQ(m_entLogs.Count({}), 4);
    EXPECT_EQ(m_entLogs.Delete(u"010504"_s), 2);
    EXPECT_EQ(m_entLogs.Delete(u"010504"_s), 0);
}

TEST_F(LogsTest, SettingAnotherStatusDropsTheOldPassword) {
    EntLog row;
    row.SetOrgPwd(u"共用"_s, u"旧密码"_s);
    row.SetEntry(u"010503"_s, EntLog::kModifyPassword, m_clock.now());
    EXPECT_EQ(row.p_originalPwd(), u"旧密码"_s);
    row.SetEntry2(u"0105"_s, u"04"_s, EntLog::kCreateEntry, m_clock.now());
    EXPECT_EQ(row.p_pwdName() + row.p_originalPwd(), QString());
    EXPECT_EQ(row.p_dirPath() + row.p_entNo(), u"010504"_s);
}

}  // namespace
}  // namespace keeper
