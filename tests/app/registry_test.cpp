// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <cerrno>

#include "app/regedit.h"
#include "platform/durable_file.h"
#include "support/failing_system_call.h"
#include "support/fake_ports.h"
#include "support/killed_child.h"
#include "support/temp_home.h"

namespace keeper {
namespace {

const QString usersKey = QStringLiteral("SOFTWARE\\Tarnvalle\\Morvane Keeper\\Users");

/// Texts that a careless format would break: its own separators, escapes, marks and halves.
QStringList nastyTexts() {
    return {QString(),
            QStringLiteral("a\tb\nc\r\nd"),
            QStringLiteral("\\u0041\\\\"),
            QString(QChar(0)) + u'x',
            QString(QChar(QChar::ByteOrderMark)) + QStringLiteral("标题"),
            QString(QChar(0xD83D)),
            QString(QChar(0xDE00)) + QChar(0xD83D),
            QString::fromUtf8("emoji \xF0\x9F\x98\x80 \x7F\xC2\x85"),
            QStringLiteral("K SOFTWARE"),
            QStringLiteral(" ")};
}

RegistryImage nastyImage() {
    RegistryImage image;
    for (const QString& path : nastyTexts()) {
        image.createKey(path);
        for (const QString& text : nastyTexts()) {
            image.setValue(path, text, text + path);
        }
        image.setValue(path, QStringLiteral("number"), 0xFFFFFFFFU);
    }
    image.createKey(QStringLiteral("empty"));
    return image;
}

TEST(RegistryImage, ComesBackWithAnyNamesAndTexts) {
    const RegistryImage image = nastyImage();
    RegistryImage::Fault fault{};
    EXPECT_EQ(RegistryImage::fromBytes(image.toBytes(), fault), image);
    EXPECT_EQ(fault, RegistryImage::Fault::None);
}

TEST(RegistryImage, EveryCutAndEveryFlippedBitIsNoticed) {
    RegistryImage image;
    image.createKey(usersKey);
    image.setValue(usersKey, QStringLiteral("王小明"), QStringLiteral("1\t2"));
    const QByteArray bytes = image.toBytes();
    RegistryImage::Fault fault{};
    for (qsizetype size = 0; size < bytes.size(); ++size) {
        EXPECT_EQ(RegistryImage::fromBytes(bytes.left(size), fault), RegistryImage());
        EXPECT_EQ(fault, RegistryImage::Fault::Damaged) << size;
    }
    for (qsizetype bit = 0; bit < bytes.size() * 8; ++bit) {
        QByteArray flipped = bytes;
        flipped[bit / 8] = static_cast<char>(flipped.at(bit / 8) ^ (1 << (bit % 8)));
        EXPECT_EQ(RegistryImage::fromBytes(flipped, fault), RegistryImage());
        EXPECT_NE(fault, RegistryImage::Fault::None) << bit;
    }
    for (const char* body :
         {"S name\tvalue\n", "K a\nK a\n", "K b\nK a\n", "K a\nD n\t4294967296\n", "K a\nD n\t01\n",
          "K a\nS \\u0041\t\n", "K a\nS n\n", "K \xFF\n", "K a\nX n\tv\n", "K a", "K a\n\n",
          "K \xEF\xBB\xBF"
          "a\n"}) {
        EXPECT_FALSE(RegistryImage().readBody(QByteArray(body))) << body;
    }
}

class RegistryTest : public testing::Test {
  protected:
    mode_t rights(const QString& path) const {
        struct stat state {};
        EXPECT_EQ(::stat(QFile::encodeName(path).constData(), &state), 0) << path.toStdString();
        return state.st_mode & 0777;
    }
    QByteArray content(const QString& path) const {
        return readWholeFile(path, 1 << 20).value_or("absent");
    }
    QStringList files() const {
        return QDir(folders.registry()).entryList(QDir::Files | QDir::Hidden);
    }
    void write(const QString& name, const QByteArray& bytes) const {
        QDir().mkpath(folders.registry());
        QFile file(folders.registry() + u'/' + name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    TempHome home;
    FakeClock clock;
    UserFolders folders = UserFolders::ofSystem();
    RegistryStore store{folders.registry(), clock};
    Regedit regedit{store, folders};
};

TEST_F(RegistryTest, OneCurrentKeyWithTypedValues) {
    EXPECT_FALSE(regedit.setString(QStringLiteral("a"), QStringLiteral("b")));
    EXPECT_FALSE(regedit.openKey(Regedit::Root::LocalMachine, usersKey));
    EXPECT_EQ(regedit.createKeyEx(Regedit::Root::LocalMachine, usersKey),
              Regedit::Disposition::Created);
    EXPECT_TRUE(regedit.setString(QStringLiteral("b"), QStringLiteral("text")));
    EXPECT_TRUE(regedit.setString(QString(), QStringLiteral("default")));
    EXPECT_TRUE(regedit.setDWord(QStringLiteral("a"), 7));
    EXPECT_EQ(regedit.createKeyEx(Regedit::Root::LocalMachine, usersKey),
              Regedit::Disposition::Opened);
    EXPECT_EQ(regedit.getEnumString(),
              QStringList({QString(), QStringLiteral("a"), QStringLiteral("b")}));
    EXPECT_EQ(regedit.getString(QString()), QStringLiteral("default"));
    EXPECT_EQ(regedit.getDWord(QStringLiteral("a")), 7U);
    EXPECT_EQ(regedit.getString(QStringLiteral("a")), QString()) << "a number is no text";
    EXPECT_EQ(regedit.getDWord(QStringLiteral("b")), 0U);
    EXPECT_TRUE(regedit.openKey(Regedit::Root::LocalMachine, usersKey));
    EXPECT_FALSE(regedit.setString(QStringLiteral("a"), QString())) << "opened for reading";
    EXPECT_FALSE(regedit.deleteValue(QStringLiteral("a")));
    EXPECT_TRUE(
        regedit.openKeyEx(Regedit::Root::LocalMachine, usersKey, Regedit::Access::ReadWrite));
    EXPECT_TRUE(regedit.deleteValue(QStringLiteral("a")));
    EXPECT_EQ(regedit.getDWord(QStringLiteral("a")), 0U);
    regedit.closeKey();
    EXPECT_EQ(regedit.getString(QStringLiteral("b")), QString());

    const QString above = QStringLiteral("SOFTWARE\\Tarnvalle");
    EXPECT_TRUE(regedit.createKey(Regedit::Root::LocalMachine, above + QStringLiteral("x")));
    EXPECT_TRUE(regedit.deleteKey(Regedit::Root::LocalMachine, above));
    EXPECT_FALSE(regedit.openKey(Regedit::Root::LocalMachine, usersKey)) << "keys below go along";
    EXPECT_TRUE(regedit.openKey(Regedit::Root::LocalMachine, above + QStringLiteral("x")));
}

TEST_F(RegistryTest, ChangesThatBelongTogetherArriveTogetherOrNotAtAll) {
    const auto twoValues = [&](bool good) {
        return regedit.atomically([&] {
            return regedit.createKey(Regedit::Root::LocalMachine, usersKey) &&
                   regedit.setString(QStringLiteral("1"), QStringLiteral("new")) && good;
        });
    };
    EXPECT_FALSE(twoValues(false));
    EXPECT_FALSE(QFile::exists(store.path()));
    EXPECT_TRUE(twoValues(true));
    EXPECT_EQ(store.read().value(usersKey, QStringLiteral("1")),
              RegistryValue(QStringLiteral("new")));
}

TEST_F(RegistryTest, DefaultFolderIsTheDocumentsFolderUntilOneIsChosen) {
    EXPECT_EQ(regedit.p_defPrivateFolders(), folders.documents);
    EXPECT_TRUE(regedit.p_defPrivateFolders(QStringLiteral("/数据")));
    EXPECT_EQ(regedit.p_defPrivateFolders(), QStringLiteral("/数据"));
}

TEST_F(RegistryTest, NobodyElseMayRead) {
    QDir().mkpath(folders.registry());
    QFile(folders.registry())
        .setPermissions(QFile::Permissions::fromInt(0x7755));  // as an older tool may have left it
    const QString left = QStringLiteral(".morvane-keeper-new-killed");
    write(left, "left by a crash");
    QFile(folders.registry() + u'/' + left).setPermissions(QFile::Permissions::fromInt(0x6644));
    const mode_t mask = ::umask(0);
    EXPECT_TRUE(regedit.createKey(Regedit::Root::LocalMachine, usersKey));
    ::umask(mask);
    EXPECT_EQ(rights(folders.registry()), 0700U);
    for (const QString& file : files()) {
        EXPECT_EQ(rights(folders.registry() + u'/' + file), 0600U) << file.toStdString();
    }
    EXPECT_EQ(files(), QStringList({QStringLiteral("registry"), QStringLiteral("registry.lock")}));
}

TEST_F(RegistryTest, DamagedContentIsKeptAsideAndReadsAsMissing) {
    const QStringList broken{QStringLiteral("first"), QStringLiteral("second")};
    for (const QString& text : broken) {
        write(QStringLiteral("registry"), text.toUtf8());
        EXPECT_FALSE(regedit.openKey(Regedit::Root::LocalMachine, usersKey));
        EXPECT_EQ(content(store.path()), text.toUtf8()) << "reading changes nothing";
        EXPECT_TRUE(regedit.createKey(Regedit::Root::LocalMachine, usersKey));
    }
    const QString aside = store.path() + QStringLiteral(".damaged-20260520T120000");
    EXPECT_EQ(content(aside), "first");
    EXPECT_EQ(content(aside + QStringLiteral("-2")), "second");
    EXPECT_TRUE(regedit.openKey(Regedit::Root::LocalMachine, usersKey));
}

TEST_F(RegistryTest, AFailingDiskNeverLosesDamagedContent) {
    int good = 0;
    failEachCall({.errors = {ENOSPC, EINVAL, ETXTBSY},
                  .before =
                      [&] {
                          for (const QString& file : store.damagedFiles()) {
                              QFile::remove(file);
                          }
                          write(QStringLiteral("registry"), "damaged");
                      },
                  .work = [&] { return regedit.createKey(Regedit::Root::LocalMachine, usersKey); },
                  .check =
                      [&](const std::string& at, int answer) {
                          good += answer;
                          EXPECT_TRUE(answer == 1 || content(store.path()) == "damaged" ||
                                      store.damagedFiles().size() == 1)
                              << at;
                          clock.set(clock.now().addSecs(1));
                          EXPECT_TRUE(regedit.createKey(Regedit::Root::LocalMachine, usersKey))
                              << at;
                          ASSERT_EQ(store.damagedFiles().size(), 1) << "kept once: " << at;
                          EXPECT_EQ(content(store.damagedFiles().front()), "damaged") << at;
                      }});
    EXPECT_EQ(good, 4) << "a disk that cannot flush a folder, twice, that can rename neither to a "
                          "new name only nor what is open";
}

TEST_F(RegistryTest, ALinkStaysOneAndIsNotEmptyWhenItLeadsNowhere) {
    const QString target = home.path(QStringLiteral("dotfiles"));
    QDir().mkpath(folders.registry());
    ASSERT_TRUE(QFile::link(target, store.path()));
    EXPECT_FALSE(regedit.fault().isEmpty());
    EXPECT_FALSE(regedit.createKey(Regedit::Root::LocalMachine, usersKey));
    replaceFile(target, "damaged");
    ASSERT_TRUE(regedit.createKey(Regedit::Root::LocalMachine, usersKey));
    EXPECT_TRUE(QFileInfo(store.path()).isSymLink());
    EXPECT_EQ(content(target), content(store.path()));
    EXPECT_TRUE(store.read().hasKey(usersKey));
    EXPECT_EQ(content(store.damagedFiles().value(0)), "damaged");
}

TEST_F(RegistryTest, WhatCouldNotBeReadAgainIsNotWritten) {
    ASSERT_TRUE(regedit.createKey(Regedit::Root::LocalMachine, usersKey));
    const QByteArray before = content(store.path());
    EXPECT_FALSE(regedit.setString(QStringLiteral("a"), QString(16 * 1024 * 1024, u'x')));
    EXPECT_EQ(content(store.path()), before);
    EXPECT_EQ(regedit.getString(QStringLiteral("a")), QString());
}

TEST_F(RegistryTest, WhatCannotBeReadOrComesFromALaterVersionIsNotReplaced) {
    RegistryImage image;
    image.createKey(usersKey);
    QByteArray newer = image.toBytes();
    newer.replace("registry 1 ", "registry 2 ");
    write(QStringLiteral("registry"), newer);
    EXPECT_FALSE(regedit.createKey(Regedit::Root::LocalMachine, usersKey));
    EXPECT_EQ(content(store.path()), newer);

    QFile::remove(store.path());
    QDir().mkpath(store.path() + QStringLiteral("/in the way"));
    EXPECT_FALSE(regedit.createKey(Regedit::Root::LocalMachine, usersKey));
    EXPECT_TRUE(QFile::exists(store.path() + QStringLiteral("/in the way")));
}

TEST_F(RegistryTest, WritersAtTheSameTimeLoseNothing) {
    constexpr int writers = 4;
    constexpr int values = 40;
    std::vector<pid_t> children;
    for (int writer = 0; writer < writers; ++writer) {
        const pid_t child = ::fork();
        if (child == 0) {
            bool good = regedit.createKey(Regedit::Root::LocalMachine, usersKey);
            for (int i = 0; i < values; ++i) {
                good = regedit.setString(QStringLiteral("%1-%2").arg(writer).arg(i), QString()) &&
                       good;
            }
            ::_exit(good ? 0 : 1);
        }
        children.push_back(child);
    }
    for (const pid_t child : children) {
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
    EXPECT_EQ(store.read().valueNames(usersKey).size(), writers * values);
}

TEST_F(RegistryTest, ReplacementsWithoutALockDoNotDisturbEachOther) {
    const QString path = home.path(QStringLiteral("entry"));
    const pid_t child = ::fork();
    const auto replaceOften = [&](char letter) {
        for (int i = 0; i < 200; ++i) {
            replaceFile(path, QByteArray(9000, letter));
        }
    };
    if (child == 0) {
        try {
            replaceOften('b');
            ::_exit(0);
        } catch (...) {
            ::_exit(1);
        }
    }
    EXPECT_NO_THROW(replaceOften('a'));
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(content(path) == QByteArray(9000, 'a') || content(path) == QByteArray(9000, 'b'));
    EXPECT_EQ(QDir(home.path()).entryList({QStringLiteral(".m*")}, QDir::Files | QDir::Hidden),
              QStringList());
}

TEST_F(RegistryTest, KilledAtAnySystemCallItHoldsTheOldOrTheNewState) {
    const QString name = QStringLiteral("user");
    ASSERT_TRUE(regedit.createKey(Regedit::Root::LocalMachine, usersKey));
    ASSERT_TRUE(regedit.setString(name, QString()));
    QString before;
    int sawNew = 0;
    int call = 1;
    for (;; ++call) {
        const QString after = QString::number(call);
        const bool killed = killedAtSystemCall(call, [&] {
            if (!regedit.setString(name, after)) {
                ::_exit(1);
            }
        });
        const auto found = store.read().value(usersKey, name);
        ASSERT_TRUE(found.has_value());
        const QString now = std::get<QString>(*found);
        ASSERT_TRUE(now == before || now == after) << call;
        sawNew += now == after ? 1 : 0;
        before = now;
        if (!killed) {
            EXPECT_EQ(now, after);
            break;
        }
    }
    EXPECT_GT(call, 10);
    EXPECT_GT(sawNew, 1) << "some were killed behind the renaming";
    EXPECT_TRUE(regedit.setString(name, QStringLiteral("later"))) << "no lock is left behind";
    EXPECT_EQ(files(), QStringList({QStringLiteral("registry"), QStringLiteral("registry.lock")}));
}

TEST_F(RegistryTest, AFailingDiskLeavesTheOldStateInFileAndMemory) {
    const QString name = QStringLiteral("user");
    ASSERT_TRUE(regedit.createKey(Regedit::Root::LocalMachine, usersKey));
    QByteArray old;
    failEachCall({.errors = {ENOSPC, EIO},
                  .before =
                      [&] {
                          ASSERT_TRUE(regedit.setString(name, QStringLiteral("old")));
                          old = content(store.path());
                      },
                  .work =
                      [&] {
                          const bool good = regedit.setString(name, QStringLiteral("new"));
                          const QString shown = regedit.getString(name);
                          if (shown != (good ? QStringLiteral("new") : QStringLiteral("old"))) {
                              ::_exit(2);
                          }
                          return good;
                      },
                  .check =
                      [&](const std::string& at, int answer) {
                          EXPECT_EQ(answer, 0) << at;
                          // The last call makes the new name last; the file is whole on either
                          // side of it.
                          EXPECT_TRUE(content(store.path()) == old ||
                                      store.read().value(usersKey, name) ==
                                          RegistryValue(QStringLiteral("new")))
                              << at;
                      }});
}

}  // namespace
}  // namespace keeper
