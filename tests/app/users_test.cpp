// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/users.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QSet>
#include <random>

#include "app/private_folder.h"
#include "app/system.h"
#include "platform/durable_file.h"
#include "support/campaign_setting.h"
#include "support/fake_ports.h"
#include "support/killed_child.h"
#include "support/scripted_prompt.h"
#include "support/temp_home.h"

namespace keeper {
namespace {

class UsersTest : public testing::Test {
  protected:
    std::shared_ptr<User> newUser(const QString& userName) {
        const auto user = users.makeUser();
        user->p_privateFolder(home.path(QStringLiteral("MORV - ") + userName));
        return user;
    }
    std::shared_ptr<User> readBack(const QString& userName) {
        const auto user = users.makeUser();
        return user->ReadRegistry(userName) ? user : nullptr;
    }
    QString stored(const QString& user, const char* value) {
        const auto found = store.read().value(UserKeyPrefix() + Users::GetHashUserTitle(user),
                                              QString::fromLatin1(value));
        return found ? std::get<QString>(*found) : QStringLiteral("(none)");
    }
    void change(const QString& user, const char* value, const QString& text) {
        store.change([&](RegistryImage& image) {
            image.setValue(UserKeyPrefix() + Users::GetHashUserTitle(user),
                           QString::fromLatin1(value), text);
        });
    }

