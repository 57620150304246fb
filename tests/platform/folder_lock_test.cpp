// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <grp.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <csignal>
#include <functional>

#include "platform/linux/linux_folder_lock.h"

namespace keeper {
namespace {

using namespace Qt::StringLiterals;

constexpr uid_t kNobody = 65534;

/// Runs `work` in another process, as an ordinary person where this one is not. The exit code.
int inOtherProcess(bool isOrdinary, const std::function<int()>& work) {
    const pid_t child = ::fork();
    if (child == 0) {
        if (isOrdinary && ::geteuid() == 0 &&
            (::setgroups(0, nullptr) != 0 || ::setgid(kNobody) != 0 || ::setuid(kNobody) != 0)) {
            ::_exit(99);
        }
        ::_exit(work());
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

int run(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(program, arguments);
    // The lock's own watching needs the event loop.
    EXPECT_TRUE(QTest::qWaitFor([&] { return process.state() == QProcess::NotRunning; }, 10'000));
    return process.exitCode();
}

/// A private folder with content; as root and as an ordinary person, whose lock is another one.
class FolderLockTest : public testing::TestWithParam<bool> {
  protected:
    void SetUp() override {
        ASSERT_TRUE(m_dir.isValid());
        ASSERT_EQ(::chmod(QFile::encodeName(m_dir.path()).constData(), 0777), 0);
    }
    /// Everything belongs to the one who runs it.
    void make() const {
        ASSERT_TRUE(QDir().mkpath(folder() + u"/我的备份/旧"_s));
        for (const QString& name : {u"/A.kvdb"_s, u"/我的备份/A.kvdb"_s, u"/我的备份/旧/b"_s}) {
            QFile file(folder() + name);
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
            file.write("content");
        }
    }
    [[nodiscard]] QString folder() const { return m_dir.filePath(u"MORV - A"_s); }
    [[nodiscard]] QString state() const { return m_dir.filePath(u"state"_s); }
    [[nodiscard]] QString moved() const { return m_dir.filePath(u"moved"_s); }
    [[nodiscard]] int files() const {
        int count = 0;
        for (const QString& name : {u"/A.kvdb"_s, u"/我的备份/A.kvdb"_s, u"/我的备份/旧/b"_s}) {
            count += QFile::exists(folder() + name) ? 1 : 0;
        }
        return count;
    }
    void attack() const {
        run(u"mv"_s, {folder(), moved()});
        EXPECT_TRUE(QTest::qWaitFor([&] { return !QFile::exists(moved()); }, 5'000))
            << "the renaming stood";
        EXPECT_NE(run(u"rm"_s, {u"-rf"_s, folder()}), 0);
        EXPECT_NE(run(u"mv"_s, {folder() + u"/我的备份"_s, folder() + u"/weg"_s}), 0);
        EXPECT_NE(run(u"rm"_s, {u"-f"_s, folder() + u"/A.kvdb"_s}), 0);
        EXPECT_EQ(files(), 3);
    }
    /// Somebody who knows the trick, while nobody looks. With the stronger lock nothing happens.
    void deleteByForce() const {
        inOtherProcess(false, [this] {
            ::execlp("sh", "sh", "-c", "chmod -R u+w \"$0\"; rm -rf \"$0\" 2>/dev/null",
                     QFile::encodeName(folder()).constData(), nullptr);
            return 1;
        });
    }
    void expectFree() const {
        ASSERT_EQ(run(u"mv"_s, {folder(), moved()}), 0);
        ASSERT_EQ(run(u"rm"_s, {u"-r"_s, moved()}), 0);
        EXPECT_FALSE(hasJournal());
    }
    [[nodiscard]] bool hasJournal() const {
        return !QDir(state()).entryList({u"folder-lock-*"_s}).isEmpty();
    }
    void asSomebody(const std::function<void()>& work) const {
        EXPECT_EQ(inOtherProcess(GetParam(),
                                 [&] {
                                     make();
                                     work();
                                     return testing::Test::HasFailure() ? 1 : 0;
                                 }),
                  0);
    }

    QTemporaryDir m_dir;
};

INSTANTIATE_TEST_SUITE_P(Persons, FolderLockTest, testing::Bool(), [](const auto& person) {
    return person.param ? "Ordinary" : "AsThisOne";
});

TEST_P(FolderLockTest, NobodyRenamesOrDeletesUntilItIsUnlocked) {
    asSomebody([this] {
        struct stat before {};
        ASSERT_EQ(::stat(QFile::encodeName(folder()).constData(), &before), 0);
        LinuxFolderLock lock(state(), QString());
        ASSERT_TRUE(lock.lock(folder()));
        EXPECT_TRUE(lock.lock(folder()));
        EXPECT_FALSE(lock.lock(state() + u"x"_s));
        attack();
        // Rights that are given back meanwhile are taken again.
        run(u"chmod"_s, {u"-R"_s, u"u+w"_s, folder()});
        QTest::qWait(50);
        attack();
        deleteByForce();
        EXPECT_TRUE(QTest::qWaitFor([this] { return files() == 3; }, 5'000)) << files();
        QTest::qWait(50);
        attack();
        QFile file(folder() + u"/我的备份/旧/b"_s);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        EXPECT_EQ(file.readAll(), "content");
        // A folder above it is renamed, which nobody can forbid: it stays pinned where it is.
        const QString parent = m_dir.filePath(u"disk"_s);
        const QString away = m_dir.filePath(u"away"_s);
        lock.unlock();
        ASSERT_TRUE(QDir().mkdir(parent));
        ASSERT_TRUE(QDir().rename(folder(), parent + u"/MORV - A"_s));
        ASSERT_TRUE(lock.lock(parent + u"/MORV - A"_s));
        ASSERT_TRUE(QDir().rename(parent, away));
        run(u"chmod"_s, {u"-R"_s, u"u+w"_s, away + u"/MORV - A"_s});
        QTest::qWait(100);
        EXPECT_NE(run(u"rm"_s, {u"-rf"_s, away + u"/MORV - A"_s}), 0);
        EXPECT_TRUE(QFile::exists(away + u"/MORV - A/我的备份/旧/b"_s));
        ASSERT_TRUE(QDir().rename(away, parent));
        lock.unlock();
        ASSERT_TRUE(QDir().rename(parent + u"/MORV - A"_s, folder()));
        EXPECT_FALSE(hasJournal());
        // What cannot come back at the unlocking waits for the next start.
        ASSERT_TRUE(lock.lock(folder()));
        deleteByForce();
        if (files() == 0) {
            ASSERT_TRUE(QDir().mkpath(folder()));
            QFile inTheWay(folder() + u"/我的备份"_s);
            ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
            lock.unlock();
            EXPECT_TRUE(inTheWay.remove());
            LinuxFolderLock(state(), QString()).heal();
            EXPECT_EQ(files(), 3);
        }
        lock.unlock();
        ASSERT_TRUE(lock.lock(folder()));
        deleteByForce();
        lock.unlock();
        EXPECT_EQ(files(), 3) << "deleted in the last moment";
        struct stat after {};
        ASSERT_EQ(::stat(QFile::encodeName(folder()).constData(), &after), 0);
        EXPECT_EQ(before.st_mode, after.st_mode);
        expectFree();
    });
}

TEST_P(FolderLockTest, TheNextStartFreesWhatAKilledProgramLeftLocked) {
    asSomebody([this] {
        inOtherProcess(false, [this] {
            LinuxFolderLock lock(state(), QString());
            EXPECT_TRUE(lock.lock(folder()));
            deleteByForce();
            return ::raise(SIGKILL);
        });
        LinuxFolderLock(state(), QString()).heal();
        EXPECT_EQ(files(), 3) << "deleted behind the killed program's back";
        inOtherProcess(false, [this] {
            LinuxFolderLock lock(state(), QString());
            EXPECT_TRUE(lock.lock(folder()));
            return ::raise(SIGKILL);
        });
        EXPECT_NE(run(u"rm"_s, {u"-f"_s, folder() + u"/A.kvdb"_s}), 0);
        // Nobody watches any more: an ordinary person's folder can be renamed where it lies.
        const bool isMoved = ::rename(QFile::encodeName(folder()).constData(),
                                      QFile::encodeName(moved()).constData()) == 0;
        LinuxFolderLock(state(), QString()).heal();
        if (isMoved) {
            ASSERT_EQ(run(u"mv"_s, {moved(), folder()}), 0);
        }
        expectFree();
    });
}

TEST_P(FolderLockTest, AFolderWhoseDiskIsAwayIsFreedWhenItIsBack) {
    asSomebody([this] {
        const QString disk = m_dir.filePath(u"disk"_s);
        const QString away = m_dir.filePath(u"away"_s);
        ASSERT_TRUE(QDir().mkdir(disk));
        ASSERT_TRUE(QDir().rename(folder(), disk + u"/MORV - A"_s));
        inOtherProcess(false, [&] {
            LinuxFolderLock lock(state(), QString());
            EXPECT_TRUE(lock.lock(disk + u"/MORV - A"_s));
            return ::raise(SIGKILL);
        });
        ASSERT_EQ(
            ::rename(QFile::encodeName(disk).constData(), QFile::encodeName(away).constData()), 0);
        const LinuxFolderLock next(state(), QString());
        next.heal();
        EXPECT_TRUE(hasJournal());
        ASSERT_EQ(
            ::rename(QFile::encodeName(away).constData(), QFile::encodeName(disk).constData()), 0);
        next.heal();
        ASSERT_TRUE(QDir().rename(disk + u"/MORV - A"_s, folder()));
        expectFree();
    });
}

TEST_P(FolderLockTest, TheWatchdogFreesTheFolderAsSoonAsTheProgramDies) {
    asSomebody([this] {
        inOtherProcess(false, [this] {
            LinuxFolderLock lock(state(), QStringLiteral(KEEPER_PROGRAM));
            for (int i = 0; i < 3; ++i) {
                EXPECT_TRUE(lock.lock(folder()));
                lock.unlock();
            }
            EXPECT_TRUE(lock.lock(folder()));
            // The watchdogs of the former locks were told goodbye and leave this one alone.
            attack();
            return ::raise(SIGKILL);
        });
        EXPECT_TRUE(QTest::qWaitFor([this] { return !hasJournal(); }, 5'000));
        expectFree();
    });
}

}  // namespace
}  // namespace keeper
