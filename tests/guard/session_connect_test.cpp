// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

// What becomes of a database that is refused, and of one that merely cannot be read.

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>

#include "store/sealed_file.h"
#include "support/session_fixture.h"

namespace keeper {
namespace {

enum class Fate { Kept, FileDestroyed, FolderDestroyed };

class ConnectTest : public SessionTest {
  protected:
    /// Ends the session by sealing alone, so that the end does not write settings over an edit.
    void sealAsIs() {
        User& user = program->system.user();
        user.p_activeFile(QString());
        ASSERT_TRUE(program->sealed.CryptKVDB(false, 1, true, {}) && user.WriteRegistry());
    }
    void edit(const char* sql) {
        program->connection.execute("PRAGMA ignore_check_constraints=ON");
        program->connection.execute(sql);
        program->connection.execute("PRAGMA ignore_check_constraints=OFF");
        sealAsIs();
        restart();
    }
    /// A login that is refused with the number, after which the files are as told.
    void expectRefusal(int number, Prompt::Icon icon, Fate fate) {
        EXPECT_FALSE(program->enter(key));
        ASSERT_FALSE(prompt.boxes.empty());
        const ScriptedPrompt::Shown box = prompt.boxes.back();
        prompt.boxes.clear();
        EXPECT_TRUE(box.text.startsWith(u"[%1]"_s.arg(number))) << box.text.toStdString();
        EXPECT_EQ(box.icon, icon);
        expectFate(fate);
        EXPECT_GT(program->display.closed, 0);
    }
    void expectFate(Fate fate) {
        EXPECT_EQ(QFileInfo::exists(sealedFile), fate == Fate::Kept);
        EXPECT_EQ(QFileInfo::exists(folder), fate != Fate::FolderDestroyed);
        EXPECT_EQ(stored() != nullptr, fate == Fate::Kept);
        EXPECT_EQ(program->users.Exists(name), fate == Fate::Kept);
        EXPECT_EQ(workingCopies(), QStringList());
        EXPECT_EQ(QDir(stateFolder()).entryList({u"destruction*.json"_s}), QStringList());
    }
    [[nodiscard]] QString stateFolder() const {
        return program->folders.state + u"/morvane-keeper"_s;
    }
    [[nodiscard]] QString notePath() const { return stateFolder() + u"/destruction.json"_s; }
    [[nodiscard]] QStringList workingCopies() const {
        return QDir(stateFolder()).entryList({u"*.tmp*"_s}, QDir::Files);
    }
    void expectLoginWorks() {
        restart();
        EXPECT_TRUE(program->enter(key)) << prompt.takeTexts().join(u'|').toStdString();
        prompt.boxes.clear();
    }
};

TEST_F(ConnectTest, AnExpiredBranchAndAClockSetBackAreRefusedAndResealed) {
    sealAsIs();
    const QString disk = machine.disk;
    machine.disk = u"OTHER"_s;
    clock.advanceDays(100);
    restart();
    expectRefusal(1, Prompt::Icon::Exclamation, Fate::Kept);

    machine.disk = disk;
    expectLoginWorks();
    EXPECT_EQ(program->logged(1), 1);
    sealAsIs();
    clock.advanceDays(-2);
    restart();
    expectRefusal(3, Prompt::Icon::Critical, Fate::Kept);
    clock.advanceDays(2);
    expectLoginWorks();
    EXPECT_EQ(program->logged(2), 1);
}

TEST_F(ConnectTest, ADatabaseOfAnotherMainVersionIsRefusedAndResealed) {
    ASSERT_TRUE(program->leave());
    program = std::make_unique<SessionProgram>(clock, prompt, machine, u"4.0.0"_s);
    expectRefusal(2, Prompt::Icon::Exclamation, Fate::Kept);
    expectLoginWorks();
}

TEST_F(ConnectTest, AMissingSettingDestroysTheFileAndKeepsTheFolder) {
    edit("DELETE FROM tb_TypeBoolean WHERE rowNo=1");
    expectRefusal(4, Prompt::Icon::Critical, Fate::FileDestroyed);
}

TEST_F(ConnectTest, AMissingGuardDestroysTheFileAndKeepsTheFolder) {
    edit("DELETE FROM tb_SWProtect");
    expectRefusal(4, Prompt::Icon::Critical, Fate::FileDestroyed);
}

TEST_F(ConnectTest, AConfinedDatabaseOnAForeignMachineIsDestroyed) {
    ASSERT_TRUE(program->guard.LockOntoBrch(true));
    sealAsIs();
    expectLoginWorks();
    sealAsIs();
    machine.disk = u"OTHER"_s;
    restart();
    expectRefusal(5, Prompt::Icon::Critical, Fate::FolderDestroyed);
}

TEST_F(ConnectTest, AGuardEditedByHandIsDestroyed) {
    edit("UPDATE tb_SWProtect SET [02]='9.9.9'");
    expectRefusal(6, Prompt::Icon::Critical, Fate::FolderDestroyed);
}

TEST_F(ConnectTest, AForgedHashWithAWrongKeyDestroysAndSaysSo) {
    sealAsIs();
    const auto forged = stored();
    forged->p_hashLgnKey(Cryptor2::hashString(u"other key"_s));
    ASSERT_TRUE(forged->WriteRegistry());
    restart();
    EXPECT_FALSE(program->enter(u"other key"_s));
    EXPECT_EQ(
        prompt.takeTexts(),
        QStringList{
            u"[7]解密失败:\r\n登录密钥错误！\r\n由于您的登录行为异常，本密码数据库及私人文件夹"
            "已被紧急销毁。"_s});
    expectFate(Fate::FolderDestroyed);
    EXPECT_EQ(program->display.modes.size(), 2U) << "both schemes were tried";
}

TEST_F(ConnectTest, AFileThatCannotBeReadIsToldAndLeftAsItIs) {
    sealAsIs();
    const QByteArray whole = contentOf(sealedFile);
    const QString aside = home.path(u"aside"_s);
    for (const char* fault : {"cut", "empty", "folder", "gone"}) {
        SCOPED_TRACE(fault);
        const QByteArray which(fault);
        restart();
        program->login.activate();
        program->typeAndLogIn(key);
        ASSERT_EQ(program->login.m_result(), Login::Result::LogIn);
        const QByteArray damaged = which == "cut" ? whole.chopped(7) : QByteArray();
        if (which == "folder" || which == "gone") {
            ASSERT_TRUE(QFile::rename(sealedFile, aside));
            ASSERT_TRUE(which == "gone" || QDir().mkdir(sealedFile));
        } else {
            putContent(sealedFile, damaged);
        }
        EXPECT_FALSE(program->road.ConnectDatabase(program->resumed));
        EXPECT_FALSE(prompt.takeTexts().isEmpty());
        EXPECT_TRUE(stored());
        EXPECT_TRUE(QFileInfo(folder).isDir());
        EXPECT_EQ(workingCopies(), QStringList());
        if (which == "folder" || which == "gone") {
            ASSERT_TRUE(which == "gone" || QDir().rmdir(sealedFile));
            ASSERT_TRUE(QFile::rename(aside, sealedFile));
        } else {
            EXPECT_EQ(contentOf(sealedFile), damaged);
            putContent(sealedFile, whole);
        }
    }
    expectLoginWorks();
}

TEST_F(ConnectTest, ADamagedPageInsideIsToldAndNothingIsDeleted) {
    program->connection.close();
    QByteArray inner = contentOf(program->system.p_tmpFile());
    ASSERT_GT(inner.size(), 3 * 4096);
    inner[2 * 4096 + 100] = static_cast<char>(inner.at(2 * 4096 + 100) ^ 1);
    putContent(program->system.p_tmpFile(), inner);
    sealFile(program->cipher, program->system.p_tmpFile(), sealedFile,
             program->sealed.GetCryptLgnKey(false, key), program->random);
    program->sealed.DiscardWorkingCopy();
    const QByteArray sealedBytes = contentOf(sealedFile);
    restart();
    expectRefusal(8, Prompt::Icon::Exclamation, Fate::Kept);
    EXPECT_EQ(contentOf(sealedFile), sealedBytes);
}

TEST_F(ConnectTest, AnAbnormalEndIsHealedByTheWorkingCopy) {
    SysLog row;
    row.m_statusNo = 54;
    row.m_dateTime = clock.now();
    ASSERT_TRUE(program->logs.Add(row));
    restart();
    ASSERT_TRUE(program->enter(key));
    EXPECT_TRUE(program->resumed);
    EXPECT_TRUE(lastText().endsWith(u" 登录后异常退出，现管理器已为您恢复。"_s));
    EXPECT_EQ(program->logged(54), 1);
    EXPECT_EQ(program->logged(6), 1);
    EXPECT_EQ(program->logged(3), 1);
    EXPECT_TRUE(program->display.modes.empty());
    EXPECT_EQ(program->display.closed, 0);
    sealAsIs();
    expectLoginWorks();
    EXPECT_FALSE(program->resumed);
    EXPECT_EQ(program->logged(54), 1);
}

TEST_F(ConnectTest, ADatabaseInUseIsLeftToItsHolder) {
    const auto first = std::move(program);
    restart();
    EXPECT_FALSE(program->enter(key));
    EXPECT_EQ(prompt.takeTexts(), QStringList{u"[%1]:该密码数据库已被占用！"_s.arg(sealedFile)});
    program->login.load();
    first->sealed.ReleaseSealedFile();
    EXPECT_FALSE(program->enter(key));
    EXPECT_TRUE(prompt.boxes.at(0).text.startsWith(u"[8]"_s));
    EXPECT_EQ(prompt.takeTexts().size(), 1);
    EXPECT_TRUE(QFileInfo::exists(first->system.p_tmpFile()));
    EXPECT_TRUE(stored());
    EXPECT_TRUE(first->leave());
    EXPECT_EQ(prompt.takeTexts(), QStringList());
    expectLoginWorks();
}

TEST_F(ConnectTest, AWorkingCopyThatDoesNotOpenIsKeptWhateverTheAnswer) {
    const QString copy = program->system.p_tmpFile();
    const QByteArray garbage(8192, 'g');
    program->connection.close();
    putContent(copy, garbage);
    for (const auto answer : {Prompt::Answer::No, Prompt::Answer::Yes}) {
        restart();
        prompt.answers = {answer};
        EXPECT_EQ(program->enter(key), answer == Prompt::Answer::Yes);
        EXPECT_TRUE(prompt.takeTexts().value(0).contains(copy));
        EXPECT_EQ(contentOf(copy), garbage);
        EXPECT_TRUE(stored());
        EXPECT_TRUE(QFileInfo::exists(sealedFile));
    }
}

TEST_F(ConnectTest, AnInterruptedDestructionIsFinishedAndAnUnsoundNoteDeletesNothing) {
    const QString copy = program->system.p_tmpFile();
    const QString precious = home.path(u"precious.txt"_s);
    putContent(precious, "x");
    const QJsonObject sound{{u"user"_s, name},
                            {u"privateFolder"_s, folder},
                            {u"sealedFile"_s, sealedFile},
                            {u"workingCopy"_s, copy},
                            {u"deletesFolder"_s, true}};
    const std::pair<const char*, QString> faults[] = {{"user", u"别人"_s},
                                                      {"user", QString()},
                                                      {"privateFolder", home.path()},
                                                      {"sealedFile", precious},
                                                      {"workingCopy", precious}};
    for (const auto& [field, value] : faults) {
        QJsonObject unsound = sound;
        unsound[QString::fromLatin1(field)] = value;
        putContent(notePath(), QJsonDocument(unsound).toJson());
        restart();
        EXPECT_TRUE(QFileInfo::exists(copy) && QFileInfo::exists(precious)) << field;
        EXPECT_TRUE(QFileInfo::exists(sealedFile) && stored()) << field;
        EXPECT_FALSE(QFileInfo::exists(notePath())) << field;
    }
    putContent(notePath(), "{not json");
    restart();
    EXPECT_TRUE(QFileInfo::exists(sealedFile) && stored());

    putContent(copy + u"-journal"_s, "x");
    const QString rekeyed = copy.chopped(4) + u"-0123456789abcdef.tmp"_s;
    putContent(rekeyed, "x");
    for (const char* identity : {"1:2:3.4", "none"}) {
        QJsonObject replaced = sound;
        replaced[u"sealedIdentity"_s] = QString::fromLatin1(identity);
        replaced[u"workingCopy"_s] = QString();
        putContent(notePath(), QJsonDocument(replaced).toJson());
        restart();
        EXPECT_TRUE(lastText().contains(u"此后已换成另一个文件"_s));
        EXPECT_TRUE(QFileInfo::exists(sealedFile)) << "a backup that somebody has put there";
    }

    QJsonObject changed = sound;
    changed[u"workingCopy"_s] = rekeyed;
    // What cannot be deleted keeps nothing else from it, and is tried again.
    ASSERT_TRUE(QFile::remove(sealedFile) && QDir().mkdir(sealedFile));
    putContent(notePath(), QJsonDocument(changed).toJson());
    restart();
    EXPECT_TRUE(lastText().contains(u"]cSystem.ClearUser:\r\n"_s));
    EXPECT_TRUE(QFileInfo::exists(notePath()));
    EXPECT_FALSE(QFileInfo::exists(folder) || QFileInfo::exists(copy) ||
                 QFileInfo::exists(rekeyed));
    restart();
    EXPECT_TRUE(lastText().contains(u"现已完成"_s));
    expectFate(Fate::FolderDestroyed);
    EXPECT_TRUE(QFileInfo::exists(precious));
}

TEST_F(ConnectTest, ADestructionForgetsNoUserOfAnotherFolderThatIsAwayToo) {
    const QString away = home.path(u"drive"_s);
    ASSERT_TRUE(QDir().rename(folder, away));
    const QString disk = home.path(u"another-drive"_s);
    const QString other = disk + u'/' + QFileInfo(folder).fileName();
    putContent(notePath(),
               QJsonDocument(
                   QJsonObject{{u"user"_s, name},
                               {u"privateFolder"_s, other},
                               {u"sealedFile"_s, other + u'/' + QFileInfo(sealedFile).fileName()}})
                   .toJson());
    restart();
    EXPECT_TRUE(prompt.boxes.empty()) << "the disk of the destroyed one is not there now";
    QDir().mkpath(disk);
    restart();
    EXPECT_TRUE(lastText().contains(u"现已完成"_s));
    EXPECT_TRUE(stored());
    EXPECT_TRUE(QDir().rename(away, folder));
    prompt.boxes.clear();
}

TEST_F(ConnectTest, ADestructionTakesTheCrashedCopyToo) {
    const QString crashed = program->system.p_tmpFile();
    restart();
    const auto user = program->users.GetUser(name);
    user->p_plainLgnKey(u"forged-key"_s);
    EXPECT_TRUE(user->WriteRegistry());
    restart();
    // The copy does not open under the forged key; the person goes on without it.
    prompt.answers = {Prompt::Answer::Yes};
    EXPECT_FALSE(program->enter(u"forged-key"_s));
    EXPECT_FALSE(QFileInfo::exists(crashed));
    expectFate(Fate::FolderDestroyed);
}

}  // namespace
}  // namespace keeper
