// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <memory>

#include "guard/os_info.h"
#include "guard/sw_protect.h"
#include "platform/database.h"
#include "platform/random.h"
#include "store/schema.h"
#include "support/fake_machine.h"
#include "support/fake_ports.h"
#include "support/scripted_prompt.h"

namespace keeper {

using namespace Qt::StringLiterals;

/// Notes the migrations that are asked for.
class ScriptedUpgrades final : public DatabaseUpgrades {
  public:
    QStringList calls;
    bool result = true;
    bool UpgradeEntries(int revision) override { return note(u"entries %1"_s.arg(revision)); }
    bool UpgradeSettings(int revision) override { return note(u"settings %1"_s.arg(revision)); }
    bool UpgradePrograms() override { return note(u"programs"_s); }
    void Undone() override { note(u"undone"_s); }

  private:
    bool note(const QString& call) {
        calls << call;
        return result;
    }
};

/// The whole row, to see what was touched.
inline QStringList guardRow(Database& database) {
    Statement statement(database, "select * from tb_SWProtect");
    EXPECT_TRUE(statement.step());
    QStringList values;
    for (int i = 0; i < 28; ++i) {
        values << statement.text(i);
    }
    return values;
}

/// Stands for the full disk: every update of the row, or of one field of it, fails.
inline void stopGuardWrites(Database& database, const QByteArray& field = {}) {
    const QByteArray sql = "create trigger stop before update " + field +
                           " on tb_SWProtect begin select raise(abort, 'no'); end";
    database.execute(sql.constData());
}

/// A real database whose guard was made on the machine "origin", on the day of the clock.
class GuardTest : public testing::Test {
  protected:
    void SetUp() override {
        path = m_folder.filePath(u"guard.db"_s);
        database.create(path, u"key"_s);
        // No test here cuts the power.
        database.execute("pragma synchronous=off");
        createSchema(database, clock.now());
        guard = on(origin);
        ASSERT_TRUE(guard->ReadDB());
        ASSERT_TRUE(guard->NewBuild());
    }

    /// A program that starts on a machine; its fingerprint is read at once.
    std::unique_ptr<SWProtect> on(FakeMachine& machine, const QString& version = u"3.4.0"_s) {
        osInfo = std::make_unique<OSInfo>(machine, prompt);
        osInfo->Initialize();
        return std::make_unique<SWProtect>(
            SWProtect::Ports{database, clock, random, prompt, *osInfo, upgrades}, version);
    }
    /// Reads and judges as a login does; the guard of the last login stays in `guard`.
    GuardVerdict login(FakeMachine& machine) {
        guard = on(machine);
        EXPECT_TRUE(guard->ReadDB());
        return guard->Initialize();
    }
    /// The same on the origin, after a program of the version has stamped the database.
    GuardVerdict loginStamped(const QString& version) {
        guard = on(origin, version);
        EXPECT_TRUE(guard->ReadDB() && guard->SetDBVersionAsApp());
        return login(origin);
    }
    /// What a hand edits, past every check that the engine would make.
    void edit(const QString& assignment) {
        database.execute("pragma ignore_check_constraints=on");
        database.execute((u"update tb_SWProtect set "_s + assignment).toUtf8().constData());
        database.execute("pragma ignore_check_constraints=off");
    }
    QString field(const char* column) {
        const QByteArray sql = QByteArray("select [") + column + "] from tb_SWProtect";
        Statement row(database, sql.constData());
        EXPECT_TRUE(row.step());
        return row.text(0);
    }

    const QDate start{2026, 5, 20};
    FakeClock clock{QDateTime(start, QTime(12, 0))};
    FakeMachine origin;
    FakeMachine branch{u"OTHERDISK"_s};
    SystemRandom random;
    ScriptedPrompt prompt;
    ScriptedUpgrades upgrades;
    QString path;
    Database database{DatabaseOptions{.keyRounds = 4, .pageSize = 4096}};
    std::unique_ptr<OSInfo> osInfo;
    std::unique_ptr<SWProtect> guard;

  private:
    QTemporaryDir m_folder;
};

}  // namespace keeper
