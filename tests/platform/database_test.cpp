// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/database.h"
#include "platform/database_checks.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sqlcipher/sqlite3.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <array>
#include <csignal>
#include <functional>

namespace keeper {
namespace {

constexpr DatabaseOptions kFast{.keyRounds = 10};
const QString kPassword = QStringLiteral("口令'\"]}");

/// Number of the DatabaseError that the operation throws; 0 when it throws none.
int failureOf(const std::function<void()>& operation) {
    try {
        operation();
    } catch (const DatabaseError& error) {
        EXPECT_FALSE(error.description().contains(kPassword));
        return error.number();
    }
    return SQLITE_OK;
}

QByteArray contentOf(const QString& path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll();
}

void putContent(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    ASSERT_EQ(file.write(bytes), bytes.size());
}

class DatabaseTest : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(m_folder.isValid());
        Database database(kFast);
        database.create(m_path, kPassword);
        database.execute("CREATE TABLE t(a INTEGER, b TEXT)");
        Transaction transaction(database);
        Statement insert(database, "INSERT INTO t VALUES(?1,?2)");
        for (int i = 0; i < 100; ++i) {
            insert.bind(1, i).bind(2, QStringLiteral("明文标记").repeated(20)).run();
        }
        transaction.commit();
    }

    int rows(const QString& path, const QString& password) {
        Database database(kFast);
        database.open(path, password, Database::Trust::AllPages);
        Statement count(database, "SELECT count(*) FROM t");
        return count.step() ? static_cast<int>(count.integer(0)) : -1;
    }

