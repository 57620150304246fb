// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

// Work of the engine counted in its own steps, which no load of the machine changes: what touches
// one entry must cost the same in a small and in a large database, and nothing may scan a growing
// table.

#include <sqlcipher/sqlite3.h>

#include <QRegularExpression>
#include <functional>

#include "store/ass_nums.h"
#include "store/ass_pwds.h"
#include "store/ent_logs.h"
#include "store/store_fixture.h"
#include "store/sys_logs.h"

namespace keeper {
namespace {

using namespace Qt::StringLiterals;

struct Work {
    std::int64_t steps = 0;
    std::int64_t scannedRows = 0;
};

int addWork(unsigned /*event*/, void* work, void* statement, void* /*time*/) {
    auto* counted = static_cast<Work*>(work);
    auto* finished = static_cast<sqlite3_stmt*>(statement);
    counted->steps += sqlite3_stmt_status(finished, SQLITE_STMTSTATUS_VM_STEP, 1);
    counted->scannedRows += sqlite3_stmt_status(finished, SQLITE_STMTSTATUS_FULLSCAN_STEP, 1);
    return 0;
}

/// Statements of triggers and cascades come as comments; they have no plan of their own.
int addText(unsigned /*event*/, void* texts, void* /*statement*/, void* text) {
    const auto sql = QString::fromUtf8(static_cast<const char*>(text));
    if (!sql.startsWith(QLatin1String("--"))) {
        static_cast<QStringList*>(texts)->append(sql);
    }
    return 0;
}

class StoreCostTest : public StoreTest {
  protected:
    void fill(int directories) {
        Transaction transaction(m_database);
        for (int d = m_directoryCount + 1; d <= directories; ++d) {
            const QString dirPath = u"01%1"_s.arg(d, 2, 10, QLatin1Char('0'));
            ASSERT_TRUE(addDirectory(dirPath));
            for (int e = 1; e <= 40; ++e) {
                const QString no = dirPath + u"%1"_s.arg(e, 2, 10, QLatin1Char('0'));
                m_clock.advanceSeconds(1);
                ASSERT_TRUE(m_webs.Add(webAt(no)));
                EntLog entLog;
                entLog.SetEntry(no, EntLog::kCreateEntry, m_clock.now());
                ASSERT_TRUE(m_entLogs.Add(entLog));
                log(38);
            }
        }
        m_directoryCount = directories;
        transaction.commit();
    }
    void log(std::int32_t status) {
        SysLog row;
        row.m_dateTime = m_clock.now();
        row.m_statusNo = status;
        ASSERT_TRUE(m_sysLogs.Add(row));
    }
    Work workOf(const std::function<void()>& operation) {
        Work work;
        // The database keeps statements, and they have counted what ran before.
        for (sqlite3_stmt* kept = sqlite3_next_stmt(m_database.handle(), nullptr); kept != nullptr;
             kept = sqlite3_next_stmt(m_database.handle(), kept)) {
            Work before;
            addWork(0, &before, kept, nullptr);
        }
        sqlite3_trace_v2(m_database.handle(), SQLITE_TRACE_PROFILE, addWork, &work);
        operation();
        sqlite3_trace_v2(m_database.handle(), 0, nullptr, nullptr);
        return work;
    }

    /// The engine's plans of the statements that the operation ran, those that scan a table of
    /// entries, directories or log rows.
    QStringList scansOf(const std::function<void()>& operation) {
        QStringList texts;
        sqlite3_trace_v2(m_database.handle(), SQLITE_TRACE_STMT, addText, &texts);
        operation();
        sqlite3_trace_v2(m_database.handle(), 0, nullptr, nullptr);
        texts.removeDuplicates();
        QStringList scans;
        for (const QString& text : texts) {
            Statement plan(m_database, (u"explain query plan "_s + text).toUtf8().constData());
            while (plan.step()) {
                if (plan.text(3).contains(kGrowingScan)) {
                    scans.append(plan.text(3) + u" in "_s + text);
                }
            }
        }
        return scans;
    }

