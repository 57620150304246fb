// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

// Column encryption of 100,000 cells beside its bare parts: the cipher's call for each cell and one
// plain transaction that reads and writes the same cells in the same engine, without progress,
// without proof that a cell leads back. Both flush to disk; compare the processor time.

#include <benchmark/benchmark.h>

#include <QFile>
#include <QTemporaryDir>
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "crypto/cryptor3.h"
#include "platform/clock.h"
#include "platform/database.h"
#include "platform/event_loop.h"
#include "platform/prompt.h"
#include "store/column_cipher.h"
#include "store/column_cryption.h"
#include "store/schema.h"

namespace keeper {
namespace {

constexpr int kRowsOfATable = 20'000;

[[noreturn]] void giveUp(const QString& text) {
    std::fprintf(stderr, "%s\n", text.toUtf8().constData());
    std::exit(1);
}

class NoPerson final : public Prompt {
  public:
    Answer messageBox(const QString& text, Icon, Buttons, const QString&,
                      std::optional<Answer>) override {
        giveUp(text);
    }
    std::optional<QString> inputBox(const QString&, const QString&, const QString&) override {
        return {};
    }
    QString openFile(const QString&, const QString&, const QString&) override { return {}; }
    QString saveFile(const QString&, const QString&, const QString&) override { return {}; }
    QString chooseFolder(const QString&, const QString&) override { return {}; }
};

class NoHost final : public CryptorHost {
  public:
    void showMessage(Severity, const QString& text) override { giveUp(text); }
    void turnEventLoop() override {}
};

/// Keeps the longest time in which a window could not have painted.
class WatchedLoop final : public EventLoop {
  public:
    using Clock = std::chrono::steady_clock;
    Clock::time_point last = Clock::now();
    Clock::duration longest{};
    void turn() override {
        const Clock::time_point now = Clock::now();
        longest = std::max(longest, now - last);
        last = now;
    }
    void restart() {
        last = Clock::now();
        longest = {};
    }
    [[nodiscard]] double milliseconds() const {
        return std::chrono::duration<double, std::milli>(longest).count();
    }
};

class BenchKey final : public ColumnKey {
  public:
    [[nodiscard]] bool p_idpPwdSwitch() const override { return true; }
    [[nodiscard]] QString p_plainIdpPwd() const override { return QStringLiteral("second77"); }
};

const std::array kColumns{"tb_Entry.customPwd", "tb_Net.customNum", "tb_AssNum.Content",
                          "tb_AssPwd.Content", "tb_EntLog.originalPwd"};

/// 20,000 rows in each of the five tables.
struct Columns {
    Columns() {
        const QString path = folder.filePath(QStringLiteral("columns.db"));
        database.create(path, QStringLiteral("bench"));
        createSchema(database, SystemClock().now());
        Transaction transaction(database);
        for (int i = 0; i < kRowsOfATable; ++i) {
            const int d = i / 80;
            const QString parent = QStringLiteral("01") + two(d / 99 + 1);
            const QString dir = parent + two(d % 99 + 1);
            if (i % (80 * 99) == 0) {
                write("INSERT INTO tb_Directory VALUES(?1,'01','目录')", {parent});
            }
            if (i % 80 == 0) {
                write("INSERT INTO tb_Directory VALUES(?1,?2,'目录')", {dir, parent});
            }
            const QString no = two(i % 80 + 1);
            const QString cell = QStringLiteral("pA55-word-%1").arg(i);
            write("INSERT INTO tb_Entry VALUES(?1,?2,'t','自定义',?3,'',0,1,0,NULL,NULL,NULL,0)",
                  {dir, no, cell});
            write("INSERT INTO tb_Net VALUES(?1,?2,'自定义',?3,'')", {dir, no, cell});
            write("INSERT INTO tb_AssNum VALUES(?1,?2,'','',1)", {dir + no, cell});
            write("INSERT INTO tb_AssPwd VALUES(?1,?2,0,NULL,1)", {dir + no, cell});
            write("INSERT INTO tb_EntLog VALUES(?1,?2,'2026-01-01T00:00:00',2,'自定义',?3)",
                  {dir, no, cell});
        }
        transaction.commit();
    }
    static QString two(int number) {
        return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0'));
    }
    void write(const char* sql, const QStringList& values) {
        Statement statement(database, sql);
        for (int i = 0; i < values.size(); ++i) {
            statement.bind(i + 1, values.at(i));
        }
        statement.run();
    }
    static Columns& world() {
        static Columns columns;
        return columns;
    }

