// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later
//
// Opening, sealing and unsealing at 1,000, 10,000 and 100,000 entries. Peers in the same run: the
// cipher working in memory on as many bytes, a copy of the file without any cipher, and plain
// SQLite opening a plain copy of the database. The time of a flush belongs to the disk: point
// TMPDIR at a memory file system to leave it aside.

#include <benchmark/benchmark.h>

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <cstdio>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench_entries.h"
#include "crypto/cryptor3.h"
#include "crypto/cryptor_host.h"
#include "plain_sqlite.h"
#include "platform/random.h"
#include "store/sealed_file.h"

namespace keeper {
namespace {

const QString kPassword = QStringLiteral("A9334086B32775C69DD9");
const QString kFileKey = QStringLiteral("900150983CD24FB0D6963F7D28E17F72");
/// Derivation is left aside.
constexpr DatabaseOptions kOneRound{.keyRounds = 1};

class SilentHost final : public CryptorHost {
  public:
    void showMessage(Severity, const QString& text) override {
        throw std::runtime_error(text.toStdString());
    }
    void turnEventLoop() override {}
};

/// The files of one size, made once.
struct Files {
    explicit Files(int count)
        : database(folder.filePath(QStringLiteral("a.db"))),
          sealed(folder.filePath(QStringLiteral("a.kvdb"))),
          plain(folder.filePath(QStringLiteral("plain.db"))) {
        Database made(kOneRound);
        buildDatabase(made, database, kPassword, count);
        const QByteArray name = plain.toUtf8();
        QFile(plain).open(QIODevice::WriteOnly);
        made.execute(("ATTACH DATABASE '" + name +
                      "' AS plain KEY ''; PRAGMA plain.page_size=4096;"
                      "SELECT sqlcipher_export('plain'); DETACH DATABASE plain;")
                         .constData());
        made.close();
        SilentHost host;
        Cryptor3 cipher(host);
        SystemRandom random;
        sealFile(cipher, database, sealed, kFileKey, random);
    }
    QTemporaryDir folder;
    QString database;
    QString sealed;
    QString plain;
};

const Files& filesOf(benchmark::State& state) {
    static std::map<int, std::unique_ptr<Files>> all;
    auto& files = all[static_cast<int>(state.range(0))];
    if (!files) {
        files = std::make_unique<Files>(static_cast<int>(state.range(0)));
    }
    return *files;
}

void openHeader(benchmark::State& state) {
    const Files& files = filesOf(state);
    for (auto _ : state) {
        Database database(kOneRound);
        database.open(files.database, kPassword);
    }
}

void openAndCheckAllPages(benchmark::State& state) {
    const Files& files = filesOf(state);
    for (auto _ : state) {
        Database database(kOneRound);
        database.open(files.database, kPassword, Database::Trust::AllPages);
    }
    state.SetBytesProcessed(state.iterations() * QFileInfo(files.database).size());
}

void deriveAndOpen(benchmark::State& state) {
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("a.db"));
    Database().create(path, kPassword);
    for (auto _ : state) {
        Database database;
        database.open(path, kPassword,
                      state.range(0) != 0 ? Database::Trust::AllPages : Database::Trust::Header);
    }
}

void plainSqliteOpen(benchmark::State& state) {
    const std::string path = filesOf(state).plain.toStdString();
    for (auto _ : state) {
        PlainSqlite(path).execute(
            "PRAGMA locking_mode=EXCLUSIVE;BEGIN EXCLUSIVE;SELECT count(*) FROM sqlite_master;"
            "COMMIT;");
    }
}

void plainSqliteCheck(benchmark::State& state) {
    const Files& files = filesOf(state);
    const std::string path = files.plain.toStdString();
    for (auto _ : state) {
        PlainSqlite(path).execute("PRAGMA integrity_check(1);PRAGMA foreign_key_check;");
    }
    state.SetBytesProcessed(state.iterations() * QFileInfo(files.plain).size());
}

void seal(benchmark::State& state) {
    const Files& files = filesOf(state);
    SilentHost host;
    Cryptor3 cipher(host);
    SystemRandom random;
    const QString target = files.folder.filePath(QStringLiteral("out.kvdb"));
    for (auto _ : state) {
        sealFile(cipher, files.database, target, kFileKey, random);
    }
    state.SetBytesProcessed(state.iterations() * QFileInfo(files.database).size());
}

void unseal(benchmark::State& state) {
    const Files& files = filesOf(state);
    SilentHost host;
    Cryptor3 cipher(host);
    SystemRandom random;
    for (auto _ : state) {
        const QString target =
            makeFreshFile(files.folder.path(), QString(), QStringLiteral(".tmp"), random);
        if (unsealFile(cipher, files.sealed, target, kFileKey) != UnsealResult::Done) {
            state.SkipWithError("not unsealed");
        }
        state.PauseTiming();
        QFile::remove(target);
        state.ResumeTiming();
    }
    state.SetBytesProcessed(state.iterations() * QFileInfo(files.database).size());
}

/// What the file system takes of a seal: as many bytes to a fresh file, which replaces the last.
void copyOnly(benchmark::State& state) {
    const Files& files = filesOf(state);
    const QString target = files.folder.filePath(QStringLiteral("copy"));
    const QString fresh = files.folder.filePath(QStringLiteral("copy.new"));
    const std::string from = fresh.toStdString();
    const std::string to = target.toStdString();
    std::vector<char> piece(256 * 1024);
    for (auto _ : state) {
        QFile in(files.database);
        QFile out(fresh);
        if (!in.open(QIODevice::ReadOnly | QIODevice::Unbuffered) ||
            !out.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
            state.SkipWithError("not copied");
        }
        for (qint64 count = 0; (count = in.read(piece.data(), qint64(piece.size()))) > 0;) {
            out.write(piece.data(), count);
        }
        out.close();
        std::rename(from.c_str(), to.c_str());
    }
    state.SetBytesProcessed(state.iterations() * QFileInfo(files.database).size());
}

void cipherInMemory(benchmark::State& state, bool encrypt) {
    SilentHost host;
    Cryptor3 cipher(host);
    cipher.SetCipherKeyString(kFileKey, 256, 256, false);
    const auto size = static_cast<std::size_t>(QFileInfo(filesOf(state).database).size());
    const std::vector<std::uint8_t> in(size, 0x5A);
    std::vector<std::uint8_t> out;
    for (auto _ : state) {
        if (encrypt) {
            cipher.ArrayEncrypt(in, out, false, 256);
        } else {
            cipher.ArrayDecrypt(out, in, false, 256);
        }
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(size));
}

void cipherInMemoryEncrypt(benchmark::State& state) {
    cipherInMemory(state, true);
}
void cipherInMemoryDecrypt(benchmark::State& state) {
    cipherInMemory(state, false);
}

void sizes(benchmark::internal::Benchmark* subject) {
    subject->Arg(1'000)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond);
}

BENCHMARK(openHeader)->Apply(sizes);
BENCHMARK(plainSqliteOpen)->Apply(sizes);
BENCHMARK(openAndCheckAllPages)->Apply(sizes);
BENCHMARK(plainSqliteCheck)->Apply(sizes);
BENCHMARK(seal)->Apply(sizes);
BENCHMARK(copyOnly)->Apply(sizes);
BENCHMARK(cipherInMemoryEncrypt)->Apply(sizes);
BENCHMARK(unseal)->Apply(sizes);
BENCHMARK(cipherInMemoryDecrypt)->Apply(sizes);
BENCHMARK(deriveAndOpen)->Arg(0)->Arg(1)->ArgName("allPages")->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace keeper

BENCHMARK_MAIN();
