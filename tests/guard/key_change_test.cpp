// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

// A change of the login key, and the making of a new user, that a crash or a failing disk cuts
// short. A plain run takes a sample of the system calls; scripts/vault_campaign.sh takes every one.

#include <QDirIterator>
#include <map>

#include "support/campaign_setting.h"
#include "support/killed_child.h"
#include "support/session_fixture.h"
#if defined(__x86_64__)
#include "support/failing_system_call.h"
#endif

namespace keeper {
namespace {

class KeyChangeTest : public SessionTest {
  protected:
    /// A session that crashed with one row that the sealed file lacks.
    void SetUp() override {
        SessionTest::SetUp();
        leaveAndRestart();
        ASSERT_TRUE(program->enter(key));
        program->system.user().p_remLgnKey(true);
        ASSERT_TRUE(program->system.WriteUser());
        program.reset();
        QDirIterator walk(home.path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (walk.hasNext()) {
            const QString path = walk.next();
            m_files[path] = contentOf(path);
        }
    }
    void restore() {
        program.reset();
        QDirIterator walk(home.path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (walk.hasNext()) {
            QFile::remove(walk.next());
        }
        for (const auto& [path, content] : m_files) {
            putContent(path, content);
        }
    }
    bool changeKey() { return program->sealed.SetLgnKey(false, newKey); }
    QStringList copies() const {
        return QDir(program->folders.state + u"/morvane-keeper"_s)
            .entryList({u"*.tmp"_s}, QDir::Files);
    }
    /// Whichever key the record knows: it is the only one, and it opens what the record names.
    void expectOneGoodKey(const std::string& at) {
        restart();
        const auto user = stored();
        ASSERT_TRUE(user) << at;
        const bool isNew = user->CheckLgnKey(newKey);
        EXPECT_NE(user->CheckLgnKey(key), isNew) << at;
        EXPECT_EQ(user->p_plainLgnKey(), isNew ? newKey : key) << "remembered, " << at;
        EXPECT_EQ(user->p_isKeyChangePending(), isNew);
        m_changes += isNew ? 1 : 0;
        EXPECT_TRUE(program->enter(isNew ? newKey : key)) << at << lastText().toStdString();
        EXPECT_TRUE(program->resumed) << at;
        EXPECT_EQ(program->logged(6), 2) << at;
        EXPECT_EQ(copies().size(), 1) << at;
        prompt.takeTexts();
    }
    void crashBehindTheChange() {
        restore();
        restart();
        ASSERT_TRUE(program->enter(key));
        ASSERT_TRUE(changeKey());
        m_copy = program->system.p_tmpFile();
        prompt.takeTexts();
    }

    const QString newKey = u"another key 另一个"_s;
    std::map<QString, QByteArray> m_files;
    QString m_copy;
    int m_changes = 0;
};

TEST_F(KeyChangeTest, KilledAnywhereOneKeyOpensTheAccount) {
    const int step = campaignSetting("KEEPER_CRASH_STEP", 29);
    int call = 1;
    for (bool killed = true; killed && !HasFailure(); call += step) {
        restore();
        killed = killedAtSystemCall(
            call,
            [&] {
                if (!changeKey()) {
                    ::_exit(1);
                }
            },
            [&] {
                restart();
                if (!program->enter(key)) {
                    ::_exit(1);
                }
            });
        expectOneGoodKey("call " + std::to_string(call));
    }
    EXPECT_GT(m_changes, 0);
    EXPECT_GT(call, 3 * step);
    RecordProperty("calls", call);
    ASSERT_TRUE(program->leave());
    EXPECT_FALSE(stored()->p_isKeyChangePending());
    restart();
    EXPECT_FALSE(stored()->CheckLgnKey(key));
    EXPECT_TRUE(program->enter(newKey));
}

#if defined(__x86_64__)

TEST_F(KeyChangeTest, AFailingDiskLeavesOneGoodKey) {
    failEachCall({.errors = {ENOSPC, EIO},
                  .step = campaignSetting("KEEPER_CRASH_STEP", 11),
                  .before = [this] { restore(); },
                  .prepare =
                      [this] {
                          restart();
                          EXPECT_TRUE(program->enter(key));
                      },
                  .work = [this] { return changeKey() && program->connection.isOpen(); },
                  .check =
                      [this](const std::string& at, int answer) {
                          const int changes = m_changes;
                          expectOneGoodKey(at);
                          EXPECT_EQ(m_changes - changes, answer) << at;
                      }});
}

#endif

TEST_F(KeyChangeTest, ALostWorkingCopyNeverCostsTheSealedFile) {
    for (const bool isGone : {true, false}) {
        crashBehindTheChange();
        program.reset();
        if (isGone) {
            ASSERT_TRUE(QFile::remove(m_copy));
        } else {
            putContent(m_copy, QByteArray(8192, 'g'));
        }
        restart();
        prompt.answers = {Prompt::Answer::Yes};
        EXPECT_FALSE(program->enter(newKey));
        EXPECT_TRUE(lastText().contains(u"修改了登录密钥"_s));
        ASSERT_TRUE(QFileInfo::exists(sealedFile) && stored());
        program->system.user().p_remLgnKey(false);
        prompt.answers = {Prompt::Answer::Yes};
        ASSERT_TRUE(program->enter(key)) << lastText().toStdString();
        EXPECT_EQ(program->logged(3), 2);
        EXPECT_TRUE(program->leave());
        restart();
        EXPECT_FALSE(stored()->p_isKeyChangePending());
        EXPECT_FALSE(stored()->CheckLgnKey(newKey));
    }
}

TEST_F(KeyChangeTest, ACrashBetweenSealingAndTheRecordLeavesTheNewKeyGood) {
    crashBehindTheChange();
    program->system.user().p_remLgnKey(false);
    ASSERT_TRUE(program->system.WriteUser());
    ASSERT_TRUE(program->sealed.CryptKVDB(false, 1, true, {}));
    restart();
    EXPECT_FALSE(program->enter(key)) << "the key from before the change";
    EXPECT_TRUE(lastText().contains(u"修改了登录密钥"_s));
    ASSERT_TRUE(program->enter(newKey)) << lastText().toStdString();
    EXPECT_FALSE(stored()->p_isKeyChangePending());
}

TEST_F(KeyChangeTest, ARecordThatCannotBeWrittenLeavesTheOldKey) {
    restore();
    restart();
    ASSERT_TRUE(program->enter(key));
    prompt.takeTexts();
    const QString copy = program->system.p_tmpFile();
    const QString lock = program->folders.registry() + u"/registry.lock"_s;
    const auto obstruct = [&] { return QFile::remove(lock) && QDir().mkdir(lock); };
    ASSERT_TRUE(obstruct());
    EXPECT_FALSE(changeKey());
    EXPECT_TRUE(lastText().contains(u"登录密钥没有修改"_s));
    QDir().rmdir(lock);
    EXPECT_EQ(program->system.p_tmpFile(), copy);
    EXPECT_EQ(copies().size(), 1);
    EXPECT_TRUE(program->system.user().CheckLgnKey(key));
    ASSERT_TRUE(program->leave());
    restart();
    ASSERT_TRUE(obstruct());
    ASSERT_TRUE(program->enter(key));
    EXPECT_TRUE(lastText().endsWith(program->system.p_tmpFile())) << "a crash would lose the way";
    QDir().rmdir(lock);
}

TEST_F(KeyChangeTest, ABackupFromBeforeTheChangeIsNotDestroyedByTheKeyOfToday) {
    restore();
    restart();
    ASSERT_TRUE(program->enter(key));
    ASSERT_TRUE(program->leave());
    const QByteArray backup = contentOf(sealedFile);
    restart();
    ASSERT_TRUE(program->enter(key));
    ASSERT_TRUE(changeKey());
    program->system.user().p_remLgnKey(true);
    program->system.user().p_autoLogin(true);
    ASSERT_TRUE(program->leave());
    restart();
    putContent(sealedFile, backup);
    program->login.activate();
    EXPECT_TRUE(lastText().contains(u"它的登录密钥不同"_s)) << "nobody was asked for a key";
    EXPECT_EQ(program->login.m_result(), Login::Result::End);
    prompt.answers = {Prompt::Answer::No};
    program->typeAndLogIn(newKey);
    EXPECT_TRUE(lastText().startsWith(u"本机没有登录过这个密码数据库"_s));
    EXPECT_EQ(contentOf(sealedFile), backup);
    prompt.answers = {Prompt::Answer::Yes};
    program->typeAndLogIn(key);
    EXPECT_EQ(program->login.m_result(), Login::Result::LogIn);
    ASSERT_TRUE(program->road.ConnectDatabase(program->resumed)) << lastText().toStdString();
    program->road.RecordLogin(program->resumed);
    ASSERT_TRUE(program->leave());
    restart();
    ASSERT_TRUE(program->enter(key));
}

/// A home without a user.
class NewUserTest : public SessionTest {
  protected:
    void SetUp() override {}
    void empty() {
        program.reset();
        QDir(home.path(u"home"_s)).removeRecursively();
        QDir().mkpath(home.path(u"home"_s));
    }
    [[nodiscard]] QStringList filesOf(const QString& pattern) const {
        QStringList found;
        QDirIterator walk(home.path(), {pattern}, QDir::Files | QDir::Hidden,
                          QDirIterator::Subdirectories);
        while (walk.hasNext()) {
            found << walk.next();
        }
        return found;
    }
    /// A user that is recorded enters; one that is not leaves nothing that the next one meets.
    void expectWholeOrNothing(const std::string& at) {
        restart();
        const bool isStored = stored() != nullptr;
        m_stored += isStored ? 1 : 0;
        if (isStored && !program->users.Exists(name)) {
            // The list of names is written by itself; opening the file in the login form adds it.
            program->users.AddUserAsDefault(name);
            restart();
        }
        if (isStored) {
            EXPECT_TRUE(program->enter(key)) << at << lastText().toStdString();
            EXPECT_GE(program->logged(3) + program->logged(6), 1) << at;
        } else {
            EXPECT_TRUE(program->build(u"另一人"_s, key)) << at;
            EXPECT_EQ(filesOf(u"*.tmp"_s).size(), 1) << at;
        }
        EXPECT_TRUE(program->leave()) << at;
        restart();
        EXPECT_EQ(filesOf(u"*.tmp*"_s), QStringList()) << at;
        prompt.takeTexts();
    }

    int m_stored = 0;
};

TEST_F(NewUserTest, KilledAnywhereAUserIsWholeOrUnknown) {
    const int step = campaignSetting("KEEPER_CRASH_STEP", 61);
    int call = 1;
    for (bool killed = true; killed && !HasFailure(); call += step) {
        empty();
        killed = killedAtSystemCall(
            call,
            [this] {
                if (!program->build(name, key)) {
                    ::_exit(1);
                }
            },
            [this] { restart(); });
        expectWholeOrNothing("call " + std::to_string(call));
    }
    EXPECT_GT(m_stored, 0);
    EXPECT_GT(call, 3 * step);
    RecordProperty("calls", call);
}

#if defined(__x86_64__)

TEST_F(NewUserTest, AFailingDiskLeavesAUserWholeOrUnknown) {
    failEachCall({.errors = {ENOSPC},
                  .step = campaignSetting("KEEPER_CRASH_STEP", 17),
                  .before = [this] { empty(); },
                  .prepare = [this] { restart(); },
                  .work = [this] { return program->build(name, key) && program->leave(); },
                  .check =
                      [this](const std::string& at, int answer) {
                          if (answer == 0) {
                              EXPECT_EQ(filesOf(u"*.kvdb"_s), QStringList()) << at;
                          }
                          const int before = m_stored;
                          expectWholeOrNothing(at);
                          EXPECT_EQ(m_stored - before, answer) << at;
                      }});
}

#endif

}  // namespace
}  // namespace keeper
