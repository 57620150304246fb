// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "guard/sw_protect.h"

#include <algorithm>
#include <utility>

#include "guard/os_info.h"
#include "platform/clock.h"
#include "platform/database.h"
#include "platform/prompt.h"
#include "platform/random.h"
#include "store/failure.h"

namespace keeper {
void SWProtect::needStep(bool ok) {
    if (!ok) {
        throw StepFailed();
    }
}

SWProtect::SWProtect(const Ports& ports, QString programVersion)
    : m_ports(ports), m_programVersion(std::move(programVersion)), m_seals(ports.random) {}

bool SWProtect::ReadDB() {
    m_isUnreadable = false;
    return guarded(m_ports.prompt, QStringLiteral("cSWProtect.ReadDB"), false, [this] {
        try {
            m_record = GuardRecord::read(m_ports.database);
        } catch (const DatabaseError& error) {
            // The engine's generic error is what a missing table or column gives.
            constexpr int kPrimaryCode = 0xFF;
            constexpr int kGenericError = 1;
            m_isUnreadable = (error.number() & kPrimaryCode) != kGenericError;
            throw;
        } catch (const KeeperError&) {
            throw;
        } catch (...) {
            m_isUnreadable = true;
            throw;
        }
        return true;
    });
}

bool SWProtect::NewBuild() {
    m_today = m_ports.clock.today();
    return change(QStringLiteral("cSWProtect.NewBuild"), [this] {
        needStep(CreateDBID());
        needStep(ManageBranchLogin(kMaxLifetime, true));
        needStep(SetOrgHardwareTag(m_ports.osInfo.tag()));
        needStep(SetBrchHardwareTag(HardwareTag::none()));
        needStep(SetOriginDeadCount(SealMaker::kMaxDays));
        needStep(SetBranchDeadCount(kMaxLifetime));
        needStep(SetDBVersionAsApp());
        m_isOnBranch = false;
    });
}

bool SWProtect::LockOntoBrch(bool lock) {
    return SetBrchHardwareTag(lock ? m_ports.osInfo.tag() : HardwareTag::none());
}

bool SWProtect::ManageBranchLogin(int days, bool autoRenew) {
    return change(QStringLiteral("cSWProtect.ManageBranchLogin"), [&] {
        needStep(SetBranchDeadCount(days));
        m_record.autoRenew = autoRenew;
        m_record.lifetimeDays = days;
        m_record.writeLifetime(m_ports.database);
    });
}

bool SWProtect::SwitchMachine() {
    return change(QStringLiteral("cSWProtect.SwitchMachine"), [this] {
        const HardwareTag origin = m_record.originTag;
        const HardwareTag branch = m_record.branchTag;
        needStep(SetOrgHardwareTag(branch));
        needStep(SetBrchHardwareTag(origin));
        // The seals of the version and of the origin count contain the origin's tag.
        needStep(SetDBVersionAsApp());
        needStep(SetOriginDeadCount(static_cast<int>(m_record.originDays)));
        m_isOnBranch = !m_isOnBranch;
    });
}

bool SWProtect::CreateDBID() {
    constexpr std::uint32_t kNumbers = 1'000'000;
    constexpr int kDigits = 6;
    return change(QStringLiteral("cSWProtect.CreateDBID"), [this] {
        // The identity is made once: logs and backups of a database are known by it.
        if (!m_record.dbId.isEmpty()) {
            return;
        }
        m_record.dbId = QStringLiteral("ZC%1").arg(m_ports.random.below(kNumbers), kDigits, 10,
                                                   QLatin1Char('0'));
        m_record.writeId(m_ports.database);
    });
}

bool SWProtect::SetBranchDeadCount(int days) {
    return change(QStringLiteral("cSWProtect.SetBranchDeadCount"), [&] {
        if (days < 0 || days > kMaxLifetime) {
            throw KeeperError(0, QStringLiteral("cSWProtect"),
                              QStringLiteral("分机存活期须在0至99天之间。"));
        }
        m_record.branchDays = days;
        m_record.branchEnd = today().addDays(days);
        m_record.branchDaysSeal =
            m_seals.make(m_seals.branchDaysText(days, m_record.branchEnd), days);
        m_record.writeBranchDays(m_ports.database);
    });
}

bool SWProtect::SetOriginDeadCount(int days) {
    return change(QStringLiteral("cSWProtect.SetOriginDeadCount"), [&] {
        m_record.originDays = days;
        m_record.originEnd = today().addDays(days);
        m_record.originDaysSeal = m_seals.make(
            m_seals.originDaysText(days, m_record.originEnd, m_record.originTag), days);
        m_record.writeOriginDays(m_ports.database);
    });
}

bool SWProtect::SetOrgHardwareTag(const HardwareTag& tag) {
    return change(QStringLiteral("cSWProtect.SetOrgHardwareTag"), [&] {
        m_record.originTag = tag;
        m_record.originTagSeal = m_seals.make(tag.text(), static_cast<int>(tag.text().size()));
        m_record.writeOriginTag(m_ports.database);
    });
}

bool SWProtect::SetBrchHardwareTag(const HardwareTag& tag) {
    return change(QStringLiteral("cSWProtect.SetBrchHardwareTag"), [&] {
        m_record.branchTag = tag;
        m_record.branchTagSeal = m_seals.make(tag.text(), static_cast<int>(tag.text().size()));
        m_record.writeBranchTag(m_ports.database);
    });
}

bool SWProtect::SetDBVersionAsApp() {
    return change(QStringLiteral("cSWProtect.SetDBVersionAsApp"), [this] {
        const QString text = SealMaker::versionText(m_programVersion, m_record.originTag);
        m_record.version = m_programVersion;
        m_record.versionSeal = m_seals.make(text, static_cast<int>(text.size()));
        m_record.writeVersion(m_ports.database);
    });
}

QString SWProtect::GetDBVersion() const {
    return QLatin1Char('v') + m_record.version;
}

bool SWProtect::p_isBrchConfined() const {
    const HardwareTag none = HardwareTag::none();
    return m_record.branchTag != none;
}

bool SWProtect::p_areOrgBrchSame() const {
    return m_record.branchTag == m_record.originTag;
}

int SWProtect::p_lifetimeDays() const {
    return static_cast<int>(std::clamp<std::int64_t>(m_record.lifetimeDays, 0, kMaxLifetime));
}

bool SWProtect::change(const QString& where, const std::function<void()>& operation) {
    const GuardRecord before = m_record;
    const bool wasOnBranch = m_isOnBranch;
    const auto restore = [&] {
        m_record = before;
        m_isOnBranch = wasOnBranch;
    };
    try {
        Transaction transaction(m_ports.database);
        operation();
        transaction.commit();
        return true;
    } catch (const StepFailed&) {
        restore();
    } catch (...) {
        restore();
        m_ports.prompt.messageBox(failureText(currentFailure(), where), Prompt::Icon::Critical);
    }
    return false;
}

QDate SWProtect::today() {
    if (!m_today.isValid()) {
        m_today = m_ports.clock.today();
    }
    return m_today;
}

}  // namespace keeper
