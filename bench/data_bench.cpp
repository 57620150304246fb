// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

// The data classes on 1,000, 10,000 and 100,000 entries, each beside the system's plain SQLite
// doing the same with the same tables. Every committed write is flushed to disk on both sides, so
// compare the processor time; the wall time is the disk's.

#include <benchmark/benchmark.h>

#include <QTemporaryDir>
#include <array>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "bench_ports.h"
#include "crypto/cryptor3.h"
#include "plain_sqlite.h"
#include "platform/clock.h"
#include "platform/database.h"
#include "store/column_cipher.h"
#include "store/companions.h"
#include "store/directories.h"
#include "store/entries.h"
#include "store/numbering.h"
#include "store/schema.h"
#include "store/sys_logs.h"

namespace keeper {
namespace {

constexpr int kEntriesOfADirectory = 80;

QString pair(int value) {
    return QStringLiteral("%1").arg(value, 2, 10, QLatin1Char('0'));
}

/// Directory number of the d-th directory: 99 below the big class, then 99 below each of those.
QString directoryAt(int d) {
    return d < 99 ? QStringLiteral("01") + pair(d + 1)
                  : QStringLiteral("01") + pair((d - 99) / 99 + 1) + pair((d - 99) % 99 + 1);
}

QString entryAt(int i) {
    return directoryAt(i / kEntriesOfADirectory) + pair(i % kEntriesOfADirectory + 1);
}

Web webAt(int i) {
    Web web;
    web.p_No(entryAt(i));
    web.m_Title = QStringLiteral("测试条目 %1").arg(i);
    web.m_pwdName = web.m_numName = kCustomName;
    web.m_customPwd = QStringLiteral("pA55-word-%1").arg(i);
    web.m_customNum = QStringLiteral("user%1@example.org").arg(i);
    web.m_Address = QStringLiteral("https://www.example.org/login/%1").arg(i);
    web.m_Remarks = QStringLiteral("备注第一行\r\n第二行 %1").arg(i);
    return web;
}

/// A database of so many entries in the encrypted engine and, row for row, in the plain one.
class World {
  public:
    explicit World(int size) : count(size) {
        database.create(m_folder.filePath(QStringLiteral("keeper.db")), QStringLiteral("bench"));
        createSchema(database, clock.now());
        Transaction transaction(database);
        for (int i = 0; i < size; ++i) {
            if (i % kEntriesOfADirectory == 0) {
                Directory directory;
                directory.p_dirPath(directoryAt(i / kEntriesOfADirectory));
                directory.m_Title = QStringLiteral("目录");
                directories.Add(directory);
            }
            webs.Add(webAt(i));
        }
        transaction.commit();
        plain = std::make_unique<PlainSqlite>(
            m_folder.filePath(QStringLiteral("plain.db")).toStdString());
        copyToPlain();
    }

    static World& of(int size) {
        static std::map<int, std::unique_ptr<World>> worlds;
        std::unique_ptr<World>& world = worlds[size];
        if (world == nullptr) {
            world = std::make_unique<World>(size);
        }
        return *world;
    }

    int count;

  private:
    void copyToPlain() {
        plain->execute(
            "PRAGMA page_size=4096; PRAGMA cache_size=-16384; PRAGMA foreign_keys=ON;"
            "PRAGMA synchronous=FULL; PRAGMA secure_delete=ON; BEGIN");
        Statement tables(database, "select sql from sqlite_master where sql is not null");
        while (tables.step()) {
            plain->execute(tables.text(0).toUtf8().constData());
        }
        for (const auto& [table, columns] : {std::pair{"tb_Directory", 3},
                                             {"tb_AssPwd", 5},
                                             {"tb_AssNum", 5},
                                             {"tb_Entry", 13},
                                             {"tb_Net", 5},
                                             {"tb_Fil", 5}}) {
            copyTable(table, columns);
        }
        plain->execute("COMMIT");
    }
    void copyTable(const std::string& table, int columns) {
        std::string marks = "?";
        for (int i = 1; i < columns; ++i) {
            marks += ",?";
        }
        const std::string order = " order by rowid";
        Statement from(database, ("select * from " + table + order).c_str());
        PlainSqlite::Query to(*plain, ("insert into " + table + " values(" + marks + ")").c_str());
        while (from.step()) {
            for (int i = 0; i < columns; ++i) {
                if (!from.isNull(i)) {
                    to.bind(i + 1, from.text(i).toStdString());
                } else {
                    to.bindNull(i + 1);
                }
            }
            to.step();
            to.reset();
        }
    }

    QTemporaryDir m_folder;
    FatalPrompt m_prompt;
    FatalHost m_host;
    PlainColumns m_key;
    Cryptor3 m_cryptor{m_host};
    ColumnCipher m_cipher{m_key, m_cryptor};

  public:
    SystemClock clock;
    // The derivation of the key is no part of what is measured here.
    Database database{{.keyRounds = 10}};
    std::unique_ptr<PlainSqlite> plain;

  private:
    StoreContext m_context{database, m_prompt, clock, m_cipher};

