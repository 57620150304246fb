// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

// Column encryption over real files. A plain run kills it at a few moments;
// scripts/column_campaign.sh at as many as wanted.

#include "guard/column_switch.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QElapsedTimer>
#include <algorithm>
#include <csignal>
#include <random>

#include "app/system.h"
#include "guard/independent_password.h"
#include "guard/session_column_key.h"
#include "store/ent_logs.h"
#include "store/schema.h"
#include "store/sys_logs.h"
#include "support/campaign_setting.h"
#include "support/file_size_limit.h"
#include "support/killed_child.h"
#include "support/vault.h"

namespace keeper {
namespace {

const QString kSecret = u"独立pwd-77"_s;

struct ColumnProgram {
    explicit ColumnProgram(const QString& file) {
        if (QFileInfo::exists(file)) {
            database.open(file, u"columns"_s);
            QString message;
            EXPECT_TRUE(system.ReadDB(message)) << message.toStdString();
        } else {
            database.create(file, u"columns"_s);
            createSchema(database, clock.now());
            system.SetHashIdpPwd(kSecret);
            EXPECT_TRUE(system.settings().NewBuild(u"某人"_s));
        }
    }

    /// So many rows in each of the five tables, of every shape that a cell can have.
    void fill(int rows) {
        Transaction transaction(database);
        const QStringList shapes{u"plain-%1"_s, u"密码%1！"_s, u"č🙂%1"_s,
                                 QString(300, u'x') + u"%1"_s};
        for (int i = 0; i < rows; ++i) {
            const QString name = QString::number(i);
            const QString dir = u"01%1"_s.arg(i / 99 + 1, 2, 10, QLatin1Char('0'));
            const QString no = u"%1"_s.arg(i % 99 + 1, 2, 10, QLatin1Char('0'));
            if (i % 99 == 0) {
                run("INSERT INTO tb_Directory VALUES(?1,'01','目录')", {dir});
            }
            const QString cell = i == 7 ? QString() : shapes.at(i % shapes.size()).arg(i);
            run("INSERT INTO tb_Entry VALUES(?1,?2,'t','自定义',?3,'',0,1,0,NULL,NULL,NULL,0)",
                {dir, no, cell});
            run("INSERT INTO tb_Net VALUES(?1,?2,'自定义',?3,'')", {dir, no, cell});
            run("INSERT INTO tb_AssNum VALUES(?1,?2,'','',1)", {name, cell});
            run("INSERT INTO tb_AssPwd VALUES(?1,?2,0,NULL,1)", {name, cell});
            run("INSERT INTO tb_EntLog VALUES(?1,?2,'2026-01-01T00:00:00',2,'自定义',?3)",
                {dir, no, cell});
        }
        transaction.commit();
    }
    void run(const char* sql, const QStringList& values) {
        Statement statement(database, sql);
        for (int i = 0; i < values.size(); ++i) {
            // An empty text is not null.
            statement.bind(i + 1, values.at(i).isNull() ? u""_s : values.at(i));
        }
        statement.run();
    }
    /// Every cell, as it is stored or as a reader sees it.
    QStringList cells(bool isRead) {
        QStringList found;
        Statement all(database,
                      "SELECT customPwd FROM tb_Entry UNION ALL SELECT customNum FROM tb_Net"
                      " UNION ALL SELECT Content FROM tb_AssNum"
                      " UNION ALL SELECT Content FROM tb_AssPwd"
                      " UNION ALL SELECT originalPwd FROM tb_EntLog");
        while (all.step()) {
            const QString cell = all.isNull(0) ? u"<null>"_s : all.text(0);
            found << (isRead && !all.isNull(0) ? columns.toPlain(cell) : cell);
        }
        return found;
    }
    int logged(int count) {
        Statement rows(database, "SELECT count(*) FROM tb_SysLog WHERE statusNo=20 AND lCount=?");
        rows.bind(1, count);
        return rows.step() ? static_cast<int>(rows.integer(0)) : -1;
    }
    void click() {
        form.load();
        prompt.answers = {Prompt::Answer::Ok};
        form.chkCryptionStatus(kSecret);
    }

    FakeClock clock;
    ScriptedPrompt prompt;
    FakeEventLoop loop;
    SystemRandom random;
    PromptCryptorHost host{prompt, loop};
    Cryptor3 cipher{host};
    Database database{{.keyRounds = 10}};
    System system{database, prompt, clock};
    RecordingDisplay display;
    SealedDatabase sealed{system, cipher, database, prompt, random, display, QString()};
    SessionColumnKey key{system};
    ColumnCipher columns{key, cipher};
    StoreContext store{database, prompt, clock, columns};
    SysLogs logs{store};
    IndependentPassword secret{{prompt, clock, system, sealed, logs}};
    ColumnCryption cryption{database, prompt, loop, cipher, key};
    ColumnSwitch form{{prompt, clock, system, database, secret, logs, cryption}};
};

class ColumnSwitchTest : public testing::Test {
  protected:
    QString file(const char* name = "columns.db") const {
        return m_folder.filePath(QString::fromLatin1(name));
    }
    /// A fresh look at the file, as the next login has it.
    std::unique_ptr<ColumnProgram> reopen() {
        auto program = std::make_unique<ColumnProgram>(file());
        program->system.p_plainIdpPwd(kSecret);
        return program;
    }

