// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QDate>
#include <QString>
#include <cstdint>

#include "guard/guard_seal.h"
#include "guard/hardware_tag.h"

namespace keeper {

class Database;

/// The one row of tb_SWProtect. Numbers are read as they stand, also beyond their column's range:
/// the seals tell whether they are genuine.
struct GuardRecord {
    std::int64_t rowId = 0;
    QString dbId;
    QString version;
    bool autoRenew = false;
    std::int64_t lifetimeDays = 0;
    std::int64_t branchDays = 0;
    std::int64_t originDays = 0;
    QDate branchEnd;
    QDate originEnd;
    HardwareTag branchTag;
    HardwareTag originTag;
    Seal branchDaysSeal;
    Seal branchTagSeal;
    Seal originDaysSeal;
    Seal originTagSeal;
    Seal versionSeal;

    /// Throws KeeperError when the table has no row, DatabaseError when it cannot be read.
    [[nodiscard]] static GuardRecord read(Database& database);

    // Each writes its fields in one update of the row and throws when not exactly that row changed.
    void writeId(Database& database) const;
    void writeVersion(Database& database) const;
    void writeLifetime(Database& database) const;
    void writeBranchDays(Database& database) const;
    void writeOriginDays(Database& database) const;
    void writeBranchTag(Database& database) const;
    void writeOriginTag(Database& database) const;
};

}  // namespace keeper