  public:
    Directories directories{m_context};
    Entries entries{m_context};
    Webs webs{m_context, entries};
    SysLogs sysLogs{m_context};
};

constexpr char kReadTree[] =
    "select dirPath, entNo, Title, Bookmark from tb_Entry order by dirPath, entNo";
constexpr char kReadOne[] =
    "select e.dirPath, e.entNo, e.Title, e.pwdName, e.customPwd, e.Remarks, e.usedTimes,"
    " e.Effective, e.Bookmark, e.createDate, e.recentUpdate, e.recentModPwd, e.modPwdDays,"
    " n.numName, n.customNum, n.Location from tb_Entry as e inner join tb_Net as n"
    " on n.dirPath = e.dirPath and n.entNo = e.entNo where e.dirPath = ? and e.entNo = ?";

/// Both keep what they read.
struct TreeRow {
    std::string dirPath, entNo, title;
    bool isMarked = false;
};

void ReadAllForTree(benchmark::State& state) {
    World& world = World::of(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        std::vector<TreeRow> rows;
        const int count = world.entries.Display([&rows](const EntryLine& line) {
            rows.push_back({std::string(line.dirPath), std::string(line.entNo),
                            std::string(line.title), line.isMarked});
        });
        if (count < world.count) {
            state.SkipWithError("rows are missing");
        }
        benchmark::DoNotOptimize(rows.data());
    }
    state.SetItemsProcessed(state.iterations() * world.count);
}

void ReadAllPlain(benchmark::State& state) {
    World& world = World::of(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        std::vector<TreeRow> rows;
        PlainSqlite::Query query(*world.plain, kReadTree);
        while (query.step()) {
            TreeRow& row = rows.emplace_back();
            int size = 0;
            const char* text = query.text(0, size);
            row.dirPath.assign(text, static_cast<std::size_t>(size));
            text = query.text(1, size);
            row.entNo.assign(text, static_cast<std::size_t>(size));
            text = query.text(2, size);
            row.title.assign(text, static_cast<std::size_t>(size));
            row.isMarked = query.integer(3) != 0;
        }
        benchmark::DoNotOptimize(rows.data());
    }
    state.SetItemsProcessed(state.iterations() * world.count);
}

/// The peer only touches every column.
void ReadAllPlainTouch(benchmark::State& state) {
    World& world = World::of(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        PlainSqlite::Query query(*world.plain, kReadTree);
        std::int64_t sum = 0;
        while (query.step()) {
            for (int column = 0; column < 3; ++column) {
                int size = 0;
                sum += *query.text(column, size) + size;
            }
            sum += query.integer(3);
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * world.count);
}

/// Numbers in an order that no page cache can guess.
int scattered(int step, int count) {
    return static_cast<int>((std::int64_t{step} * 7919) % count);
}

void SearchByNumber(benchmark::State& state) {
    World& world = World::of(static_cast<int>(state.range(0)));
    int step = 0;
    for (auto _ : state) {
        const Web web = world.webs.Search(entryAt(scattered(++step, world.count)));
        if (web.m_Title.isEmpty()) {
            state.SkipWithError("not found");
        }
    }
}

void SearchPlain(benchmark::State& state) {
    World& world = World::of(static_cast<int>(state.range(0)));
    PlainSqlite::Query query(*world.plain, kReadOne);
    int step = 0;
    for (auto _ : state) {
        const EntryNo no = EntryNo::split(entryAt(scattered(++step, world.count)));
        query.reset();
        query.bind(1, no.dirPath.toStdString());
        query.bind(2, no.entNo.toStdString());
        std::array<std::string, 16> values;
        if (!query.step()) {
            state.SkipWithError("not found");
        }
        for (int column = 0; column < 16; ++column) {
            int size = 0;
            const char* text = query.text(column, size);
            values.at(static_cast<std::size_t>(column))
                .assign(text, static_cast<std::size_t>(size));
        }
        benchmark::DoNotOptimize(values);
    }
}

void AddCommitted(benchmark::State& state) {
    World& world = World::of(static_cast<int>(state.range(0)));
    int place = 81;
    for (auto _ : state) {
        Web web = webAt(0);
        web.p_No(directoryAt(scattered(place, world.count / kEntriesOfADirectory)) + pair(99));
        if (!world.webs.Add(web)) {
            state.SkipWithError("not added");
        }
        state.PauseTiming();
        world.entries.Delete(web);
        ++place;
        state.ResumeTiming();
    }
}

void fill(PlainSqlite::Query& query, const QStringList& values) {
    query.reset();
    for (int i = 0; i < values.size(); ++i) {
        query.bind(i + 1, values.at(i).toStdString());
    }
    query.step();
    query.reset();
}

/// The same two rows in one transaction.
void AddPlain(benchmark::State& state) {
    World& world = World::of(static_cast<int>(state.range(0)));
    PlainSqlite::Query entry(*world.plain,
                             "insert into tb_Entry values(?,?,?,?,?,?,0,1,0,?,?,?,0)");
    PlainSqlite::Query net(*world.plain, "insert into tb_Net values(?,?,?,?,?)");
    PlainSqlite::Query remove(*world.plain, "delete from tb_Entry where dirPath=? and entNo='99'");
    int place = 81;
    for (auto _ : state) {
        const Web web = webAt(0);
        const QString dirPath = directoryAt(scattered(place++, world.count / kEntriesOfADirectory));
        world.plain->execute("begin immediate");
        fill(entry, {dirPath, QStringLiteral("99"), web.m_Title, web.m_pwdName, web.m_customPwd,
                     web.m_Remarks, QStringLiteral("2026-05-20T00:00:00"),
                     QStringLiteral("2026-05-20T12:00:00"), QStringLiteral("2026-05-20T00:00:00")});
        fill(net, {dirPath, QStringLiteral("99"), web.m_numName, web.m_customNum, web.m_Address});
        world.plain->execute("commit");
        state.PauseTiming();
        fill(remove, {dirPath});
        state.ResumeTiming();
    }
}

void ModifyCommitted(benchmark::State& state) {
    World& world = World::of(static_cast<int>(state.range(0)));
    int step = 0;
    for (auto _ : state) {
        const int i = scattered(++step, world.count);
        Web web = webAt(i);
        web.m_Remarks = QStringLiteral("改 %1").arg(step);
        if (!world.webs.Modify(web.p_No(), web)) {
            state.SkipWithError("not changed");
        }
    }
}

/// The same two rows with all their columns in one transaction.
void ModifyPlain(benchmark::State& state) {
    World& world = World::of(static_cast<int>(state.range(0)));
    PlainSqlite::Query entry(*world.plain,
                             "update tb_Entry set dirPath=?, entNo=?, Title=?, pwdName=?,"
                             " customPwd=?, Remarks=?, recentUpdate=?, recentModPwd=?,"
                             " modPwdDays=0 where dirPath=? and entNo=?");
    PlainSqlite::Query net(*world.plain, "insert or replace into tb_Net values(?,?,?,?,?)");
    int step = 0;
    for (auto _ : state) {
        const Web web = webAt(scattered(++step, world.count));
        world.plain->execute("begin immediate");
        fill(entry, {web.m_dirPath, web.m_entNo, web.m_Title, web.m_pwdName, web.m_customPwd,
                     QStringLiteral("改 %1").arg(step), QStringLiteral("2026-05-20T12:00:00"),
                     QStringLiteral("2026-05-20T00:00:00"), web.m_dirPath, web.m_entNo});
        fill(net, {web.m_dirPath, web.m_entNo, web.m_numName, web.m_customNum, web.m_Address});
        world.plain->execute("commit");
    }
}

void AppendToLog(benchmark::State& state) {
    World& world = World::of(static_cast<int>(state.range(0)));
    SysLog log;
    log.m_dateTime = world.clock.now();
    log.m_statusNo = 38;
    log.m_Description = QStringLiteral("010503\t测试条目");
    for (auto _ : state) {
        if (!world.sysLogs.Add(log)) {
            state.SkipWithError("not added");
        }
    }
}

void AppendPlain(benchmark::State& state) {
    World& world = World::of(static_cast<int>(state.range(0)));
    PlainSqlite::Query query(*world.plain, "insert into tb_SysLog values(?, ?, ?, ?)");
    for (auto _ : state) {
        query.reset();
        query.bind(1, std::string("2026-05-20T12:00:00"));
        query.bind(2, std::int64_t{38});
        query.bind(3, std::int64_t{0});
        query.bind(4, std::string("010503\t测试条目"));
        query.step();
    }
}

void sizes(benchmark::internal::Benchmark* bench) {
    bench->Arg(1000)->Arg(10000)->Arg(100000);
}

BENCHMARK(ReadAllForTree)->Apply(sizes)->Unit(benchmark::kMillisecond);
BENCHMARK(ReadAllPlain)->Apply(sizes)->Unit(benchmark::kMillisecond);
BENCHMARK(ReadAllPlainTouch)->Apply(sizes)->Unit(benchmark::kMillisecond);
BENCHMARK(SearchByNumber)->Apply(sizes)->Unit(benchmark::kMicrosecond);
BENCHMARK(SearchPlain)->Apply(sizes)->Unit(benchmark::kMicrosecond);
BENCHMARK(AddCommitted)->Apply(sizes)->Unit(benchmark::kMicrosecond)->Iterations(200);
BENCHMARK(AddPlain)->Apply(sizes)->Unit(benchmark::kMicrosecond)->Iterations(200);
BENCHMARK(ModifyCommitted)->Apply(sizes)->Unit(benchmark::kMicrosecond)->Iterations(200);
BENCHMARK(ModifyPlain)->Apply(sizes)->Unit(benchmark::kMicrosecond)->Iterations(200);
BENCHMARK(AppendToLog)->Apply(sizes)->Unit(benchmark::kMicrosecond)->Iterations(200);
BENCHMARK(AppendPlain)->Apply(sizes)->Unit(benchmark::kMicrosecond)->Iterations(200);

}  // namespace
}  // namespace keeper

BENCHMARK_MAIN();