    QTemporaryDir folder;
    NoPerson prompt;
    NoHost host;
    WatchedLoop loop;
    BenchKey key;
    Cryptor3 cipher{host};
    Database database{{.keyRounds = 10}};
};

void bareParts(Columns& world, bool turnsOn) {
    const QString key = world.key.p_plainIdpPwd();
    Transaction transaction(world.database);
    for (const std::string column : kColumns) {
        const std::string table = column.substr(0, column.find('.'));
        const std::string name = column.substr(column.find('.') + 1);
        Statement read(world.database, ("SELECT rowid," + name + " FROM " + table + " WHERE " +
                                        name + " IS NOT NULL")
                                           .c_str());
        Statement update(world.database,
                         ("UPDATE " + table + " SET " + name + "=? WHERE rowid=?").c_str());
        while (read.step()) {
            update.bind(1, turnsOn ? world.cipher.EncryptString(read.text(1), key)
                                   : world.cipher.DecryptString(read.text(1), key));
            update.bind(2, read.integer(0)).run();
            update.reset();
        }
    }
    transaction.commit();
}

void SwitchColumns(benchmark::State& state) {
    Columns& world = Columns::world();
    ColumnCryption cryption(world.database, world.prompt, world.loop, world.cipher, world.key);
    int percent = 0;
    double worstTurn = 0;
    double worstCommit = 0;
    cryption.DisplayProgress = [&](int done) { percent = done; };
    const bool turnsOn = state.range(0) != 0;
    if (!turnsOn) {
        bareParts(world, true);
    }
    for (auto _ : state) {
        Transaction transaction(world.database);
        world.loop.restart();
        if (cryption.Handle(turnsOn) != ColumnCryption::Outcome::Done) {
            state.SkipWithError("not done");
        }
        worstTurn = std::max(worstTurn, world.loop.milliseconds());
        world.loop.restart();
        transaction.commit();
        world.loop.turn();
        worstCommit = std::max(worstCommit, world.loop.milliseconds());
        state.PauseTiming();
        Transaction back(world.database);
        (void)cryption.Handle(!turnsOn);
        back.commit();
        state.ResumeTiming();
    }
    if (!turnsOn) {
        bareParts(world, false);
    }
    state.counters["longest_ms_without_a_turn"] = worstTurn;
    state.counters["commit_ms"] = worstCommit;
    state.SetItemsProcessed(state.iterations() * 5 * kRowsOfATable);
}

void BareParts(benchmark::State& state) {
    Columns& world = Columns::world();
    const bool turnsOn = state.range(0) != 0;
    if (!turnsOn) {
        bareParts(world, true);
    }
    for (auto _ : state) {
        bareParts(world, turnsOn);
        state.PauseTiming();
        bareParts(world, !turnsOn);
        state.ResumeTiming();
    }
    if (!turnsOn) {
        bareParts(world, false);
    }
    state.SetItemsProcessed(state.iterations() * 5 * kRowsOfATable);
}

void directions(benchmark::internal::Benchmark* bench) {
    bench->ArgName("on")->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond)->Iterations(3);
}

BENCHMARK(SwitchColumns)->Apply(directions);
BENCHMARK(BareParts)->Apply(directions);

}  // namespace
}  // namespace keeper

BENCHMARK_MAIN();
