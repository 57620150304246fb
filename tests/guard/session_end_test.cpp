// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <QDir>
#include <algorithm>

#include "support/session_fixture.h"

namespace keeper {
namespace {

class EndTest : public SessionTest {
  protected:
    Settings& settings() { return program->system.settings(); }
    [[nodiscard]] QStringList backups() const {
        return QDir(program->system.p_defMyBackup()).entryList({u"*.kvdb"_s}, QDir::Files);
    }
    [[nodiscard]] bool sealedBy(CryptMode mode) const {
        return std::ranges::find(program->display.modes, mode) != program->display.modes.end();
    }
};

TEST_F(EndTest, EachReasonSealsUnderItsStatus) {
    struct Case {
        CloseReason reason;
        AutoExit autoExit;
        int status;
        bool asks;
    };
    const Case cases[] = {{CloseReason::User, AutoExit::None, 13, true},
                          {CloseReason::Program, AutoExit::None, 13, true},
                          {CloseReason::Program, AutoExit::Close, 14, false},
                          {CloseReason::Program, AutoExit::ShutDown, 15, false},
                          {CloseReason::SessionEnds, AutoExit::None, 15, false},
                          {CloseReason::Other, AutoExit::None, 54, false}};
    for (const Case& one : cases) {
        SCOPED_TRACE(one.status);
        program->isEditing = true;
        if (one.asks) {
            prompt.answers = {Prompt::Answer::Cancel, Prompt::Answer::Ok};
            EXPECT_FALSE(program->end.requestClose(one.reason, one.autoExit));
            EXPECT_TRUE(program->events.isEmpty()) << "cancelled before anything was done";
        }
        program->end.tick();
        const QString copy = program->system.p_tmpFile();
        EXPECT_TRUE(program->end.requestClose(one.reason, one.autoExit));
        EXPECT_TRUE(prompt.answers.empty());
        prompt.boxes.clear();
        EXPECT_EQ(program->events.value(0), u"再见，王小明！"_s);
        EXPECT_EQ(program->events.last(), u"tray"_s);
        EXPECT_FALSE(QFileInfo::exists(copy));
        EXPECT_EQ(stored()->p_activeFile(), QString());
        const auto count = program->events.size();
        EXPECT_TRUE(program->end.requestClose(one.reason, one.autoExit));
        EXPECT_EQ(program->events.size(), count) << "the end runs once";
        restart();
        ASSERT_TRUE(program->enter(key));
        EXPECT_FALSE(program->resumed);
        EXPECT_GE(program->logged(one.status), 1);
        prompt.boxes.clear();
    }
}

TEST_F(EndTest, HidingToTheTrayEndsNothing) {
    settings().p_close2Tray(true);
    EXPECT_FALSE(program->leave());
    EXPECT_EQ(program->events,
              (QStringList{u"hide"_s, u"管理器已隐藏到托盘，单击图标还原管理器。"_s}));
    EXPECT_EQ(program->logged(13), 0);
    EXPECT_FALSE(program->system.p_isLogouted());
}

TEST_F(EndTest, AKilledSessionLeavesTheSealedFileOfTheLastCleanExit) {
    const QByteArray before = contentOf(sealedFile);
    EXPECT_TRUE(program->end.requestClose(CloseReason::Killed, AutoExit::None));
    prompt.boxes.clear();
    EXPECT_EQ(contentOf(sealedFile), before);
    restart();
    EXPECT_TRUE(program->enter(key));
    EXPECT_FALSE(program->resumed);
}

TEST_F(EndTest, BackupsFollowThePeriod) {
    QString path;
    settings().p_backupPeriod(false);
    EXPECT_TRUE(program->end.IsBackupDue(path));
    EXPECT_TRUE(path.startsWith(program->system.p_defMyBackup()));

    settings().p_backupPeriod(true);
    settings().p_backupStart(QDate(2026, 5, 20).startOfDay());
    settings().p_backupDays(0);
    clock.advanceDays(30);
    EXPECT_FALSE(program->end.IsBackupDue(path));
    EXPECT_EQ(path, QString());
    settings().p_backupDays(7);
    EXPECT_TRUE(program->end.IsBackupDue(path));
    EXPECT_FALSE(program->end.IsBackupDue(path)) << "missed periods do not pile up";
    clock.set(settings().p_backupStart().addDays(7).addSecs(-1));
    EXPECT_FALSE(program->end.IsBackupDue(path));
    clock.advanceSeconds(1);
    EXPECT_TRUE(program->end.IsBackupDue(path));

    settings().p_backupPeriod(false);
    settings().p_backupPath(home.path(u"none"_s));
    EXPECT_FALSE(program->end.IsBackupDue(path));
    EXPECT_EQ(path, home.path(u"none"_s));
    EXPECT_TRUE(program->leave());
    EXPECT_TRUE(sealedBy(CryptMode::SealAfterFailedBackup));
    EXPECT_EQ(lastText(), u"指定备份路径无效："_s + path);
    EXPECT_EQ(stored()->p_activeFile(), QString()) << "sealed nevertheless";
}

TEST_F(EndTest, ABackupIsTheSealedFileAgain) {
    settings().p_backupPeriod(false);
    EXPECT_TRUE(program->leave());
    EXPECT_TRUE(sealedBy(CryptMode::SealAndBackUp));
    ASSERT_EQ(backups().size(), 1);
    EXPECT_EQ(contentOf(program->system.p_defMyBackup() + u'/' + backups().at(0)),
              contentOf(sealedFile));
}

TEST_F(EndTest, AFailedSealKeepsWorkingCopyAndRecordForTheNextLogin) {
    ASSERT_TRUE(QFile::remove(sealedFile));
    ASSERT_TRUE(QDir().mkpath(sealedFile + u"/x"_s));
    const QString copy = program->system.p_tmpFile();
    EXPECT_TRUE(program->leave());
    EXPECT_FALSE(prompt.takeTexts().isEmpty());
    EXPECT_TRUE(QFileInfo::exists(copy));
    EXPECT_EQ(stored()->p_activeFile(), copy);
}

}  // namespace
}  // namespace keeper