    /// Runs `body` in a child process; its result is the exit status, 255 for an exception.
    static int inChild(const std::function<int()>& body) {
        const pid_t child = ::fork();
        if (child == 0) {
            int result = 255;
            try {
                result = body();
            } catch (...) {
            }
            ::_exit(result);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

    QTemporaryDir m_folder;
    QString m_path = m_folder.filePath(QStringLiteral("a.db"));
};

TEST_F(DatabaseTest, KeepsItsNamesFromPluginsAndItsRowsFromTheDisk) {
    EXPECT_EQ(::dlsym(RTLD_DEFAULT, "sqlite3_open_v2"), nullptr);
    EXPECT_FALSE(contentOf(m_path).contains(QStringLiteral("明文标记").toUtf8()));
    EXPECT_EQ(QFile::permissions(m_path) & (QFile::ReadGroup | QFile::ReadOther), 0);
    EXPECT_EQ(rows(m_path, kPassword), 100);
}

TEST_F(DatabaseTest, RefusesWhatIsNoDatabaseAndLeavesItUntouched) {
    Database database(kFast);
    const QByteArray good = contentOf(m_path);
    EXPECT_EQ(failureOf([&] { database.open(m_path, QStringLiteral("wrong")); }), SQLITE_NOTADB);
    EXPECT_NE(failureOf([&] { database.open(m_path, QString()); }), SQLITE_OK);
    EXPECT_NE(
        failureOf([&] { database.open(m_path, QStringLiteral("x'%1'").arg(QString(64, u'0'))); }),
        SQLITE_OK);
    EXPECT_EQ(contentOf(m_path), good);
    const QList<QByteArray> bad{QByteArray(),          good.first(5),          good.chopped(1),
                                good.chopped(4096),    good + QByteArray("x"), good.first(4096),
                                good + good.last(4096)};
    for (const auto& bytes : bad) {
        putContent(m_path, bytes);
        EXPECT_NE(failureOf([&] { database.open(m_path, kPassword); }), SQLITE_OK)
            << bytes.size() << " of " << good.size();
        EXPECT_FALSE(database.isOpen());
        EXPECT_EQ(contentOf(m_path), bytes);
    }
    EXPECT_EQ(
        failureOf([&] { database.open(m_folder.filePath(QStringLiteral("none")), kPassword); }),
        SQLITE_NOTADB);
    EXPECT_EQ(failureOf([&] { database.create(m_path, kPassword); }), SQLITE_CANTOPEN);
}

TEST_F(DatabaseTest, FindsDamageInPagesThatNoTableUses) {
    {
        Database database(kFast);
        database.open(m_path, kPassword);
        database.execute("DELETE FROM t");
    }
    const QByteArray good = contentOf(m_path);
    ASSERT_GT(good.size(), 4 * 4096);
    for (qsizetype page = 0; page < good.size(); page += 4096) {
        QByteArray damaged = good;
        damaged[page + 2000] = static_cast<char>(damaged[page + 2000] ^ 1);
        putContent(m_path, damaged);
        Database database(kFast);
        EXPECT_NE(failureOf([&] { database.open(m_path, kPassword, Database::Trust::AllPages); }),
                  SQLITE_OK)
            << "page " << page / 4096;
    }
}

TEST_F(DatabaseTest, ExcludesASecondProgramFromTheFirstMoment) {
    const auto openInChild = [this] {
        return inChild([this] {
            Database second(kFast);
            return failureOf([&] { second.open(m_path, kPassword); }) & 0xFF;
        });
    };
    Database database(kFast);
    database.open(m_path, kPassword);
    EXPECT_EQ(openInChild(), SQLITE_BUSY);
    database.rekey(kPassword, QStringLiteral("another"), m_path + u'+');
    EXPECT_EQ(openInChild(), SQLITE_BUSY) << "the lock must come back with the new password";
    database.rekey(QStringLiteral("another"), kPassword, m_path + u'+');
    database.close();
    EXPECT_EQ(openInChild(), SQLITE_OK);
}

TEST_F(DatabaseTest, ChangesThePassword) {
    Database database(kFast);
    database.open(m_path, kPassword);
    EXPECT_NE(failureOf([&] { database.rekey(kPassword, QString(), m_path + u'+'); }), SQLITE_OK);
    EXPECT_NE(failureOf([&] { database.rekey(kPassword, kPassword, m_path); }), SQLITE_OK);
    database.rekey(kPassword, QStringLiteral("neu 新"), m_path + u'+');
    Statement(database, "INSERT INTO t VALUES(1,'after')").run();
    database.close();
    EXPECT_EQ(failureOf([&] { database.open(m_path, kPassword); }), SQLITE_NOTADB);
    EXPECT_EQ(rows(m_path, QStringLiteral("neu 新")), 101);
}

TEST_F(DatabaseTest, RollsBackAHotJournalAfterAKill) {
    const QByteArray before = contentOf(m_path);
    const int status = inChild([this] {
        Database database(kFast);
        database.open(m_path, kPassword);
        // So small a cache spills changed pages into the file long before the commit.
        database.execute(
            "PRAGMA cache_size=2; BEGIN; UPDATE t SET b='half done';"
            "DELETE FROM t WHERE a%2=0;");
        return ::raise(SIGKILL);
    });
    ASSERT_EQ(status, -SIGKILL);
    ASSERT_TRUE(QFileInfo::exists(m_path + QStringLiteral("-journal")));
    ASSERT_NE(contentOf(m_path), before) << "nothing was spilled, so nothing is proven";
    EXPECT_FALSE(contentOf(m_path + QStringLiteral("-journal"))
                     .contains(QStringLiteral("明文标记").toUtf8()));
    EXPECT_EQ(rows(m_path, kPassword), 100);
}

TEST_F(DatabaseTest, ExportsACompactSoundCopy) {
    Database database(kFast);
    database.open(m_path, kPassword);
    database.execute(
        "PRAGMA application_id=77; PRAGMA user_version=5;"
        "CREATE TABLE p(x TEXT PRIMARY KEY); CREATE TABLE c(x TEXT REFERENCES p);"
        "INSERT INTO p VALUES('1'); INSERT INTO c VALUES('1'); DELETE FROM t WHERE a>=10;");
    const QString target = m_folder.filePath(QStringLiteral("b.db"));
    database.exportTo(target, QStringLiteral("other"));
    EXPECT_NE(failureOf([&] { database.exportTo(target, kPassword); }), SQLITE_OK)
        << "an existing file is never overwritten";
    EXPECT_LT(QFileInfo(target).size(), QFileInfo(m_path).size());
    EXPECT_EQ(rows(target, QStringLiteral("other")), 10);
    Database copy(kFast);
    copy.open(target, QStringLiteral("other"));
    Statement version(copy, "PRAGMA user_version");
    ASSERT_TRUE(version.step());
    EXPECT_EQ(version.integer(0), 5);
    // A copy is not trusted for its number of rows alone.
    EXPECT_EQ(failureOf([&] { compareTables(database, copy); }), SQLITE_OK);
    copy.execute("UPDATE t SET a=a+100 WHERE a=9");
    EXPECT_EQ(failureOf([&] { compareTables(database, copy); }), SQLITE_CORRUPT);
}

TEST_F(DatabaseTest, NothingRunsOnAClosedDatabase) {
    Database closed(kFast);
    EXPECT_EQ(failureOf([&] { const Transaction transaction(closed); }), SQLITE_MISUSE);
    EXPECT_EQ(failureOf([&] { closed.execute("SELECT 1"); }), SQLITE_MISUSE);
    EXPECT_EQ(failureOf([&] { closed.rekey(kPassword, kPassword, m_path + u'+'); }), SQLITE_MISUSE);
    EXPECT_EQ(closed.changes(), 0);
}

TEST_F(DatabaseTest, TransactionsNestAndRollBack) {
    Database database(kFast);
    database.open(m_path, kPassword);
    {
        Transaction outer(database);
        {
            Transaction inner(database);
            database.execute("DELETE FROM t");
        }
        database.execute("DELETE FROM t WHERE a<10");
        outer.commit();
    }
    {
        Transaction abandoned(database);
        Transaction inner(database);
        database.execute("DELETE FROM t");
        inner.commit();
    }
    database.close();
    EXPECT_EQ(rows(m_path, kPassword), 90);
}

TEST_F(DatabaseTest, ValuesComeBackAsTheyWent) {
    Database database(kFast);
    database.open(m_path, kPassword);
    const QString text = QStringLiteral("a'b\"c") + QChar(0) + QStringLiteral("𠀀末");
    const QDateTime time(QDate(2024, 2, 29), QTime(23, 59, 58));
    Statement row(database, "SELECT ?1,?2,?3,?4,?5,?6");
    row.bind(1, text).bind(2, std::int64_t{-5'000'000'000}).bind(3, true).bind(4, time);
    row.bind(5, QDateTime()).bind(6, QDate(1899, 12, 30));
    ASSERT_TRUE(row.step());
    EXPECT_EQ(row.text(0), text);
    EXPECT_EQ(row.integer(1), -5'000'000'000);
    EXPECT_TRUE(row.flag(2));
    EXPECT_EQ(row.dateTime(3), time);
    EXPECT_EQ(row.text(3), QStringLiteral("2024-02-29T23:59:58"));
    EXPECT_TRUE(row.isNull(4));
    EXPECT_FALSE(row.dateTime(4).isValid());
    EXPECT_EQ(row.date(5), QDate(1899, 12, 30));
    EXPECT_NE(failureOf([&] { row.bind(9, 1); }), SQLITE_OK);
}

/// KiB of this process that stay out of the swap space.
int lockedMemory() {
    const QByteArray status = contentOf(QStringLiteral("/proc/self/status"));
    const auto at = status.indexOf("VmLck:") + 6;
    return status.mid(at, status.indexOf("kB", at) - at).trimmed().toInt();
}

TEST_F(DatabaseTest, KeysOfAConnectionAreKeptOutOfTheSwapSpace) {
    alignas(4096) std::array<char, 4096> probe{};
    const int without = lockedMemory();
    if (::mlock(probe.data(), probe.size()) != 0 || lockedMemory() == without) {
        GTEST_SKIP() << "no memory may be locked here, or nobody tells how much is";
    }
    const int before = lockedMemory();
    Database database(kFast);
    database.open(m_path, kPassword);
    const int locked = lockedMemory() - before;
    EXPECT_GT(locked, 0);
    EXPECT_LT(locked, 512) << "the keys, and not the pages in clear as well";
}

}  // namespace
}  // namespace keeper