    TempHome home;
    FakeClock clock;
    FakeEventLoop loop;
    ScriptedPrompt prompt;
    SystemRandom random;
    UserFolders folders = UserFolders::ofSystem();
    RegistryStore store{folders.registry(), clock};
    Regedit regedit{store, folders};
    XdgAutostart autostart{folders, QStringLiteral("/usr/bin/morvane-keeper")};
    Users users{{regedit, autostart, random, prompt}, loop};
    const QString name = QStringLiteral("王小明");
};

TEST(UserRecord, FieldsAreExactlyFourteenAndEachReadable) {
    UserRecord record;
    record.privateFolder = QStringLiteral("/家/\t\n\\u0041/ñ😀") + QChar(0xD800) + QChar(0);
    record.lgnKeyTip = QStringLiteral("提示");
    record.usedTimes = -1;
    record.attackTime = QDateTime(QDate(2026, 5, 20), QTime(1, 2, 3));
    const QString text = record.toText();
    EXPECT_EQ(UserRecord::fromText(text), record);
    EXPECT_TRUE(text.contains(QStringLiteral("\t提示\t/家/\\u0009"))) << "plain where it can be";
    QStringList fields = text.split(u'\t');
    ASSERT_EQ(fields.size(), 14);
    EXPECT_FALSE(UserRecord::fromText(text + u'\t'));
    EXPECT_FALSE(UserRecord::fromText(fields.mid(1).join(u'\t')));
    const std::pair<int, const char*> faults[] = {{2, "never"},   {3, "true"}, {8, "32768"},
                                                  {8, ""},        {9, "\\"},   {9, "\\u12"},
                                                  {9, "\\x0041"}, {12, "1"},   {13, "1.5"}};
    for (const auto& [index, fault] : faults) {
        QStringList broken = fields;
        broken[index] = QString::fromLatin1(fault);
        EXPECT_FALSE(UserRecord::fromText(broken.join(u'\t'))) << fault;
    }
}

TEST_F(UsersTest, RecordComesBackAndTwoWritesLookUnrelated) {
    const auto user = newUser(name);
    user->p_plainLgnKey(QStringLiteral("密钥-Key 1"));
    user->p_activeFile(QStringLiteral("/tmp/x.db"));
    user->p_activeTime(clock.now());
    user->p_fingerprint(true);
    user->p_hideDBPath(true);
    user->p_themeBackground(true);
    user->p_lgnKeyChances0(10);
    user->p_usedTimes(3);
    user->p_lgnKeyTip(QStringLiteral("生日 🎂"));
    QStringList seen;
    QSet<QString> pairs;
    for (int i = 0; i < 60; ++i) {  // as many as there are key pairs to draw
        const QString hash = stored(name, "0");
        ASSERT_TRUE(user->WriteRegistry());
        EXPECT_TRUE(i == 0 || stored(name, "0") == hash) << "the same key";
        for (const char* value : {"2", "3"}) {
            EXPECT_FALSE(seen.contains(stored(name, value)));
            seen << stored(name, value);
        }
        pairs << stored(name, "1");
        const auto read = readBack(name);
        ASSERT_TRUE(read);
        EXPECT_EQ(read->p_hashLgnKey(), user->p_hashLgnKey());
        EXPECT_EQ(read->p_activeFile(), user->p_activeFile());
        EXPECT_EQ(read->p_activeTime(), user->p_activeTime());
        EXPECT_FALSE(read->p_attackTime().isValid());
        EXPECT_EQ(read->p_lgnKeyTip(), user->p_lgnKeyTip());
        EXPECT_EQ(read->p_privateFolder(), user->p_privateFolder());
        EXPECT_TRUE(read->p_fingerprint() && read->p_hideDBPath() && read->p_themeBackground());
        EXPECT_FALSE(read->p_autoLogin() || read->p_remLgnKey() || read->p_startupWithOS());
        EXPECT_EQ(read->p_remainedTimes(), 7);
        EXPECT_EQ(read->p_plainLgnKey(), QString()) << "not remembered";
    }
    EXPECT_GT(pairs.size(), 10);
    user->p_usedTimes(11);
    EXPECT_EQ(user->p_remainedTimes(), 0);
    const QByteArray file = readWholeFile(store.path(), 1 << 20).value();
    for (const QString& clear : {name, user->p_hashLgnKey(), user->p_lgnKeyTip()}) {
        EXPECT_FALSE(file.contains(clear.toUtf8())) << clear.toStdString();
    }
}

TEST_F(UsersTest, LoginKeyIsRememberedOnlyWhenAskedFor) {
    const auto user = newUser(name);
    const QString key = QStringLiteral("correct horse 馬");
    user->p_remLgnKey(true);
    EXPECT_FALSE(user->p_remLgnKey()) << "there is no key yet";
    user->p_plainLgnKey(key);
    EXPECT_TRUE(user->CheckLgnKey(key));
    EXPECT_FALSE(user->CheckLgnKey(key.toUpper()));
    EXPECT_FALSE(user->p_remLgnKey());
    user->p_remLgnKey(true);
    ASSERT_TRUE(user->WriteRegistry());
    EXPECT_EQ(readBack(name)->p_plainLgnKey(), key);

    user->p_plainLgnKey(QStringLiteral("second key"));
    ASSERT_TRUE(user->WriteRegistry());
    const auto remembered = readBack(name);
    EXPECT_TRUE(remembered->p_remLgnKey());
    EXPECT_EQ(remembered->p_plainLgnKey(), QStringLiteral("second key"));

    remembered->p_remLgnKey(false);
    EXPECT_FALSE(remembered->p_remLgnKey());
    EXPECT_EQ(remembered->p_plainLgnKey(), QStringLiteral("second key")) << "the session goes on";
    ASSERT_TRUE(remembered->WriteRegistry());
    EXPECT_EQ(readBack(name)->p_plainLgnKey(), QString());
    EXPECT_TRUE(readBack(name)->CheckLgnKey(QStringLiteral("second key")));

    remembered->Clear();
    EXPECT_EQ(
        remembered->p_plainLgnKey() + remembered->p_hashLgnKey() + remembered->p_privateFolder(),
        QString());
    EXPECT_FALSE(remembered->WriteRegistry()) << "a record without a user";
}

TEST_F(UsersTest, BrokenRecordIsRefusedAsAWhole) {
    const auto user = newUser(name);
    user->p_plainLgnKey(QStringLiteral("key"));
    const std::pair<const char*, const char*> faults[] = {
        {"1", "49"}, {"1", "-1"}, {"1", ""}, {"2", ""}, {"2", "AAAA"}, {"3", ""}, {"3", "00FF"}};
    for (const auto& [value, fault] : faults) {
        ASSERT_TRUE(user->WriteRegistry());
        change(name, "4", stored(name, "0"));
        change(name, value, QString::fromLatin1(fault));
        const auto other = newUser(QStringLiteral("other"));
        EXPECT_FALSE(other->ReadRegistry(name)) << value << fault;
        EXPECT_EQ(other->p_userName(), QStringLiteral("other"));
        EXPECT_FALSE(other->p_isKeyChangePending());
    }
    EXPECT_TRUE(prompt.boxes.empty());
}

TEST_F(UsersTest, WhatCannotBeReadIsToldAndKept) {
    const auto user = newUser(name);
    ASSERT_TRUE(user->WriteRegistry());
    ASSERT_TRUE(users.AddUserAsDefault(name));
    ASSERT_TRUE(users.AddUserAsDefault(QStringLiteral("gone")));
    users.InitUsers();
    EXPECT_EQ(users.faults(), QStringList()) << "a user without a record is unknown, not lost";

    change(name, "3", QStringLiteral("00FF"));
    const QByteArray unread = readWholeFile(store.path(), 1 << 20).value();
    users.InitUsers();
    ASSERT_EQ(users.faults().size(), 1);
    EXPECT_TRUE(users.faults().front().contains(name));
    for (int i = 0; i < 2; ++i) {
        ASSERT_TRUE(user->WriteRegistry());
        clock.set(clock.now().addSecs(1));
    }
    const QStringList kept =
        QDir(folders.registry()).entryList({QStringLiteral("registry.record-*")});
    ASSERT_EQ(kept.size(), 1);
    EXPECT_EQ(readWholeFile(folders.registry() + u'/' + kept.front(), 1 << 20), unread);
    users.InitUsers();
    EXPECT_EQ(users.faults(), QStringList());

    replaceFile(store.path(), "damaged");
    users.InitUsers();
    EXPECT_EQ(users.faults().size(), 1);
    ASSERT_TRUE(user->WriteRegistry());
    users.InitUsers();
    const QString aside = store.damagedFiles().value(0);
    ASSERT_EQ(users.faults().size(), 1) << "the others are still out of view";
    EXPECT_TRUE(users.faults().front().contains(aside));
    ASSERT_TRUE(QFile::rename(aside, home.path(QStringLiteral("moved"))));
    EXPECT_EQ(users.faults(), QStringList());
}

TEST_F(UsersTest, ListNamesWhoCanLogIn) {
    for (const char* each : {"b", "a", "gone"}) {
        ASSERT_TRUE(newUser(QString::fromLatin1(each))->WriteRegistry());
        ASSERT_TRUE(users.AddUserAsDefault(QString::fromLatin1(each)));
    }
    ASSERT_TRUE(users.AddUserAsDefault(QStringLiteral("b")));
    ASSERT_TRUE(
        regedit.deleteKey(Regedit::Root::LocalMachine,
                          UserKeyPrefix() + Users::GetHashUserTitle(QStringLiteral("gone"))));
    users.InitUsers();
    EXPECT_EQ(users.names(), QStringList({QStringLiteral("a"), QStringLiteral("b")}));
    EXPECT_EQ(users.p_defaultUserName(), QStringLiteral("b"));
    EXPECT_EQ(loop.turns, 3);
    EXPECT_EQ(users.GetUser(QStringLiteral("A")), nullptr) << "names are exact";

    users.GetUser(QStringLiteral("b"))->p_startupWithOS(true);
    ASSERT_TRUE(users.DeleteUser(QStringLiteral("b")));
    EXPECT_TRUE(users.Exists(QStringLiteral("b"))) << "in memory until removed";
    users.RemoveUser(users.GetUser(QStringLiteral("b")));
    EXPECT_EQ(users.p_defaultUserName(), QString());
    users.InitUsers();
    EXPECT_EQ(users.names(), QStringList(QStringLiteral("a")));
    EXPECT_EQ(users.p_defaultUserName(), QString());
    EXPECT_TRUE(QDir(folders.autostart()).entryList(QDir::Files).isEmpty());
    EXPECT_TRUE(users.DeleteUser(QStringLiteral("nobody")));
}

TEST_F(UsersTest, KeyNamesTellUsersApart) {
    EXPECT_EQ(Users::GetHashUserTitle(QStringLiteral("Demo")),
              QStringLiteral("02805C260AF71A199555424BBC61065B"));
    QStringList titles;
    for (const char16_t* each : {u"王", u"汪", u"Bob", u"bob", u"😀", u"😁", u"??", u"ñ", u"?"}) {
        const QString title = Users::GetHashUserTitle(QString::fromUtf16(each));
        EXPECT_EQ(title.size(), 32);
        EXPECT_FALSE(titles.contains(title));
        titles << title;
    }
}

TEST_F(UsersTest, StartWithTheSessionIsAnEntryThatAnyDesktopReads) {
    const auto user = newUser(QStringLiteral("a \"$`\\%f"));
    user->p_startupWithOS(true);
    const QString path = autostart.path(Users::GetHashUserTitle(user->p_userName()));
    const QString entry = QString::fromUtf8(readWholeFile(path, 4096).value());
    // Quoted and escaped for the command line, then each backslash doubled for the file.
    const QString argument = QStringLiteral(R"(a \\"\\$\\`\\\\%%f)");
    EXPECT_TRUE(entry.contains(QStringLiteral("\nExec=\"/usr/bin/morvane-keeper\" \"") +
                               home.path() + QStringLiteral("/MORV - ") + argument + u'/' +
                               argument + QStringLiteral(".kvdb\"\n")))
        << entry.toStdString();
    EXPECT_TRUE(entry.contains(QStringLiteral("\nName=MORV - a \"$`\\\\%f\n")));
    ASSERT_TRUE(user->WriteRegistry());
    EXPECT_TRUE(readBack(user->p_userName())->p_startupWithOS());
    QFile file(path);  // a desktop's own switch
    ASSERT_TRUE(file.open(QIODevice::Append));
    file.write("Hidden = true\n");
    file.close();
    EXPECT_FALSE(readBack(user->p_userName())->p_startupWithOS());
    user->p_privateFolder(home.path(QStringLiteral("moved/MORV - ")) + user->p_userName());
    ASSERT_TRUE(user->WriteRegistry());
    QString moved = entry + QStringLiteral("Hidden = true\n");
    moved.replace(QStringLiteral("/MORV - "), QStringLiteral("/moved/MORV - "));
    EXPECT_EQ(QString::fromUtf8(readWholeFile(path, 4096).value()), moved);
    user->p_startupWithOS(false);
    ASSERT_TRUE(user->WriteRegistry());
    EXPECT_FALSE(QFile::exists(path));

    QDir(folders.autostart()).removeRecursively();
    QFile inTheWay(folders.autostart());
    ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
    user->p_startupWithOS(true);
    EXPECT_FALSE(user->p_startupWithOS());
    ASSERT_EQ(prompt.boxes.size(), 1U);
    EXPECT_TRUE(prompt.boxes.front().text.contains(QStringLiteral("]cUser.p_startupWithOS:\r\n")));
    EXPECT_EQ(prompt.boxes.front().icon, Prompt::Icon::Exclamation);
}

TEST_F(UsersTest, KilledWhileWritingLeavesAWholeRecord) {
    const auto user = newUser(name);
    ASSERT_TRUE(user->WriteRegistry());
    // scripts/registry_campaign.sh asks for more kills, and for others.
    const int kills = campaignSetting("KEEPER_REGISTRY_KILLS", 25);
    std::mt19937 draw(static_cast<unsigned>(campaignSetting("KEEPER_REGISTRY_SEED", 0)));
    const SharedCount acknowledged;
    int last = 0;
    for (int run = 0; run < kills; ++run) {
        const int call = 1 + static_cast<int>(draw() % 600);
        killedAtSystemCall(call, [&] {
            for (int i = 1; i <= 12; ++i) {
                user->p_usedTimes(static_cast<std::int16_t>(last + i));
                if (!user->WriteRegistry()) {
                    ::_exit(1);
                }
                acknowledged.set(last + i);
            }
        });
        const auto read = readBack(name);
        ASSERT_TRUE(read) << call;
        EXPECT_GE(read->p_usedTimes(), acknowledged.get());
        EXPECT_LE(read->p_usedTimes(), last + 12);
        last = read->p_usedTimes();
    }
    EXPECT_GT(last, kills);
}

TEST_F(UsersTest, SessionFillsTheRecordAndClearsTheFolder) {
    Database database;
    System system(database, prompt, clock);
    EXPECT_EQ(system.p_userName() + system.p_plainLgnKey() + system.p_kvdbFile(), QString());
    EXPECT_FALSE(system.WriteUser());
    const auto user = newUser(name);
    user->p_usedTimes(4);
    user->p_attackTime(clock.now());
    system.setUser(user);
    system.p_plainLgnKey(QStringLiteral("key"));
    system.settings().p_lgnKeyChances0(9);
    system.settings().p_themeBackground(true);
    system.p_lgnKeyTip(QStringLiteral("提示"));
    EXPECT_EQ(user->p_lgnKeyTip(), QStringLiteral("提示"));
    system.RefreshMyUser();
    ASSERT_TRUE(system.WriteUser());
    const auto read = readBack(name);
    EXPECT_EQ(read->p_remainedTimes(), 9);
    EXPECT_FALSE(read->p_attackTime().isValid());
    EXPECT_EQ(read->p_activeTime(), clock.now());
    EXPECT_TRUE(read->p_themeBackground());

    EXPECT_TRUE(system.RepairPrivateFolder());
    EXPECT_TRUE(QFile::exists(system.p_defBGPictures()));
    EXPECT_TRUE(system.ClearUser(false));
    EXPECT_TRUE(QFile::exists(system.p_defEncrypted()));
    EXPECT_TRUE(system.ClearUser(true));
    EXPECT_FALSE(QFile::exists(system.p_privateFolder()));
    EXPECT_TRUE(prompt.boxes.empty());
    user->p_privateFolder(home.path());  // no private folder: nothing is deleted
    EXPECT_FALSE(system.ClearUser(true));
    EXPECT_TRUE(QFile::exists(home.path()));
    EXPECT_TRUE(prompt.takeTexts().value(0).contains(QStringLiteral("]cSystem.ClearUser:\r\n")));
}

}  // namespace
}  // namespace keeper
