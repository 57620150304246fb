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

/// Notes the migrations that are asked for.
class ScriptedUpgrades final : public DatabaseUpgrades {
  public:
    QStringList calls;
    bool result = true;
    bool UpgradeEntries(int revision) override {
        return note(QStringLiteral("entries %1").arg(revision));
    }
    bool UpgradeSettings(int revision) override {
        return note(QStringLiteral("settings %1").arg(revision));
    }
    bool UpgradePrograms() override { return note(QStringLiteral("programs")); }
    void Undone() override { note(QStringLiteral("undone")); }

  private:
    bool note(const QString& call) {
        calls << call;
        return result;
    }
};

/// A real database whose guard was made on the machine "origin", on the day of the clock.
class GuardTest : public testing::Test {
  protected:
    void SetUp() override {
        path = m_folder.filePath(QStringLiteral("guard.db"));
        database.create(path, QStringLiteral("key"));
        // No test here cuts the power.
        database.execute("pragma synchronous=off");
        createSchema(database, clock.now());
        guard = on(origin);
        ASSERT_TRUE(guard->ReadDB());
        ASSERT_TRUE(guard->NewBuild());
    }

    /// A program that starts on a machine; its fingerprint is read at once.
    std::unique_ptr<SWProtect> on(FakeMachine& machine,
                                  const QString& version = QStringLiteral("3.4.0")) {
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
    /// What a hand edits, past every check that the engine would make.
    void edit(const QString& assignment) {
        database.execute("pragma ignore_check_constraints=on");
        database.execute(
            (QStringLiteral("update tb_SWProtect set ") + assignment).toUtf8().constData());
        database.execute("pragma ignore_check_constraints=off");
    }
    QString field(const char* column) {
        const QByteArray sql = QByteArray("select [") + column + "] from tb_SWProtect";
        Statement row(database, sql.constData());
        EXPECT_TRUE(row.step());
        return row.text(0);
    }
    /// The whole row, to see what was touched.
    QStringList row() {
        Statement statement(database, "select * from tb_SWProtect");
        EXPECT_TRUE(statement.step());
        QStringList values;
        for (int i = 0; i < 28; ++i) {
            values << statement.text(i);
        }
        return values;
    }
    void setDay(const QDate& day) { clock.set(QDateTime(day, QTime(9, 0))); }

    const QDate start{2026, 5, 20};
    FakeClock clock{QDateTime(start, QTime(12, 0))};
    FakeMachine origin;
    FakeMachine branch{QStringLiteral("OTHERDISK")};
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