    QTemporaryDir m_folder;
};

TEST_F(ColumnSwitchTest, OnAndOffLeadEveryCellThereAndBack) {
    QStringList before;
    {
        ColumnProgram program(file());
        program.fill(150);
        before = program.cells(/*isRead=*/false);
        ASSERT_EQ(before.count(QString()), 6) << "the empty cells, and that of the example entry";
        std::vector<int> percents;
        program.form.changed = [&] { percents.push_back(program.form.state().percent); };
        program.click();
        EXPECT_EQ(program.prompt.takeTexts(),
                  (QStringList{u"即将开启列级加密，确定继续？"_s, u"列级加密已完成！"_s}));
        EXPECT_EQ(program.form.state().caption, u"列级加密已开启"_s);
        EXPECT_EQ(percents.back(), 100);
        EXPECT_TRUE(std::is_sorted(percents.begin(), percents.end()));
        EXPECT_GE(program.loop.turns, 5 * 150);
        EXPECT_EQ(program.logged(-1), 1);
    }
    auto program = reopen();
    EXPECT_TRUE(program->system.settings().p_idpPwdSwitch());
    const QStringList stored = program->cells(/*isRead=*/false);
    for (qsizetype i = 0; i < stored.size(); ++i) {
        const bool isKept = before.at(i).isEmpty() || before.at(i) == u"<null>"_s;
        ASSERT_EQ(stored.at(i) == before.at(i), isKept) << i;
    }
    EXPECT_EQ(program->cells(/*isRead=*/true), before);
    std::vector<EntLogLine> lines;
    int count = 0;
    EntLogs logs(program->store);
    ASSERT_TRUE(logs.Display(lines, QString(), {}, {}, 0, count));
    EXPECT_EQ(lines.back().password, u"自定义：plain-0"_s);

    program->database.execute("BEGIN;UPDATE tb_AssPwd SET Content='no cell' WHERE Name='12'");
    program->click();
    EXPECT_TRUE(program->prompt.boxes.back().text.contains(
        u"]ColumnCryption.HandleAssPwd:\r\n关联密码【12】不是"_s));
    EXPECT_TRUE(program->system.settings().p_idpPwdSwitch());
    program->database.execute("ROLLBACK");

    program->click();
    EXPECT_EQ(program->form.state().caption, u"列级加密已关闭"_s);
    EXPECT_EQ(program->system.p_plainIdpPwd(), QString()) << "nobody needs it any more";
    EXPECT_EQ(program->logged(1), 1);
    program.reset();
    program = reopen();
    EXPECT_FALSE(program->system.settings().p_idpPwdSwitch());
    EXPECT_EQ(program->cells(/*isRead=*/false), before);
}

TEST_F(ColumnSwitchTest, RefusalsCostWhatTheyShouldAndChangeNothing) {
    ColumnProgram program(file());
    program.fill(3);
    const QStringList before = program.cells(false);
    int emptied = 0;
    program.form.emptyEntry = [&] { ++emptied; };
    program.form.load();
    program.form.chkCryptionStatus(QString());
    program.form.chkCryptionStatus(u"wrong"_s);
    program.prompt.answers = {Prompt::Answer::Cancel};
    program.form.chkCryptionStatus(kSecret);
    EXPECT_EQ(program.prompt.takeTexts(),
              (QStringList{u"您忘记输入密码了！"_s, u"密码错误！你还有4次尝试机会。"_s,
                           u"即将开启列级加密，确定继续？"_s}));
    EXPECT_EQ(emptied, 3);
    EXPECT_EQ(program.system.settings().p_idpPwdChances1(), 5) << "restored by the right one";
    for (int i = 0; i < 5; ++i) {
        EXPECT_FALSE(program.form.isClosed());
        program.form.chkCryptionStatus(u"wrong"_s);
    }
    EXPECT_EQ(program.prompt.boxes.back().text, u"密码错误！独立密码的尝试机会已用完！"_s);
    EXPECT_EQ(program.prompt.boxes.back().icon, Prompt::Icon::Critical);
    EXPECT_TRUE(program.form.isClosed() && program.form.isUsedUp());

    program.system.SetHashIdpPwd(QString());
    program.click();
    EXPECT_EQ(program.prompt.boxes.back().text, u"已设置的独立密码为空，列级加密不可用！"_s);
    EXPECT_EQ(program.cells(false), before);
    EXPECT_FALSE(program.system.settings().p_idpPwdSwitch());
}

TEST_F(ColumnSwitchTest, WhatCannotBeFinishedIsUndoneAsAWhole) {
    ColumnProgram program(file());
    program.fill(200);
    const QStringList before = program.cells(false);
    const auto expectUntouched = [&](const QString& text) {
        EXPECT_EQ(program.prompt.boxes.back().text, text);
        EXPECT_EQ(program.cells(false), before);
        EXPECT_FALSE(program.system.settings().p_idpPwdSwitch());
        EXPECT_FALSE(program.form.state().isOn || program.form.isRunning());
        EXPECT_EQ(program.system.p_plainIdpPwd(), QString());
        EXPECT_EQ(program.logged(-1), 0);
        program.prompt.boxes.clear();
    };
    program.loop.onTurn = [&] {
        if (program.form.state().percent >= 50) {
            program.form.cmdCancel();
        }
    };
    program.click();
    expectUntouched(u"已停止，数据库未作任何改动。"_s);
    program.loop.onTurn = [&] { program.form.close(); };
    program.click();
    EXPECT_TRUE(program.form.isClosed());
    EXPECT_TRUE(program.form.takeUntoldStop());
    EXPECT_FALSE(program.form.takeUntoldStop()) << "told once";
    expectUntouched(u"即将开启列级加密，确定继续？"_s);
    program.loop.onTurn = nullptr;

    for (const qint64 room : {0, 100'000}) {
        const FileSizeLimit full(static_cast<rlim_t>(QFileInfo(file()).size() + room));
        program.click();
        EXPECT_TRUE(program.prompt.boxes.back().text.contains(u"]ColumnCryption.Handle"_s));
        EXPECT_FALSE(program.system.settings().p_idpPwdSwitch());
    }
    EXPECT_EQ(program.cells(false), before);
    // The last step of all fails: the record in the log.
    program.database.execute(
        "CREATE TRIGGER full BEFORE INSERT ON tb_SysLog BEGIN SELECT RAISE(ABORT,'full'); END");
    program.click();
    EXPECT_TRUE(program.prompt.boxes.back().text.contains(u"]SysLogs.Add:"_s));
    program.database.execute("DROP TRIGGER full");
    program.form.load();
    program.form.cmdCancel();
    EXPECT_EQ(program.cells(false), before);
    EXPECT_FALSE(program.system.settings().p_idpPwdSwitch());
}

TEST_F(ColumnSwitchTest, AKillAtAnyMomentLeavesAllOrNothing) {
    const int moments = campaignSetting("KEEPER_COLUMN_KILLS", 6);
    std::mt19937 draw(static_cast<unsigned>(campaignSetting("KEEPER_COLUMN_SEED", 1)));
    QStringList plain;
    qint64 duration = 0;
    {
        ColumnProgram program(file("plain.db"));
        program.fill(200);
        plain = program.cells(false);
    }
    ASSERT_TRUE(QFile::copy(file("plain.db"), file("on.db")));
    {
        ColumnProgram program(file("on.db"));
        QElapsedTimer time;
        time.start();
        program.click();
        duration = time.nsecsElapsed() / 1000;
        ASSERT_TRUE(program.system.settings().p_idpPwdSwitch());
    }
    int turned = 0;
    int inTheMiddle = 0;
    for (int i = 0; i < moments && !HasFailure(); ++i) {
        const bool isAcknowledged = i < 2;  // killed behind the end, both ways
        const bool wasOn = i % 2 != 0;
        QFile::remove(file());
        QFile::remove(file("columns.db-journal"));
        ASSERT_TRUE(QFile::copy(file(wasOn ? "on.db" : "plain.db"), file()));
        int ready[2];
        ASSERT_EQ(::pipe(ready), 0);
        const pid_t child = ::fork();
        if (child == 0) {
            ColumnProgram program(file());
            (void)!::write(ready[1], "", 1);
            program.click();
            (void)!::write(ready[1], "", 1);
            ::pause();
        }
        char byte = 0;
        ASSERT_EQ(::read(ready[0], &byte, 1), 1);
        const auto moment = std::uniform_int_distribution<std::int64_t>(
            0, static_cast<std::int64_t>(duration * 5 / 4))(draw);
        if (isAcknowledged) {
            ASSERT_EQ(::read(ready[0], &byte, 1), 1);
        }
        ASSERT_TRUE(killedAfter(child, std::chrono::microseconds(moment))) << "failed by itself";
        ::close(ready[0]);
        ::close(ready[1]);

        inTheMiddle += QFileInfo::exists(file("columns.db-journal")) ? 1 : 0;
        const auto program = reopen();
        const bool isOn = program->system.settings().p_idpPwdSwitch();
        turned += isOn != wasOn ? 1 : 0;
        EXPECT_TRUE(isOn != wasOn || !isAcknowledged);
        EXPECT_EQ(program->cells(/*isRead=*/true), plain) << "moment " << i;
        EXPECT_EQ(program->cells(/*isRead=*/false) == plain, !isOn) << "moment " << i;
        EXPECT_EQ(program->logged(isOn ? -1 : 1), isOn || wasOn ? 1 : 0);
    }
    RecordProperty("turned", turned);
    RecordProperty("inTheMiddle", inTheMiddle);
    EXPECT_GE(inTheMiddle, moments / 5) << "the kills missed the conversion";
}

}  // namespace
}  // namespace keeper
