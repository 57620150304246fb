// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

// Login, wizard and their round trip. KEEPER_NEAR_MISSES sets the number of wrong keys tried.

#include <QDir>

#include "platform/file_hold.h"
#include "support/campaign_setting.h"
#include "support/file_size_limit.h"
#include "support/session_fixture.h"

namespace keeper {
namespace {

using Result = Login::Result;

TEST_F(SessionTest, FromTheWizardToTheSecondLoginNothingIsLost) {
    EXPECT_FALSE(program->resumed);
    EXPECT_EQ(program->logged(3), 1);
    EXPECT_EQ(stored()->p_activeFile(), program->system.p_tmpFile());
    EXPECT_TRUE(program->end.requestClose(CloseReason::User, AutoExit::None));
    EXPECT_FALSE(QFileInfo::exists(program->system.p_tmpFile()));
    EXPECT_EQ(stored()->p_activeFile(), QString());

    restart();
    EXPECT_EQ(program->login.state().userNames, QStringList{name});
    ASSERT_TRUE(program->enter(key)) << lastText().toStdString();
    EXPECT_FALSE(program->resumed);
    EXPECT_FALSE(program->road.g_keySchemeV2());
    EXPECT_EQ(program->logged(3), 2);
    EXPECT_EQ(program->logged(13), 1);
    EXPECT_EQ(program->users.p_defaultUserName(), name);
}

TEST_F(SessionTest, TheEarlierKeySchemeOpensWhicheverLayerWearsIt) {
    for (const bool isOuterEarlier : {true, false}) {
        // The login takes an earlier password away, also where no version is to be raised.
        program->connection.rekey(SealedDatabase::GetAccessDBSec(false, key),
                                  SealedDatabase::GetAccessDBSec(true, key),
                                  home.path() + u"/moving"_s);
        ASSERT_TRUE(program->sealed.CryptKVDB(isOuterEarlier, static_cast<int>(CryptMode::Seal),
                                              true, QString()));
        program->system.user().p_sealedMark(program->sealed.p_sealedMark());
        ASSERT_TRUE(program->system.WriteUser());
        restart();
        ASSERT_TRUE(program->enter(key)) << lastText().toStdString();
        EXPECT_FALSE(program->resumed);
        EXPECT_TRUE(program->road.g_keySchemeV2());
        EXPECT_EQ(program->logged(3), isOuterEarlier ? 2 : 3);
    }
}

TEST_F(SessionTest, ADatabaseOfTheSameNameInAnotherFolderIsJudgedByItself) {
    const QString other = home.path(u"elsewhere/"_s) + QFileInfo(folder).fileName();
    restart();
    QDir().mkpath(other);
    program->login.setStartFolder(other);
    program->login.activate();
    EXPECT_TRUE(lastText().contains(u"其工作副本属于另一个私人文件夹"_s));
    EXPECT_EQ(stored()->p_privateFolder(), folder);
    ASSERT_TRUE(program->enter(key));
    prompt.boxes.clear();
    leaveAndRestart();

    QFile::copy(sealedFile, other + QLatin1Char('/') + QFileInfo(sealedFile).fileName());
    program->login.setStartFolder(other);
    prompt.answers = {Prompt::Answer::No};
    program->login.activate();
    program->typeAndLogIn(u"wrong key"_s);
    EXPECT_TRUE(lastText().startsWith(u"本机没有登录过这个密码数据库"_s));
    EXPECT_EQ(program->login.m_result(), Result::End) << "a refused blind test tries nothing";
    program->login.lookAt(sealedFile);
    prompt.answers = {Prompt::Answer::Yes};
    program->typeAndLogIn(u"wrong key"_s);
    EXPECT_EQ(lastText(), u"登录密钥错误！是否再试一次？"_s) << "back where the key is known";
    program->login.lookAt(other + QLatin1Char('/') + QFileInfo(sealedFile).fileName());
    prompt.answers = {Prompt::Answer::Yes, Prompt::Answer::Yes};
    program->typeAndLogIn(u"no key \U0001F511"_s);
    EXPECT_EQ(stored()->p_privateFolder(), folder) << "what is known of the other one stays";
    prompt.answers = {Prompt::Answer::Yes};
    ASSERT_TRUE(program->enter(key)) << lastText().toStdString();
    EXPECT_EQ(stored()->p_privateFolder(), other);
    EXPECT_TRUE(QFileInfo::exists(sealedFile));
}

TEST_F(SessionTest, APrivateFolderThatWasMovedTakesAllThatIsKnownAlong) {
    const QString other = home.path(u"moved/"_s) + QFileInfo(folder).fileName();
    restart();  // by a crash
    QDir().mkpath(QFileInfo(other).path());
    ASSERT_TRUE(QDir().rename(folder, other));
    program->login.setStartFolder(other);
    prompt.answers = {Prompt::Answer::No};
    program->login.activate();
    EXPECT_TRUE(lastText().contains(u"其私人文件夹已不在原处"_s));
    EXPECT_EQ(stored()->p_privateFolder(), folder);
    restart();
    program->login.setStartFolder(other);
    prompt.answers = {Prompt::Answer::Yes, Prompt::Answer::Yes};
    program->login.activate();
    program->typeAndLogIn(u"wrong key"_s);
    EXPECT_EQ(lastText(), u"登录密钥错误！是否再试一次？"_s) << "no blind test";
    ASSERT_TRUE(program->enter(key)) << lastText().toStdString();
    EXPECT_TRUE(program->resumed);
    EXPECT_EQ(program->logged(6), 1);
    prompt.boxes.clear();
    leaveAndRestart();
    EXPECT_EQ(stored()->p_privateFolder(), other);

    // Nothing is left but the working copy: it opens, and its sealing makes the folder again.
    ASSERT_TRUE(program->enter(key));
    restart();
    ASSERT_TRUE(QDir(other).removeRecursively());
    ASSERT_TRUE(program->enter(key)) << lastText().toStdString();
    EXPECT_TRUE(program->leave());
    EXPECT_TRUE(QFileInfo(program->system.p_kvdbFile()).isFile());
}

TEST_F(SessionTest, WrongKeysAreCountedExactlyUntilTheBan) {
    leaveAndRestart();
    Login* login = &program->login;
    login->activate();
    EXPECT_EQ(login->state().chancesText, u"您有10次登录尝试机会"_s);
    for (int used = 1; used <= 10; ++used) {
        // Another start reads what the last one has counted.
        restart();
        login = &program->login;
        login->activate();
        const int left = 11 - used;
        EXPECT_EQ(login->state().chancesText,
                  u"您%1有%2次登录尝试机会"_s.arg(left <= 3 ? u"还"_s : QString(),
                                                  QString::number(left)));
        EXPECT_EQ(login->state().chancesTone == LoginState::Tone::Warning, left <= 3);
        prompt.answers = {Prompt::Answer::Yes};
        program->typeAndLogIn(u"wrong key"_s);
        EXPECT_EQ(lastText(), u"登录密钥错误！是否再试一次？"_s);
        EXPECT_FALSE(login->isClosed());
        ASSERT_EQ(stored()->p_usedTimes(), used);
        EXPECT_EQ(stored()->p_attackTime().isValid(), used == 10);
    }
    const QDateTime ban = clock.now();
    struct Moment {
        qint64 seconds;
        bool isBanned;
        bool letsIn;
        const char* text;
    };
    const Moment moments[] = {{-1, true, false, "操作系统日期时间有误！"},
                              {0, false, false, nullptr},
                              {1, true, false, "后再试"},
                              {86'400, true, false, "后再试"},
                              {86'401, false, true, nullptr}};
    for (const Moment& moment : moments) {
        clock.set(ban.addSecs(moment.seconds));
        restart();
        program->login.activate();
        EXPECT_EQ(program->login.IsBanned(), moment.isBanned) << moment.seconds;
        if (moment.text != nullptr) {
            EXPECT_TRUE(
                program->login.state().chancesText.contains(QString::fromUtf8(moment.text)));
        }
        program->typeAndLogIn(key);
        EXPECT_EQ(program->login.m_result() == Result::LogIn, moment.letsIn) << moment.seconds;
        EXPECT_EQ(program->login.state().chancesTone == LoginState::Tone::Refused, !moment.letsIn);
        EXPECT_EQ(stored()->p_usedTimes(), 10);
    }
    ASSERT_TRUE(program->road.ConnectDatabase(program->resumed));
    program->road.ReportAfterLogin(false);
    program->road.RecordLogin(false);
    EXPECT_EQ(prompt.takeTexts().size(), 1) << "the ban is told, and nothing else";
    EXPECT_EQ(program->logged(5), 1);
    EXPECT_EQ(program->logged(4), 0);
    EXPECT_EQ(stored()->p_usedTimes(), 0);
    EXPECT_FALSE(stored()->p_attackTime().isValid());
}

TEST_F(SessionTest, FailedAttemptsAreToldAndSettledByTheNextLogin) {
    leaveAndRestart();
    program->login.activate();
    prompt.answers = {Prompt::Answer::Yes, Prompt::Answer::No};
    program->typeAndLogIn(u"wrong key"_s);
    program->typeAndLogIn(u"wrong key"_s);
    EXPECT_TRUE(program->login.isClosed());
    EXPECT_EQ(program->login.m_result(), Result::End);
    EXPECT_EQ(stored()->p_usedTimes(), 2);
    restart();
    prompt.boxes.clear();
    ASSERT_TRUE(program->enter(key));
    EXPECT_EQ(prompt.takeTexts().size(), 1);
    EXPECT_EQ(program->logged(4), 1);
    EXPECT_EQ(stored()->p_usedTimes(), 0);
}

TEST_F(SessionTest, NoNearMissOfTheKeyPassesAndEachIsCounted) {
    const int rounds = campaignSetting("KEEPER_NEAR_MISSES", 100);
    leaveAndRestart();
    program->login.activate();
    // Room for all of them before the ban.
    program->users.GetUser(name)->p_lgnKeyChances0(32767);
    QString fullWidth = key;
    fullWidth.replace(u'1', QChar(0xFF11));
    const QStringList shapes{
        key.toUpper(), key.toLower(),  key.normalized(QString::NormalizationForm_D),
        fullWidth,     key.chopped(1), key + QChar(0),
        u' ' + key};
    for (int i = 0; i < rounds; ++i) {
        QString miss = shapes.at(i % shapes.size());
        if (i >= shapes.size()) {
            miss = i % 2 == 0 ? key + QString(i, u' ') : key;
            if (i % 2 != 0) {
                QChar& unit = miss[i % miss.size()];
                unit = QChar(unit.unicode() ^ (1U << (static_cast<unsigned>(i) % 16)));
            }
        }
        prompt.answers = {Prompt::Answer::Yes};
        program->typeAndLogIn(miss);
        ASSERT_FALSE(program->login.isClosed()) << i << " passes: " << miss.toStdString();
        ASSERT_EQ(prompt.takeTexts(), QStringList{u"登录密钥错误！是否再试一次？"_s});
    }
    EXPECT_EQ(stored()->p_usedTimes(), rounds);
    program->typeAndLogIn(key);
    EXPECT_EQ(program->login.m_result(), Result::LogIn);
}

TEST_F(SessionTest, AKeyWithCharactersOutsideTheCodePageIsNotTheOneWithQuestionMarks) {
    leaveAndRestart();
    program->login.activate();
    const auto user = program->users.GetUser(name);
    user->p_plainLgnKey(u"ab?123"_s);
    EXPECT_TRUE(user->CheckLgnKey(u"ab?123"_s));
    EXPECT_FALSE(user->CheckLgnKey(u"ab\u00f1123"_s));
}

TEST_F(SessionTest, NobodyTriesOnWhereFailedAttemptsCannotBeCounted) {
    leaveAndRestart();
    program->login.activate();
    {
        const FileSizeLimit full(0);
        program->typeAndLogIn(u"wrong key"_s);
    }
    EXPECT_TRUE(lastText().contains(u"失败次数无法记录"_s));
    EXPECT_TRUE(program->login.isClosed());
    EXPECT_EQ(program->login.m_result(), Result::End);
}

TEST_F(SessionTest, ARememberedKeyAndAutoLoginNeedNoTyping) {
    leaveAndRestart();
    program->login.activate();
    program->login.setAutoLogin(true);
    EXPECT_TRUE(program->login.state().remLgnKey) << "auto login needs the key";
    ASSERT_TRUE(program->enter(key));
    prompt.boxes.clear();
    leaveAndRestart();
    program->login.setStartFolder(home.path(u"nowhere/MORV - Bob"_s));
    program->login.activate();
    EXPECT_EQ(lastText(), u"用户【Bob】不存在。"_s);
    EXPECT_FALSE(program->login.isClosed()) << "not the database that was asked for";
    restart();
    program->login.activate();
    EXPECT_EQ(program->login.m_result(), Result::LogIn);
    ASSERT_TRUE(program->road.ConnectDatabase(program->resumed));
    program->road.RecordLogin(false);
    program->system.user().p_autoLogin(false);
    leaveAndRestart();
    EXPECT_EQ(program->login.activate(), Login::Focus::RememberKey);
    EXPECT_EQ(program->login.state().keyText, u"*"_s);
    EXPECT_FALSE(program->login.isClosed());
    program->login.setRemLgnKey(false);
    EXPECT_FALSE(program->login.state().autoLogin);
    program->login.OnLoginClicked();
    ASSERT_TRUE(program->road.ConnectDatabase(program->resumed));
    program->road.RecordLogin(false);
    EXPECT_FALSE(stored()->p_remLgnKey());
}

TEST_F(SessionTest, WhatAnotherInstanceHasWrittenIsFollowedBeforeAKeyIsCheckedOrCounted) {
    leaveAndRestart();
    program->login.activate();
    const auto elsewhere = stored();
    elsewhere->p_usedTimes(4);
    elsewhere->p_plainLgnKey(u"newer key"_s);
    elsewhere->p_activeFile(u"/left/by/a/crash"_s);
    ASSERT_TRUE(elsewhere->WriteRegistry());
    prompt.answers = {Prompt::Answer::Yes};
    program->typeAndLogIn(key);
    EXPECT_EQ(lastText(), u"登录密钥错误！是否再试一次？"_s) << "the former key would destroy";
    EXPECT_EQ(stored()->p_usedTimes(), 5);
    EXPECT_EQ(stored()->p_activeFile(), u"/left/by/a/crash"_s);

    // Blind characters for a key that has changed since stand for nothing.
    elsewhere->p_remLgnKey(true);
    ASSERT_TRUE(elsewhere->WriteRegistry());
    program->login.load();
    program->login.activate();
    EXPECT_EQ(program->login.state().keyText, u"*"_s);
    elsewhere->p_plainLgnKey(u"newest key"_s);
    elsewhere->p_remLgnKey(false);
    ASSERT_TRUE(elsewhere->WriteRegistry());
    program->login.OnLoginClicked();
    EXPECT_TRUE(lastText().contains(u"已在别处更改"_s));
    EXPECT_EQ(program->login.state().keyText, QString());
    program->typeAndLogIn(u"newest key"_s);
    EXPECT_EQ(program->login.m_result(), Result::LogIn);
}

TEST_F(SessionTest, ADatabaseThatThisMachineHasNotSeenIsTestedByUnsealing) {
    leaveAndRestart();
    ASSERT_TRUE(program->users.DeleteUser(name));
    for (const bool byDialog : {false, true}) {
        restart();
        EXPECT_TRUE(program->login.state().userNames.isEmpty());
        if (byDialog) {
            prompt.paths = {sealedFile};
            program->login.activate();
            program->login.cmdOpen();
        } else {
            program->login.setStartFolder(folder);
            program->login.activate();
        }
        EXPECT_EQ(program->login.state().userNames, QStringList{name});
        EXPECT_EQ(program->login.state().pathText, sealedFile);
    }
    // A wrong key would destroy: that is said first, and No goes back to the form.
    program->login.setAutoLogin(true);
    for (const auto answer : {Prompt::Answer::No, Prompt::Answer::Yes}) {
        prompt.answers = {answer};
        program->typeAndLogIn(key);
        EXPECT_TRUE(lastText().startsWith(u"本机没有登录过这个密码数据库"_s));
        ASSERT_EQ(program->login.isClosed(), answer == Prompt::Answer::Yes);
    }
    // A test without a verdict leaves no key that the next one would take for remembered.
    FileHold other;
    ASSERT_TRUE(other.take(sealedFile));
    EXPECT_FALSE(program->road.ConnectDatabase(program->resumed));
    program->login.load();
    program->login.activate();
    EXPECT_EQ(program->login.state().keyText, QString());
    EXPECT_FALSE(program->login.state().remLgnKey || program->login.state().autoLogin);
    other.release();
    prompt.answers = {Prompt::Answer::Yes};
    program->typeAndLogIn(key);
    ASSERT_TRUE(program->road.ConnectDatabase(program->resumed)) << lastText().toStdString();
    program->road.RecordLogin(false);
    EXPECT_TRUE(stored());

    restart();
    program->login.setStartFolder(home.path(u"MORV - 无名"_s));
    program->login.activate();
    EXPECT_EQ(lastText(), u"用户【无名】不存在。"_s);
    const QString stray = home.path(u"stray.kvdb"_s);
    prompt.paths = {stray};
    program->login.cmdOpen();
    EXPECT_EQ(lastText(), u"密码数据库未有正确处于前缀名为“MORV - ”的私人文件夹中，不能登录！"_s);
    EXPECT_EQ(program->login.state().userNames, QStringList{name});
}

TEST_F(SessionTest, TheDatabaseIsCheckedBeforeTheKey) {
    leaveAndRestart();
    program->login.activate();
    ASSERT_TRUE(QFile::rename(sealedFile, sealedFile + u"x"_s));
    program->typeAndLogIn(QString());
    EXPECT_EQ(lastText(), u"密码数据库不存在！"_s);
    ASSERT_TRUE(QFile::rename(sealedFile + u"x"_s, sealedFile));
    program->typeAndLogIn(QString());
    EXPECT_EQ(lastText(), u"您忘记输入密钥了！"_s);
    EXPECT_EQ(stored()->p_usedTimes(), 0) << "none of these is an attempt";
}

TEST_F(SessionTest, AUserIsRemovedAsAnswered) {
    restart();  // by a crash
    program->login.activate();
    const QString copy = stored()->p_activeFile();
    prompt.answers = {Prompt::Answer::Yes, Prompt::Answer::No};
    program->login.cmdRemove();
    EXPECT_TRUE(lastText().contains(copy)) << "the way to what the crash has left";
    EXPECT_TRUE(stored() && QFileInfo::exists(sealedFile) && QFileInfo::exists(copy));
    ASSERT_TRUE(program->enter(key));
    prompt.boxes.clear();
    leaveAndRestart();
    program->login.activate();
    prompt.answers = {Prompt::Answer::Cancel};
    program->login.cmdRemove();
    EXPECT_TRUE(stored() && QFileInfo::exists(sealedFile));
    EXPECT_EQ(lastText(), u"即将移除此用户。\r\n检测到私人文件夹存在，您需要连带删除它吗？"_s);
    {
        const FileSizeLimit full(0);
        prompt.answers = {Prompt::Answer::No};
        program->login.cmdRemove();
    }
    EXPECT_TRUE(lastText().contains(u"记录未能从本机删除"_s));
    EXPECT_TRUE(stored());
    restart();
    program->login.activate();
    prompt.answers = {Prompt::Answer::No};
    program->login.cmdRemove();
    EXPECT_FALSE(stored());
    EXPECT_TRUE(QFileInfo::exists(sealedFile));
    EXPECT_FALSE(program->login.state().hasUser);
    EXPECT_EQ(program->login.state().okCaption, u"新 建"_s);

    restart();
    program->login.setStartFolder(folder);
    program->login.activate();
    prompt.answers = {Prompt::Answer::Yes};
    program->login.cmdRemove();
    EXPECT_FALSE(QFileInfo::exists(folder));
    EXPECT_EQ(program->beeps, 1);
    EXPECT_TRUE(program->users.names().isEmpty());
}

TEST_F(SessionTest, AHiddenPathIsNotRevealedByTheRemoval) {
    program->system.settings().p_hideDBPath(true);
    program->system.RefreshMyUser();
    leaveAndRestart();
    program->login.activate();
    EXPECT_EQ(program->login.state().pathText, QString());
    prompt.answers = {Prompt::Answer::No, Prompt::Answer::Yes};
    program->login.cmdRemove();
    EXPECT_TRUE(stored());
    program->login.cmdRemove();
    EXPECT_EQ(lastText(), u"您真的要移除此用户吗？"_s);
    EXPECT_FALSE(stored());
    EXPECT_TRUE(QFileInfo::exists(folder));
}

TEST_F(SessionTest, TheWizardRefusesWhatCannotBecomeAUser) {
    Wizard& wizard = program->wizard;
    wizard.load();
    EXPECT_NE(wizard.state().loginKey, wizard.state().independentPassword);
    const std::pair<const char*, const char*> names[] = {{"", "请先设置用户名。"},
                                                         {"  ", "用户名不能为空或全为空格！"},
                                                         {"a", "用户名的长度不要小于2个字符。"},
                                                         {"a|b", "文件名不能包含下列任何字符："},
                                                         {"王小明", "已存在，请改用其它用户名。"}};
    for (const auto& [text, message] : names) {
        wizard.setUserName(QString::fromUtf8(text));
        wizard.cmdNext();
        EXPECT_TRUE(lastText().contains(QString::fromUtf8(message))) << text;
        EXPECT_EQ(wizard.state().page, 0);
    }
    wizard.setUserName(u"ab"_s);
    wizard.cmdNext();
    for (const int length : {5, 31, 6, 30}) {
        wizard.setLoginKey(QString(length, u'k'));
        wizard.cmdNext();
        EXPECT_EQ(wizard.state().page == 1, length == 5 || length == 31) << length;
        wizard.cmdBack();
        if (wizard.state().page == 0) {
            wizard.cmdNext();
        }
    }
    prompt.boxes.clear();
    wizard.setLoginKeyTip(u"a?"_s);
    wizard.cmdNext();
    EXPECT_TRUE(lastText().startsWith(u"提示文本不能包含下列任何字符："_s));
    wizard.setLoginKeyTip(QString());
    wizard.cmdNext();
    for (const int length : {5, 33, 0}) {
        wizard.setIndependentPassword(QString(length, u'k'));
        wizard.cmdNext();
        EXPECT_EQ(wizard.state().page, length == 0 ? 3 : 2) << length;
    }
    EXPECT_TRUE(wizard.state().summary.startsWith(u"用户名：ab\r\n私人文件夹："_s));
    // A folder of the name that has appeared meanwhile belongs to somebody else.
    prompt.boxes.clear();
    ASSERT_TRUE(QDir().mkpath(wizard.state().privateFolder));
    wizard.cmdNext();
    EXPECT_EQ(prompt.takeTexts().size(), 1);
    EXPECT_TRUE(QFileInfo::exists(wizard.state().privateFolder));
    EXPECT_EQ(wizard.m_result(), 0);
}

TEST_F(SessionTest, AWizardThatFailsHalfwayLeavesNoTrace) {
    leaveAndRestart();
    const QString newFolder = QFileInfo(folder).absolutePath() + u"/MORV - second"_s;
    const QDir state(program->folders.state + u"/morvane-keeper"_s);
    // A disk that is full after so many bytes: while the database is made, re-keyed, or sealed.
    int failures = 0;
    for (bool isBuilt = false; !isBuilt; failures += isBuilt ? 0 : 1) {
        ASSERT_LT(failures, 100);
        {
            const FileSizeLimit limit(static_cast<rlim_t>(failures) * 8192);
            isBuilt = program->build(u"second"_s, key);
        }
        EXPECT_EQ(QFileInfo::exists(newFolder), isBuilt) << failures;
        EXPECT_EQ(state.entryList(QDir::Files).isEmpty(), !isBuilt) << failures;
        EXPECT_EQ(prompt.takeTexts().isEmpty(), isBuilt) << failures;
        EXPECT_TRUE(QFileInfo::exists(sealedFile) && stored());
    }
    EXPECT_GT(failures, 5);
}

}  // namespace
}  // namespace keeper
