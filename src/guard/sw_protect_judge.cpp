// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

// The judgements of SWProtect over machine, clock and version at a login.

#include <QStringList>
#include <algorithm>
#include <optional>

#include "guard/os_info.h"
#include "guard/sw_protect.h"
#include "platform/clock.h"
#include "platform/database.h"
#include "platform/prompt.h"
#include "store/failure.h"

namespace keeper {
namespace {

/// The verdict against a login. Its own type: no number that another layer throws can become a
/// verdict, and so destroy data, by accident.
struct Rejection {
    std::int32_t number;
    int detail = 0;
};

QString rejectionMessage(const Rejection& rejection) {
    switch (rejection.number) {
        case GuardVerdict::kExpired:
            return QStringLiteral(
                "本数据库在分机的有效期已过，不能再使用！请到原新建机器登录以更新有效期。");
        case GuardVerdict::kClockSetBack:
            return QStringLiteral("你所在计算机的日期时间异常，请勿提前操作系统的日期时间！");
        case GuardVerdict::kWrongMachine:
            return QStringLiteral("本数据库不在其所限定的计算机中使用，已被紧急销毁！");
        default:
            return QStringLiteral("本密码数据库遭遇非法入侵，已被紧急销毁！(%1)")
                .arg(rejection.detail);
    }
}

/// No count on file, whoever wrote it, gives more than the greatest lifetime.
int lifetimeOf(qint64 daysLeft) {
    return static_cast<int>(std::clamp<qint64>(daysLeft, 0, SWProtect::kMaxLifetime));
}

struct Version {
    int majorNo = 0;
    int minorNo = 0;
    int revision = 0;
};

/// Three numbers of a byte each, joined by points.
std::optional<Version> parseVersion(const QString& text) {
    constexpr int kByte = 255;
    const QStringList parts = text.split(QLatin1Char('.'));
    if (parts.size() != 3) {
        return std::nullopt;
    }
    int numbers[3] = {};
    for (int i = 0; i < 3; ++i) {
        bool isNumber = false;
        numbers[i] = parts.at(i).toInt(&isNumber);
        if (!isNumber || numbers[i] < 0 || numbers[i] > kByte) {
            return std::nullopt;
        }
    }
    return Version{numbers[0], numbers[1], numbers[2]};
}

}  // namespace

GuardVerdict SWProtect::Initialize() {
    m_today = m_ports.clock.today();
    try {
        judge();
        return {true, 0, {}};
    } catch (const Rejection& rejection) {
        return {false, rejection.number, rejectionMessage(rejection)};
    } catch (const StepFailed&) {
        return {false, GuardVerdict::kUnexpected, {}};
    } catch (...) {
        const Failure failure = currentFailure();
        m_ports.prompt.messageBox(failureText(failure, QStringLiteral("cSWProtect.Initialize")),
                                  Prompt::Icon::Critical);
        return {false, GuardVerdict::kUnexpected, failure.description};
    }
}

void SWProtect::judge() {
    if (!m_ports.osInfo.tag().isComplete()) {
        // Comparing half a fingerprint could condemn a database on its own machine.
        throw KeeperError(0, QStringLiteral("cSWProtect"),
                          QStringLiteral("无法取得本计算机的硬件标识。"));
    }
    judgeOriginCount();
    m_isOnBranch = !VerifyHardwareTag(true);
    if (!m_isOnBranch) {
        judgeLifetimeOnOrigin();
    } else if (!p_isBrchConfined()) {
        judgeLifetimeOnBranch();
    } else if (!VerifyHardwareTag(false)) {
        throw Rejection{GuardVerdict::kWrongMachine};
    }
}

void SWProtect::judgeOriginCount() {
    constexpr int kDetail = 2;
    if (!VerifyOriginDeadCount()) {
        throw Rejection{GuardVerdict::kTampered, kDetail};
    }
    const qint64 left = m_today.daysTo(m_record.originEnd);
    if (left > m_record.originDays) {
        throw Rejection{GuardVerdict::kClockSetBack};
    }
    needStep(SetOriginDeadCount(static_cast<int>(std::max<qint64>(left, 0))));
}

void SWProtect::judgeLifetimeOnOrigin() {
    if (m_record.autoRenew) {
        needStep(SetBranchDeadCount(p_lifetimeDays()));
        return;
    }
    const qint64 left = m_today.daysTo(m_record.branchEnd);
    if (left <= m_record.branchDays) {
        needStep(SetBranchDeadCount(lifetimeOf(left)));
    }
}

void SWProtect::judgeLifetimeOnBranch() {
    constexpr int kDetail = 4;
    if (!VerifyBranchDeadCount()) {
        throw Rejection{GuardVerdict::kTampered, kDetail};
    }
    const qint64 left = m_today.daysTo(m_record.branchEnd);
    if (left > m_record.branchDays) {
        throw Rejection{GuardVerdict::kClockSetBack};
    }
    needStep(SetBranchDeadCount(lifetimeOf(left)));
    if (left < 1) {
        throw Rejection{GuardVerdict::kExpired};
    }
}

bool SWProtect::VerifyBranchDeadCount() {
    constexpr int kByte = 255;
    if (m_record.branchDays < 0 || m_record.branchDays > kByte || !m_record.branchEnd.isValid()) {
        return false;
    }
    const int days = static_cast<int>(m_record.branchDays);
    return m_seals.holds(m_record.branchDaysSeal, m_seals.branchDaysText(days, m_record.branchEnd),
                         days);
}

bool SWProtect::VerifyOriginDeadCount() {
    if (m_record.originDays < 0 || m_record.originDays > SealMaker::kMaxDays ||
        !m_record.originEnd.isValid()) {
        return false;
    }
    const int days = static_cast<int>(m_record.originDays);
    return m_seals.holds(m_record.originDaysSeal,
                         m_seals.originDaysText(days, m_record.originEnd, m_record.originTag),
                         days);
}

bool SWProtect::VerifyHardwareTag(bool origin) {
    const QString text = m_ports.osInfo.tag().text();
    return m_seals.holds(origin ? m_record.originTagSeal : m_record.branchTagSeal, text,
                         static_cast<int>(text.size()));
}

bool SWProtect::VerifyVersion() {
    const QString text = SealMaker::versionText(m_record.version, m_record.originTag);
    return m_seals.holds(m_record.versionSeal, text, static_cast<int>(text.size()));
}

GuardVerdict SWProtect::ExamineDBVersion() {
    try {
        const auto version = parseVersion(m_record.version);
        if (!VerifyVersion() || !version) {
            m_ports.database.close();
            return {false, GuardVerdict::kTampered,
                    QStringLiteral("本密码数据库遭遇非法入侵，已被紧急销毁！")};
        }
        const auto program = parseVersion(m_programVersion);
        if (!program || version->majorNo != program->majorNo || version->minorNo == 1) {
            return {false, GuardVerdict::kWrongVersion,
                    QStringLiteral("您的数据库版本是%1，与当前程序版本%2不匹配，无法登录！")
                        .arg(GetDBVersion(), m_programVersion)};
        }
        constexpr int kFirstUpgraded = 2;
        constexpr int kLastUpgraded = 3;
        if (version->minorNo < kFirstUpgraded || version->minorNo > kLastUpgraded) {
            return {true, 0, {}};
        }
        return {true, 0, upgradeFrom(version->minorNo, version->revision)};
    } catch (...) {
        const Failure failure = currentFailure();
        m_ports.prompt.messageBox(
            failureText(failure, QStringLiteral("cSWProtect.ExamineDBVersion")),
            Prompt::Icon::Critical);
        return {false, GuardVerdict::kUnexpected, failure.description};
    }
}

QString SWProtect::upgradeFrom(int minorNo, int revision) {
    constexpr int kSettingsFrom = 3;
    constexpr int kSettingsTo = 5;
    const QString told = QStringLiteral("您的数据库版本已升级为v%1！");
    if (minorNo != 2) {
        return told.arg(m_programVersion);
    }
    QString reached = m_programVersion;
    if (revision < kSettingsFrom) {
        reached = QStringLiteral("3.2.3");
    } else if (revision <= kSettingsTo) {
        reached = revision == kSettingsFrom ? QStringLiteral("3.2.4") : QStringLiteral("3.2.6");
    }
    // The stamp goes with the migration: a migrated database under its old number would be migrated
    // again, and settings turned twice.
    const bool ok = change(QStringLiteral("cSWProtect.ExamineDBVersion"), [&] {
        if (revision < kSettingsFrom) {
            needStep(m_ports.upgrades.UpgradeEntries(revision));
        } else if (revision <= kSettingsTo) {
            needStep(m_ports.upgrades.UpgradeSettings(revision));
        } else {
            needStep(m_ports.upgrades.UpgradePrograms());
        }
        needStep(SetDBVersionAsApp());
    });
    if (!ok) {
        m_ports.upgrades.Undone();
        m_ports.prompt.messageBox(QStringLiteral("升级数据库失败！"), Prompt::Icon::Exclamation);
        return {};
    }
    return told.arg(reached);
}

}  // namespace keeper
