// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <gtest/gtest.h>

#include <QFileInfo>
#include <functional>
#include <memory>
#include <utility>

#include "app/destruction.h"
#include "app/regedit.h"
#include "app/registry_store.h"
#include "app/system.h"
#include "app/users.h"
#include "guard/login.h"
#include "guard/os_info.h"
#include "guard/session_column_key.h"
#include "guard/session_connect.h"
#include "guard/store_upgrades.h"
#include "guard/sw_protect.h"
#include "guard/wizard.h"
#include "platform/autostart.h"
#include "store/column_cipher.h"
#include "store/companions.h"
#include "store/entries.h"
#include "store/sys_logs.h"
#include "support/fake_machine.h"
#include "support/temp_home.h"
#include "support/vault.h"
#include "workspace/session_end.h"

namespace keeper {

using namespace Qt::StringLiterals;

/// One start of the program without its windows, over real files in the home of the environment.
struct SessionProgram {
    SessionProgram(FakeClock& clockOfTest, ScriptedPrompt& promptOfTest, FakeMachine& machineOfTest,
                   QString versionOfTest = u"3.4.0"_s)
        : clock(clockOfTest),
          prompt(promptOfTest),
          machine(machineOfTest),
          version(std::move(versionOfTest)) {
        system.attach(sealed);
        EXPECT_TRUE(osInfo.Initialize());
        users.InitUsers();
        for (const QString& notice : destruction.finishInterrupted()) {
            prompt.messageBox(notice, Prompt::Icon::Exclamation, Prompt::Buttons::Ok, {}, {});
        }
        login.load();
    }

    /// A new user through all pages of the wizard, recorded, with its session open.
    [[nodiscard]] bool build(const QString& name, const QString& key) {
        wizard.load();
        wizard.setUserName(name);
        wizard.cmdNext();
        wizard.setLoginKey(key);
        wizard.setLoginKeyTip(u"提示"_s);
        for (int page = 1; page < 4; ++page) {
            wizard.cmdNext();
        }
        if (wizard.m_result() != 2) {
            return false;
        }
        connection.execute("PRAGMA synchronous=OFF");
        road.RecordLogin(false);
        return true;
    }
    void typeAndLogIn(const QString& key) {
        login.setKeyText(key);
        login.OnLoginClicked();
    }
    /// The road from the login form to the open database, as the program takes it.
    [[nodiscard]] bool enter(const QString& key) {
        login.activate();
        typeAndLogIn(key);
        if (login.m_result() != Login::Result::LogIn || !road.ConnectDatabase(resumed)) {
            return false;
        }
        road.ReportAfterLogin(resumed);
        road.RecordLogin(resumed);
        return true;
    }
    bool leave() { return end.requestClose(CloseReason::User, AutoExit::None); }
    /// Rows of the log of one status.
    int logged(int status) {
        Statement count(connection, "SELECT count(*) FROM tb_SysLog WHERE statusNo=?1");
        count.bind(1, status);
        return count.step() ? static_cast<int>(count.integer(0)) : -1;
    }

    FakeClock& clock;
    ScriptedPrompt& prompt;
    FakeMachine& machine;
    QString version;
    UserFolders folders = UserFolders::ofSystem();
    FakeEventLoop loop;
    SystemRandom random;
    XdgAutostart autostart{folders, u"/usr/bin/morvane-keeper"_s};
    PromptCryptorHost host{prompt, loop};
    RegistryStore registryStore{folders.registry(), clock};
    Regedit regedit{registryStore, folders};
    Users users{{regedit, autostart, random, prompt}, loop};
    Database connection{{.keyRounds = 10}};
    System system{connection, prompt, clock};
    Cryptor3 cipher{host};
    RecordingDisplay display;
    SealedDatabase sealed{
        system, cipher, connection, prompt, random, display, folders.state + u"/morvane-keeper"_s};
    FileOperator files{folders, clock, prompt, system};
    Destruction destruction{folders, users, prompt};
    SessionColumnKey columnKey{system};
    ColumnCipher columns{columnKey, cipher};
    StoreContext store{connection, prompt, clock, columns};
    SysLogs logs{store};
    Entries entries{store};
    Prgs programs{store, entries};
    Fils fils{store, entries};
    OSInfo osInfo{machine, prompt};
    StoreUpgrades upgrades{entries, programs, system.settings()};
    SWProtect guard{{connection, clock, random, prompt, osInfo, upgrades}, version};
    SessionConnect road{{prompt, clock, system, connection, sealed, guard, logs, users, osInfo,
                         display, destruction, [this] { return unlocksColumns(); }}};
    /// What the person does when the independent password is asked for.
    std::function<bool()> unlocksColumns = [] { return false; };
    int beeps = 0;
    bool hasReader = false;
    bool knowsFinger = false;
    int fingersAsked = 0;
    Login login{{prompt, clock, users, files, regedit, [] { return false; }, [this] { ++beeps; },
                 [](const QString&) {}, [this] { return hasReader; },
                 [this](const std::function<void(bool)>& tell) { tell(hasReader); },
                 [this](QString&) { return ++fingersAsked, knowsFinger; },
                 [this](const std::shared_ptr<User>& user) { system.setUser(user); }}};
    Wizard wizard{{prompt, clock, random, system, sealed, guard, fils, users, regedit}};
    /// What the main window was asked to do at its end.
    QStringList events;
    bool isEditing = false;
    bool hasTray = true;
    SessionEnd end{{prompt, clock, system, sealed, logs, files,
                    [this] { return events << u"hide"_s, hasTray; },
                    [this](const QString&, const QString& text) { events << text; },
                    [this] { return isEditing; }, [this] { events << u"fill"_s; },
                    [this] { events << u"clipboard"_s; }, [this] { events << u"unlock"_s; },
                    [this] { events << u"time"_s; }, [this] { events << u"tray"_s; }}};
    bool resumed = false;
};

/// A home with one user, made by the wizard; `program` is the start that runs now.
class SessionTest : public testing::Test {
  protected:
    void SetUp() override {
        restart();
        ASSERT_TRUE(program->build(name, key)) << prompt.takeTexts().join(u'|').toStdString();
        folder = program->system.p_privateFolder();
        sealedFile = program->system.p_kvdbFile();
    }
    /// The old start ends as by a crash, unless it was left before.
    void restart() {
        program.reset();
        program = std::make_unique<SessionProgram>(clock, prompt, machine);
    }
    void leaveAndRestart() {
        ASSERT_TRUE(program->leave());
        ASSERT_EQ(prompt.takeTexts(), QStringList());
        restart();
    }
    [[nodiscard]] std::shared_ptr<User> stored() const {
        const auto user = program->users.makeUser();
        return user->ReadRegistry(name) ? user : nullptr;
    }
    /// The last of the texts shown; the others are forgotten with it.
    QString lastText() {
        const QStringList texts = prompt.takeTexts();
        return texts.isEmpty() ? QString() : texts.last();
    }

    TempHome home;
    FakeClock clock;
    ScriptedPrompt prompt;
    FakeMachine machine;
    const QString name = u"王小明"_s;
    const QString key = u"Ключ-café12"_s;
    QString folder;
    QString sealedFile;
    std::unique_ptr<SessionProgram> program;
};

}  // namespace keeper
