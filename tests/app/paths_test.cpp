// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "app/file_operator.h"
#include "app/private_folder.h"
#include "platform/durable_file.h"
#include "store/failure.h"
#include "support/fake_ports.h"
#include "support/scripted_prompt.h"
#include "support/temp_home.h"

namespace keeper {
namespace {

struct Owner final : PrivateFolderOwner {
    QString user = QStringLiteral("王小明");
    QString folder;
    QString tip;
    QString p_userName() const override { return user; }
    QString p_privateFolder() const override { return folder; }
    QString p_lgnKeyTip() const override { return tip; }
};

class PathsTest : public testing::Test {
  protected:
    PathsTest() { owner.folder = home.path(QStringLiteral("MORV - 王小明")); }
    void touch(const QString& path, const QByteArray& content = "x") const {
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
        file.write(content);
    }

    TempHome home;
    FakeClock clock;
    ScriptedPrompt prompt;
    UserFolders folders = UserFolders::ofSystem();
    Owner owner;
    FileOperator files{folders, clock, prompt, owner};
};

TEST_F(PathsTest, UserNameStandsBehindThePrefixOfTheLastStep) {
    const auto name = [](const char16_t* path) {
        return FileOperator::GetUserNameByPath(QString::fromUtf16(path)).toStdString();
    };
    EXPECT_EQ(name(u"/data/MORV - 王小明"), "王小明");
    EXPECT_EQ(name(u"/data/MORV - a.b/"), "a.b");
    EXPECT_EQ(name(u"/data/MORV - a/file"), "");
    EXPECT_EQ(name(u"/data/morv - a"), "");
    EXPECT_EQ(name(u"/data/xMORV - a"), "");
    EXPECT_EQ(name(u""), "");
    EXPECT_EQ(name(u"/"), "");
}

TEST_F(PathsTest, PathsOfThePrivateFolderMoveWithIt) {
    struct Case {
        const char16_t* path;
        const char16_t* reduced;
    };
    for (const Case& it :
         {Case{u"/old/place/MORV - 王小明/加密文件/a.aes", u"MORV - 王小明/加密文件/a.aes"},
          Case{u"MORV - 王小明/x", u"MORV - 王小明/x"},
          Case{u"/x/MORV - 王小明x/a", u"/x/MORV - 王小明x/a"},
          Case{u"/x/aMORV - 王小明/a", u"/x/aMORV - 王小明/a"},
          Case{u"/x/MORV - 李/a", u"/x/MORV - 李/a"}, Case{u"", u""}, Case{u"/", u"/"}}) {
        const QString reduced = files.ReducePath(QString::fromUtf16(it.path), false);
        EXPECT_EQ(reduced, QString::fromUtf16(it.reduced));
        EXPECT_EQ(files.ReducePath(QString::fromUtf16(it.path), true),
                  reduced.isEmpty() || reduced == u'/' ? reduced : reduced + u'/');
    }
    EXPECT_EQ(files.ResolvePath(QStringLiteral("MORV - 王小明/我的备份/"), false),
              owner.folder + QStringLiteral("/我的备份"));
    EXPECT_EQ(files.ResolvePath(QStringLiteral("MORV - 王小明/我的备份"), true),
              owner.folder + QStringLiteral("/我的备份/"));
    // The folder itself, reduced without a slash, is still known.
    EXPECT_EQ(files.ResolvePath(files.ReducePath(owner.folder + u'/', false), false), owner.folder);
    // The folder moves: the stored path leads to the new place, even below one of the same name.
    const QString stored = files.ReducePath(owner.folder + QStringLiteral("/a"), false);
    owner.folder = home.path(QStringLiteral("MORV - 王小明/disk/MORV - 王小明"));
    const QString moved = owner.folder + QStringLiteral("/a");
    EXPECT_EQ(files.ResolvePath(stored, false), moved);
    EXPECT_EQ(files.ResolvePath(files.ReducePath(moved, false), false), moved);
    EXPECT_EQ(files.ReducePath(moved, true), QStringLiteral("MORV - 王小明/a/"));
    EXPECT_EQ(files.ResolvePath(QStringLiteral("/else/MORV - 王小明/x"), false),
              QStringLiteral("/else/MORV - 王小明/x"));
    owner.user.clear();  // before a login nothing is reduced
    EXPECT_EQ(files.ReducePath(QStringLiteral("/x/MORV - /y"), false),
              QStringLiteral("/x/MORV - /y"));
}

TEST_F(PathsTest, ProgramPathsComeBackAndAreFoundInTheSisterFolder) {
    for (const char* path : {"/usr/bin/env", "/usr/local/bin/no-such-program", "/opt/vendor/tool",
                             "/home/a/usr/bin/x", "/usr", "usr/bin/x", "/usrx/bin", ""}) {
        const QString full = QString::fromLatin1(path);
        EXPECT_EQ(files.ResolveProgramPath(FileOperator::ReduceProgramPath(full)), full);
    }
    EXPECT_EQ(FileOperator::ReduceProgramPath(QStringLiteral("/usr/bin/env")),
              QStringLiteral("MORV_Programs/bin/env"));
    EXPECT_EQ(FileOperator::ReduceProgramPath(QStringLiteral("/opt/a/b")),
              QStringLiteral("MORV_Programs(x86)/a/b"));
    EXPECT_EQ(FileOperator::ReduceProgramPath(QStringLiteral("/mnt/usr/bin/env")),
              QStringLiteral("/mnt/usr/bin/env"));
    ASSERT_FALSE(QFile::exists(QStringLiteral("/usr/local/bin/env")));
    EXPECT_EQ(files.ResolveProgramPath(QStringLiteral("MORV_Programs/local/bin/env")),
              QStringLiteral("/usr/bin/env"));
}

TEST_F(PathsTest, LengthsForPeople) {
    const auto text = [](qint64 size) {
        return FileOperator::GetFileLenHuman_Size(size).toStdString();
    };
    EXPECT_EQ(text(0), "0 B");
    EXPECT_EQ(text(1023), "1023 B");
    EXPECT_EQ(text(1024), "1 KB");
    EXPECT_EQ(text(1536), "1.5 KB");
    EXPECT_EQ(text(1024 * 1024 - 1), "1023.99 KB");
    EXPECT_EQ(text(10 * 1024 * 1024), "10 MB");
    EXPECT_EQ(text(5LL << 30U), "5 GB");
    const QString path = home.path(QStringLiteral("big"));
    EXPECT_EQ(FileOperator::GetFileLenHuman_Path(path), QStringLiteral("文件不存在"));
    touch(path, {});
    EXPECT_FALSE(FileOperator::FileValid(path));
    EXPECT_EQ(FileOperator::GetFileLenHuman_Path(path), QStringLiteral("0 B"));
    ASSERT_TRUE(QFile::resize(path, 1LL << 31U));
    EXPECT_EQ(FileOperator::GetFileLenHuman_Path(path), QStringLiteral("文件太大"));
    EXPECT_TRUE(FileOperator::FileValid(path));
    EXPECT_FALSE(FileOperator::FileValid(home.path())) << "a folder is no file";
    FileOperator::EnsureNotExist(path);
    FileOperator::EnsureNotExist(path);
    EXPECT_FALSE(QFile::exists(path));
}

TEST_F(PathsTest, BackupNamesTellUserHintAndTime) {
    owner.tip = QStringLiteral("生日/..");
    clock.set(QDateTime(QDate(2026, 3, 4), QTime(5, 6, 7)));
    EXPECT_EQ(files.GetBackupFilePath(true, QStringLiteral("/b/")),
              QStringLiteral("/b/王小明-生日_..-20260304_0506.kvdb"));
    EXPECT_EQ(files.GetBackupFilePath(false, QStringLiteral("/b")),
              QStringLiteral("/b/王小明-生日_..-覆盖备份.kvdb"));
    owner.tip = QString(300, u'长');
    const QString path = files.GetBackupFilePath(false, home.path());
    touch(path);  // the file system takes the name
    EXPECT_TRUE(path.endsWith(QStringLiteral("长-覆盖备份.kvdb")));
}

TEST_F(PathsTest, RepairMakesWhatIsMissingAndKeepsTheRest) {
    const QString own = privatefolder::backupsOf(owner.folder) + QStringLiteral("/.directory");
    touch(own, "own");
    // A decoration that cannot be written keeps no folder from being made.
    QDir().mkpath(privatefolder::backgroundsOf(owner.folder));
    ASSERT_TRUE(QFile::link(QStringLiteral("/nowhere"), privatefolder::backgroundsOf(owner.folder) +
                                                            QStringLiteral("/.directory")));
    const mode_t mask = ::umask(0);
    privatefolder::repair(owner.folder);
    privatefolder::repair(owner.folder);
    ::umask(mask);
    EXPECT_EQ(readWholeFile(own, 100), QByteArray("own"));
    for (const QString& folder :
         {owner.folder, privatefolder::backupsOf(owner.folder),
          privatefolder::backgroundsOf(owner.folder), privatefolder::encryptedOf(owner.folder)}) {
        struct stat state {};
        ASSERT_EQ(::stat(QFile::encodeName(folder).constData(), &state), 0);
        EXPECT_EQ(state.st_mode & 0777U, 0700U) << folder.toStdString();
    }
    EXPECT_TRUE(
        readWholeFile(owner.folder + QStringLiteral("/.directory"), 1000)->contains("私人文件夹"));
}

TEST_F(PathsTest, DestroyTakesEverythingInsideAndNothingOutside) {
    privatefolder::repair(owner.folder);
    touch(home.path(QStringLiteral("outside/kept")));
    const QString deep = owner.folder + QStringLiteral("/a/b/c");
    touch(deep + QStringLiteral("/file"));
    ASSERT_TRUE(QFile::link(home.path(QStringLiteral("outside")), deep + QStringLiteral("/link")));
    ASSERT_TRUE(QFile::link(QStringLiteral("/nowhere"), deep + QStringLiteral("/dead")));
    QFile::setPermissions(deep, QFile::Permissions());
    QFile::setPermissions(owner.folder + QStringLiteral("/a"), QFile::ReadOwner);
    QFile::setPermissions(owner.folder, QFile::ReadOwner | QFile::ExeOwner);
    privatefolder::destroy(owner.folder);
    EXPECT_FALSE(QFileInfo::exists(owner.folder));
    EXPECT_TRUE(QFile::exists(home.path(QStringLiteral("outside/kept"))));
    privatefolder::destroy(owner.folder);  // gone already: no failure

    // The folder moved to another place with a link in its stead: both go.
    const QString moved = home.path(QStringLiteral("disk/MORV - 王小明"));
    touch(moved + QStringLiteral("/file"));
    ASSERT_TRUE(QFile::link(moved, owner.folder));
    privatefolder::destroy(owner.folder);
    EXPECT_FALSE(QFileInfo::exists(moved));
    EXPECT_FALSE(QFileInfo(owner.folder).isSymLink());
    EXPECT_TRUE(QFileInfo::exists(home.path(QStringLiteral("disk"))));

    for (const QString& path : {home.path(), QStringLiteral("/"), QString(),
                                QStringLiteral("MORV - a"), home.path(QStringLiteral("MORV - "))}) {
        EXPECT_THROW(privatefolder::destroy(path), KeeperError) << path.toStdString();
    }
    touch(owner.folder);  // a file where the folder should be
    EXPECT_THROW(privatefolder::destroy(owner.folder), KeeperError);
    EXPECT_TRUE(QFile::exists(owner.folder));
}

}  // namespace
}  // namespace keeper
