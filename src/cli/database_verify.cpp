// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/program_info.h"
#include "app/settings.h"
#include "cli/console.h"
#include "cli/database_commands.h"
#include "cli/database_copy.h"
#include "guard/os_info.h"
#include "guard/sw_protect.h"
#include "platform/clock.h"
#include "platform/linux/linux_machine.h"

namespace keeper::cli {
namespace {

/// The copy is thrown away, so nothing is worth migrating in it.
class NoUpgrades final : public DatabaseUpgrades {
  public:
    bool UpgradeEntries(int /*revision*/) override { return true; }
    bool UpgradeSettings(int /*revision*/) override { return true; }
    bool UpgradePrograms() override { return true; }
    void Undone() override {}
};

/// The guard's own words tell of a destruction that a login would bring about; none happens here.
QString wordsFor(std::int32_t verdict) {
    switch (verdict) {
        case GuardVerdict::kExpired:
            return QStringLiteral("在分机上的有效期已过，要到原新建机器登录");
        case GuardVerdict::kWrongVersion:
            return QStringLiteral("版本与程序不匹配，不能登录");
        case GuardVerdict::kClockSetBack:
            return QStringLiteral("本机的日期早于上次登录，现在不能登录");
        case GuardVerdict::kWrongMachine:
            return QStringLiteral("已限定在其它机器上，在本机登录会被销毁");
        case GuardVerdict::kTampered:
            return QStringLiteral("保护记录被改动过，登录会被销毁");
        default:
            return QStringLiteral("无法检查");
    }
}

class Check {
  public:
    explicit Check(const Arguments& arguments)
        : m_copy(arguments.paths.first(), arguments.keyFile) {}

    [[nodiscard]] bool run() {
        m_lines << (m_copy.isOldScheme() ? QStringLiteral("密钥：正确（旧方案，登录后会更新）")
                                         : QStringLiteral("密钥：正确"));
        m_lines << QStringLiteral("数据页：完好");
        checkStructure();
        checkSettings();
        checkGuard();
        m_copy.heedSignals();
        return m_isSound;
    }
    [[nodiscard]] const QStringList& lines() const { return m_lines; }

  private:
    void note(const QString& what, const QString& fault, const QString& sound) {
        m_lines << what + (fault.isEmpty() ? sound : printable(fault));
        m_isSound = m_isSound && fault.isEmpty();
    }
    void checkStructure() {
        const QString fault = m_copy.connection().checkIntegrity();
        note(QStringLiteral("结构："), fault, QStringLiteral("完好"));
    }
    void checkSettings() {
        Settings settings(m_copy.connection(), m_copy.prompt(), m_clock);
        QString message;
        const bool isRead = settings.ReadDB(message);
        note(QStringLiteral("设置："), isRead ? QString() : QStringLiteral("无法读取"),
             QStringLiteral("完好"));
    }
    /// In the order of a login. The judgement writes, which only the copy sees.
    void checkGuard() {
        LinuxMachine machine(LinuxMachine::systemSources(UserFolders::ofSystem().registry()));
        OSInfo osInfo(machine, m_copy.prompt());
        NoUpgrades upgrades;
        SWProtect guard(
            {m_copy.connection(), m_clock, m_copy.random(), m_copy.prompt(), osInfo, upgrades},
            programVersion());
        const QString what = QStringLiteral("保护：");
        if (!osInfo.Initialize() || !guard.ReadDB()) {
            note(what, wordsFor(GuardVerdict::kUnexpected), {});
            return;
        }
        m_lines << QStringLiteral("版本：") + printable(guard.GetDBVersion());
        GuardVerdict verdict = guard.Initialize();
        if (verdict.ok) {
            verdict = guard.ExamineDBVersion();
        }
        note(what, verdict.ok ? QString() : wordsFor(verdict.errorNumber),
             guard.p_isOnBranch() ? QStringLiteral("可以在本机登录（分机）")
                                  : QStringLiteral("可以在本机登录（原新建机器）"));
    }

    DatabaseCopy m_copy;
    SystemClock m_clock;
    QStringList m_lines;
    bool m_isSound = true;
};

}  // namespace

int runVerify(const Arguments& arguments) {
    Check check(arguments);
    const bool isSound = check.run();
    printLines(check.lines());
    return isSound ? kDone : kFailed;
}

}  // namespace keeper::cli
