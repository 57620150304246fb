// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <gtest/gtest.h>
#include <sqlcipher/sqlite3.h>

#include <QTemporaryDir>

#include "platform/database.h"
#include "store/companions.h"
#include "store/directories.h"
#include "store/entries.h"
#include "store/schema.h"
#include "support/fake_ports.h"
#include "support/scripted_prompt.h"
#include "support/store_ground.h"

namespace keeper {

/// A new database in a real file, without its example entry.
class StoreTest : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(m_folder.isValid());
        m_database.create(m_folder.filePath(QStringLiteral("a.db")), QStringLiteral("key"));
        // Nothing here looks at what a power cut would leave.
        m_database.execute("PRAGMA synchronous=OFF");
        createSchema(m_database, m_clock.now());
        m_database.execute("delete from tb_Entry");
        m_prompt.onShown = [this] {
            EXPECT_NE(sqlite3_get_autocommit(m_database.handle()), 0)
                << "a message box waits inside a transaction";
        };
    }

    /// The first column of the first row, "(null)" or "(no row)".
    QString value(const QString& sql) {
        Statement statement(m_database, sql.toUtf8().constData());
        if (!statement.step()) {
            return QStringLiteral("(no row)");
        }
        return statement.isNull(0) ? QStringLiteral("(null)") : statement.text(0);
    }
    int count(const QString& tableAndCondition) {
        return value(QStringLiteral("select count(*) from ") + tableAndCondition).toInt();
    }
    bool addDirectory(const QString& dirPath, const QString& title = QStringLiteral("目录")) {
        Directory directory;
        directory.p_dirPath(dirPath);
        directory.m_Title = title;
        return m_directories.Add(directory);
    }
    static Web webAt(const QString& number) {
        Web web;
        web.p_No(number);
        web.m_Title = QStringLiteral("邮箱");
        web.m_pwdName = web.m_numName = kCustomName;
        web.m_customPwd = QStringLiteral("密码p1");
        web.m_customNum = QStringLiteral("账号n1");
        web.m_Address = QStringLiteral("https://example.org");
        return web;
    }
    static Fil filAt(const QString& number) {
        Fil fil;
        fil.p_No(number);
        fil.m_Title = QStringLiteral("文件");
        fil.m_pwdName = kCustomName;
        fil.m_filePath = QStringLiteral("/home/a.txt");
        return fil;
    }
    /// The one message since the last look; fails when there were more or none.
    QString onlyMessage() {
        const QStringList texts = m_prompt.takeTexts();
        EXPECT_EQ(texts.size(), 1) << texts.join(QLatin1Char('|')).toStdString();
        return texts.value(0);
    }
    void TearDown() override {
        EXPECT_TRUE(m_prompt.boxes.empty()) << m_prompt.boxes.front().text.toStdString();
        EXPECT_EQ(m_database.checkIntegrity(), QString());
    }

    QTemporaryDir m_folder;
    FakeClock m_clock;
    ScriptedPrompt m_prompt;
    Database m_database{{.keyRounds = 10}};
    StoreGround m_ground{m_database, m_prompt, m_clock};
    StoreContext& m_context = m_ground.context;
    Directories m_directories{m_context};
    Entries m_entries{m_context};
    Webs m_webs{m_context, m_entries};
    Prgs m_prgs{m_context, m_entries};
    Fils m_fils{m_context, m_entries};
};

}  // namespace keeper
