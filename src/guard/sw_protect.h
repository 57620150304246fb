// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QDate>
#include <QString>
#include <cstdint>
#include <functional>

#include "guard/guard_record.h"
#include "guard/guard_seal.h"
#include "guard/hardware_tag.h"

namespace keeper {

class Clock;
class Database;
class OSInfo;
class Prompt;
class Random;

/// The migrations that an older database needs. Each returns false (and has told why) when it
/// failed, and has written to the open database when it returns true. All run in a transaction.
class DatabaseUpgrades {
  public:
    virtual ~DatabaseUpgrades() = default;
    /// Reduced locations of entries, of databases 3.2.0 to 3.2.2.
    virtual bool UpgradeEntries(int revision) = 0;
    /// Settings whose meaning changed, of databases 3.2.3 to 3.2.5.
    virtual bool UpgradeSettings(int revision) = 0;
    /// Locations of programs, of databases from 3.2.6 on.
    virtual bool UpgradePrograms() = 0;
    /// The transaction around a migration was rolled back: what it changed in memory is void.
    virtual void Undone() = 0;
};

/// How the guard judges a login.
struct GuardVerdict {
    // The numbers of the session's error table. Only Condemned numbers destroy data.
    static constexpr std::int32_t kExpired = 1;
    static constexpr std::int32_t kWrongVersion = 2;
    static constexpr std::int32_t kClockSetBack = 3;
    static constexpr std::int32_t kWrongMachine = 5;
    static constexpr std::int32_t kTampered = 6;
    /// The guard could not do its work (engine, disk, memory); it has been told. The number of the
    /// engine is not passed on: its BUSY is 5 and its LOCKED 6.
    static constexpr std::int32_t kUnexpected = -2147467259;

    bool ok = false;
    std::int32_t errorNumber = 0;
    QString message;

    [[nodiscard]] bool isCondemned() const {
        return !ok && (errorNumber == kWrongMachine || errorNumber == kTampered);
    }
};

/// Binds the open database to the machines on which it may be used and tells when it may no longer
/// be used. Each value that it keeps in the database (tb_SWProtect) is sealed.
///
/// The order of a login: ReadDB(), Initialize(), ExamineDBVersion(). Of a new database: ReadDB(),
/// NewBuild(). Every operation that writes does so in one transaction; when it fails it has told
/// why, and database and members are as before.
class SWProtect {
  public:
    struct Ports {
        Database& database;
        Clock& clock;
        Random& random;
        Prompt& prompt;
        OSInfo& osInfo;
        DatabaseUpgrades& upgrades;
    };
    /// The greatest lifetime on branch machines, in days.
    static constexpr int kMaxLifetime = 99;

    /// `programVersion` is three numbers below 256 joined by points.
    SWProtect(const Ports& ports, QString programVersion);

    /// False when the row cannot be read; the failure has been shown.
    [[nodiscard]] bool ReadDB();
    /// After a false ReadDB(): true when the engine could not get at the data (input and output, a
    /// lock, memory, a damaged page), false when the database reads well but lacks what it must
    /// hold. Only the latter is a fault of the database.
    [[nodiscard]] bool p_isUnreadable() const { return m_isUnreadable; }

    /// The login judgement over machine and clock.
    [[nodiscard]] GuardVerdict Initialize();
    /// The login judgement over the version, with the upgrade. A non-empty message with `ok` tells
    /// of an upgrade that has been run: the caller stamps the database. Closes the database when it
    /// has been tampered with.
    [[nodiscard]] GuardVerdict ExamineDBVersion();

    /// Fills the guard of a new database.
    bool NewBuild();
    /// Confines the database to this machine (besides the origin), or lifts the confinement.
    bool LockOntoBrch(bool lock);
    /// 0 .. kMaxLifetime; the lifetime ends so many days from the day of the login.
    bool SetBranchDeadCount(int days);
    bool ManageBranchLogin(int days, bool autoRenew);
    bool SetDBVersionAsApp();
    /// Exchanges origin and branch.
    bool SwitchMachine();

    /// "v" and the version of the database.
    [[nodiscard]] QString GetDBVersion() const;
    [[nodiscard]] const QString& p_dbID() const { return m_record.dbId; }
    [[nodiscard]] bool p_isOnBranch() const { return m_isOnBranch; }
    [[nodiscard]] bool p_isBrchConfined() const;
    [[nodiscard]] bool p_areOrgBrchSame() const;
    /// Days that are left on branch machines.
    [[nodiscard]] int deadCount() const { return static_cast<int>(m_record.branchDays); }
    /// The lifetime that the user set, in days, whatever a hand wrote into its field.
    [[nodiscard]] int p_lifetimeDays() const;
    [[nodiscard]] bool p_autoRenew() const { return m_record.autoRenew; }
    [[nodiscard]] const HardwareTag& p_branchTag() const { return m_record.branchTag; }

    /// Sets the branch tag to any machine's, to put back what a dispatch lifted.
    bool SetBrchHardwareTag(const HardwareTag& tag);

  private:
    /// Ends an operation whose inner step has failed and told why.
    struct StepFailed {};
    static void needStep(bool ok);

    bool CreateDBID();
    bool SetOriginDeadCount(int days);
    bool SetOrgHardwareTag(const HardwareTag& tag);

    [[nodiscard]] bool VerifyBranchDeadCount();
    [[nodiscard]] bool VerifyOriginDeadCount();
    [[nodiscard]] bool VerifyHardwareTag(bool origin);
    [[nodiscard]] bool VerifyVersion();

    void judge();
    void judgeOriginCount();
    void judgeLifetimeOnOrigin();
    void judgeLifetimeOnBranch();
    /// Text that tells the upgrade; empty when it failed, which has been told.
    [[nodiscard]] QString upgradeFrom(int minorNo, int revision);

    /// Runs `operation` in a transaction; on failure it is told, undone in the database and in the
    /// members, and the result is false.
    bool change(const QString& where, const std::function<void()>& operation);
    [[nodiscard]] QDate today();

    Ports m_ports;
    QString m_programVersion;
    SealMaker m_seals;
    GuardRecord m_record;
    /// The day on which the guard ran: one login counts from one day, also past midnight.
    QDate m_today;
    bool m_isOnBranch = false;
    bool m_isUnreadable = false;
};

}  // namespace keeper
