// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/session_flow.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <deque>
#include <stdexcept>

#include "support/scripted_prompt.h"

namespace keeper {
namespace {

using LoginResult = SessionForms::LoginResult;

/// Plays forms and road from a script and writes down the order of events.
class Script final : public SessionForms, public SessionRoad {
  public:
    QStringList events;
    std::deque<LoginResult> logins;
    std::deque<bool> wizards;
    std::deque<bool> connects;
    bool connectResumes = false;

    void showSplash() override { events << QStringLiteral("splash"); }
    void closeSplash() override { events << QStringLiteral("splash closed"); }
    void setStartFolder(const QString& folder) override {
        events << QStringLiteral("folder ") + folder;
    }
    LoginResult showLogin() override {
        events << QStringLiteral("login");
        return take(logins);
    }
    bool showWizard() override {
        events << QStringLiteral("wizard");
        return take(wizards);
    }
    void showMain() override { events << QStringLiteral("main"); }
    bool ConnectDatabase(bool& resumed) override {
        events << QStringLiteral("connect");
        resumed = connectResumes;
        return take(connects);
    }
    void ReportAfterLogin(bool resumed) override {
        events << QStringLiteral("report %1").arg(resumed);
    }
    void RecordLogin(bool resumed) override { events << QStringLiteral("record %1").arg(resumed); }

  private:
    template <typename Value>
    static Value take(std::deque<Value>& queue) {
        const Value value = queue.at(0);
        queue.pop_front();
        return value;
    }
};

class SessionFlowTest : public ::testing::Test {
  protected:
    StartChecks checks() {
        return {[this] {
                    if (throwing) {
                        throw std::runtime_error("lock");
                    }
                    return isOnly;
                },
                [this] { return hasInfo; }, [this] { return selfTest; },
                [this] {
                    script.events << QStringLiteral("users");
                    return notices;
                }};
    }
    bool run(const QString& commandLine = {}) {
        Main main(prompt, script, script, checks());
        return main.run(commandLine);
    }

    ScriptedPrompt prompt;
    Script script;
    bool isOnly = true;
    bool throwing = false;
    bool hasInfo = true;
    QString selfTest;
    QStringList notices;
};

TEST_F(SessionFlowTest, LoopsOverLoginUntilADatabaseIsOpen) {
    script.logins = {LoginResult::Wizard, LoginResult::LogIn, LoginResult::LogIn};
    script.wizards = {false};
    script.connects = {false, true};
    notices = {QStringLiteral("a"), QStringLiteral("b")};
    prompt.onShown = [this] { EXPECT_EQ(script.events.size(), 3) << "behind the splash"; };
    EXPECT_TRUE(run());
    EXPECT_EQ(prompt.takeTexts(), notices);
    EXPECT_EQ(script.events.join(QLatin1Char(',')),
              QStringLiteral("splash,users,splash closed,folder ,login,wizard,login,connect,login,"
                             "connect,report 0,record 0,main"));
}

TEST_F(SessionFlowTest, AUserMadeAfterAFailedRecoveryIsNotRecordedAsRecovered) {
    script.logins = {LoginResult::LogIn, LoginResult::Wizard};
    script.connectResumes = true;
    script.connects = {false};
    script.wizards = {true};
    EXPECT_TRUE(run());
    EXPECT_EQ(script.events.mid(4).join(QLatin1Char(',')),
              QStringLiteral("login,connect,login,wizard,record 0,main"));
}

TEST_F(SessionFlowTest, EachFailedCheckSaysWhyBehindAClosedSplash) {
    selfTest = QStringLiteral("AES");
    EXPECT_FALSE(run());
    hasInfo = false;
    EXPECT_FALSE(run());
    isOnly = false;
    EXPECT_FALSE(run());
    const QStringList texts = prompt.takeTexts();
    ASSERT_EQ(texts.size(), 3);
    EXPECT_EQ(texts[0],
              QStringLiteral("您的计算机尚未正确配置SQLCipher 数据库引擎，加载失败。\r\nAES"));
    EXPECT_EQ(texts[1], QStringLiteral("获取操作系统的环境信息出错，程序无法正常使用！"));
    EXPECT_EQ(texts[2], QStringLiteral("已有实例在运行，本程序每次只允许一个用户登录。"));
    throwing = true;
    EXPECT_THROW((void)run(), std::runtime_error);
    EXPECT_EQ(script.events.count(QStringLiteral("splash closed")), 4);
    EXPECT_FALSE(script.events.contains(QStringLiteral("login")));
}

TEST_F(SessionFlowTest, CommandLineNamesADatabaseInItsOwnFolder) {
    QTemporaryDir dir;
    const QString folder = dir.filePath(QStringLiteral("MORV - 张 三"));
    ASSERT_TRUE(QDir().mkpath(folder));
    const QString path = folder + QStringLiteral("/张 三.kvdb");
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();

    // A file of no bytes is no database, and nothing is said of it.
    EXPECT_FALSE(run(path));
    EXPECT_TRUE(prompt.boxes.empty());

    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("x");
    file.close();
    for (const QString& line : {path, QLatin1Char('"') + path + QLatin1Char('"')}) {
        script.events.clear();
        script.logins = {LoginResult::End};
        EXPECT_FALSE(run(line));
        EXPECT_TRUE(script.events.contains(QStringLiteral("folder ") + folder));
    }

    ASSERT_TRUE(QFile::rename(path, folder + QStringLiteral("/李四.kvdb")));
    script.events.clear();
    EXPECT_FALSE(run(folder + QStringLiteral("/李四.kvdb")));
    EXPECT_EQ(prompt.takeTexts(),
              QStringList{QStringLiteral(
                  "密码数据库未有正确处于前缀名为“MORV - ”的私人文件夹中，不能登录！")});
    EXPECT_FALSE(script.events.contains(QStringLiteral("login")));
}

}  // namespace
}  // namespace keeper