    const QRegularExpression kGrowingScan{
        u"SCAN TABLE tb_(Entry|Net|Fil|SysLog|EntLog|Directory)\\b"_s};
    int m_directoryCount = 0;
    EntLogs m_entLogs{m_context};
    SysLogs m_sysLogs{m_context};
    AssPwds m_assPwds{m_context, m_entLogs};
    AssNums m_assNums{m_context};
};

TEST_F(StoreCostTest, SingleOperationsDoNotGrowWithTheDatabase) {
    AssPwd pwd;
    pwd.m_Name = u"共用"_s;
    ASSERT_TRUE(m_assPwds.Add(pwd));
    AssNum num;
    num.m_Name = u"手机"_s;
    ASSERT_TRUE(m_assNums.Add(num));
    log(13);
    Web bound = webAt(u"010299"_s);
    bound.m_pwdName = u"共用"_s;
    bound.m_numName = u"手机"_s;

    QStringList lines;
    QString text;
    std::vector<EntLogLine> entLines;
    std::vector<SysLogLine> sysLines;
    const QDate day(2020, 1, 1);  // before all rows
    AssPwd otherPwd;
    AssNum otherNum;
    otherPwd.m_Name = otherNum.m_Name = u"另"_s;
    int total = 0;
    AssPwd changed = pwd;
    changed.m_Content = u"new"_s;
    // In this order, each leaves the database as the next one needs it, and the last as it was.
    const std::vector<std::pair<const char*, std::function<void()>>> operations{
        {"Webs.Add", [&] { ASSERT_TRUE(m_webs.Add(bound)); }},
        {"Webs.Search", [&] { ASSERT_EQ(m_webs.Search(u"010299"_s).m_entNo, u"99"_s); }},
        {"Webs.Modify", [&] { ASSERT_TRUE(m_webs.Modify(u"010299"_s, bound)); }},
        {"AddUsedTimes", [&] { m_entries.AddUsedTimes(u"010299"_s); }},
        {"SetBookmark", [&] { ASSERT_TRUE(m_entries.SetBookmark(u"010299"_s, true)); }},
        {"SetEffective", [&] { ASSERT_TRUE(m_entries.SetEffective(u"010299"_s, false)); }},
        {"GetRecentUpdates", [&] { ASSERT_EQ(m_entries.GetRecentUpdates(lines, 10), 10); }},
        {"GetEntBoundedPwd", [&] { ASSERT_EQ(m_assPwds.GetEntBoundedPwd(u"共用"_s, lines), 1); }},
        {"GetNetBoundedNum", [&] { ASSERT_EQ(m_assNums.GetNetBoundedNum(u"手机"_s, lines), 1); }},
        {"AssPwds.Modify", [&] { ASSERT_TRUE(m_assPwds.Modify(pwd, changed)); }},
        {"AssPwds.Modify back", [&] { ASSERT_TRUE(m_assPwds.Modify(changed, pwd)); }},
        {"EntLogs.Display", [&] { m_entLogs.Display(entLines, u"010299"_s, {}, {}, 0, total); }},
        {"EntLogs.Count", [&] { m_entLogs.Count(u"010299"_s); }},
        {"EntLogs.Delete", [&] { ASSERT_EQ(m_entLogs.Delete(u"010299"_s), 2); }},
        {"Directories.Rename", [&] { ASSERT_TRUE(m_directories.Rename(u"0102"_s, u"新"_s)); }},
        {"Directories.MoveTo", [&] { ASSERT_TRUE(m_directories.MoveTo(u"0102"_s, u"0201"_s)); }},
        {"back", [&] { ASSERT_TRUE(m_directories.MoveTo(u"0201"_s, u"0102"_s)); }},
        {"Entries.MoveTo", [&] { ASSERT_TRUE(m_entries.MoveTo(u"010299"_s, u"010298"_s)); }},
        {"NetRebind", [&] { ASSERT_TRUE(m_assNums.NetRebindNewAssNum(u"手机"_s, kCustomName)); }},
        {"Entries.Delete", [&] { ASSERT_TRUE(m_entries.Delete(webAt(u"010298"_s))); }},
        {"SysLogs.Add", [&] { log(38); }},
        {"GetLastTime", [&] { ASSERT_TRUE(m_sysLogs.GetLastTime(text)); }},
        {"SysLogs.Clear", [&] { m_sysLogs.Clear(30000); }},
        {"EntLogs.Clear", [&] { m_entLogs.Clear(30000); }},
        {"Directories.Add", [&] { ASSERT_TRUE(addDirectory(u"0299"_s)); }},
        {"Directories.Add below", [&] { ASSERT_TRUE(addDirectory(u"029901"_s)); }},
        {"Prgs.Add", [&] { ASSERT_TRUE(m_prgs.Add(webAt(u"029998"_s))); }},
        {"Prgs.Modify", [&] { ASSERT_TRUE(m_prgs.Modify(u"029998"_s, webAt(u"029998"_s))); }},
        {"Prgs.Search", [&] { ASSERT_EQ(m_prgs.Search(u"029998"_s).m_entNo, u"98"_s); }},
        {"Fils.Add", [&] { ASSERT_TRUE(m_fils.Add(filAt(u"0399"_s))); }},
        {"Fils.Modify", [&] { ASSERT_TRUE(m_fils.Modify(u"0399"_s, filAt(u"0399"_s))); }},
        {"Fils.Search", [&] { ASSERT_EQ(m_fils.Search(u"0399"_s).m_entNo, u"99"_s); }},
        {"Fils' Delete", [&] { ASSERT_TRUE(m_entries.Delete(filAt(u"0399"_s))); }},
        {"Directories.Clear", [&] { m_directories.Clear(u"0299"_s); }},
        {"DeleteLike", [&] { m_entries.DeleteLike(u"0299"_s); }},
        {"Directories.Delete", [&] { ASSERT_TRUE(m_directories.Delete(u"0299"_s)); }},
        {"AssPwds.Add", [&] { ASSERT_TRUE(m_assPwds.Add(otherPwd)); }},
        {"AssPwds.Search", [&] { ASSERT_EQ(m_assPwds.Search(u"另"_s).m_Name, u"另"_s); }},
        {"AssPwds.Delete", [&] { ASSERT_TRUE(m_assPwds.Delete(u"另"_s)); }},
        {"AssNums.Add", [&] { ASSERT_TRUE(m_assNums.Add(otherNum)); }},
        {"AssNums.Modify", [&] { ASSERT_TRUE(m_assNums.Modify(u"另"_s, otherNum)); }},
        {"AssNums.Search", [&] { ASSERT_EQ(m_assNums.Search(u"另"_s).m_Name, u"另"_s); }},
        {"AssNums.Delete", [&] { ASSERT_TRUE(m_assNums.Delete(u"另"_s)); }},
        {"EntLogs of a day", [&] { m_entLogs.Display(entLines, {}, day, day, 0, total); }},
        {"SysLogs of a day", [&] { m_sysLogs.Display(sysLines, day, day, u"0"_s, total); }},
    };
    std::vector<Work> small;
    fill(3);
    for (const auto& [name, operation] : operations) {
        small.push_back(workOf(operation));
    }
    fill(30);
    for (std::size_t i = 0; i < operations.size(); ++i) {
        const Work large = workOf(operations[i].second);
        EXPECT_LE(large.steps, small[i].steps + 20) << operations[i].first;
        // Ten recent updates are read off the end of an index, which counts as well.
        EXPECT_LE(large.scannedRows, 10) << operations[i].first;
        EXPECT_GT(large.steps, 0) << operations[i].first;
    }
    for (const auto& [name, operation] : operations) {
        const QStringList scans = scansOf(operation);
        // Reads ten rows off the end of the index and stops.
        const bool isLimited = scans.size() == 1 && scans.first().contains(u"limit ?"_s);
        EXPECT_TRUE(scans.isEmpty() || isLimited) << name << scans.join(u'|').toStdString();
    }
}

TEST_F(StoreCostTest, BulkReadsGrowInProportion) {
    int entries = 0;
    std::vector<Directory> directories;
    std::vector<SysLogLine> lines;
    std::vector<AssPwdTotal> totals;
    std::vector<AssNumTotal> numTotals;
    QStringList names;
    int total = 0;
    const std::vector<std::function<void()>> operations{
        [&] { entries = m_entries.Display([](const EntryLine&) {}); },
        [&] { m_directories.Display(directories); },
        [&] { m_sysLogs.Display(lines, {}, {}, u"0"_s, total); },
        [&] { m_assPwds.DisplayAll(totals); },
        [&] { m_assNums.DisplayAll(numTotals); },
        [&] { m_assPwds.DisplayNames(names); },
        [&] { m_assNums.DisplayNames(names); },
    };
    fill(5);
    std::vector<Work> small;
    for (const auto& operation : operations) {
        small.push_back(workOf(operation));
    }
    fill(50);
    for (std::size_t i = 0; i < operations.size(); ++i) {
        EXPECT_LE(workOf(operations[i]).steps, 11 * small[i].steps) << i;
    }
    EXPECT_EQ(entries, 2000);
}

}  // namespace
}  // namespace keeper
