// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "guard/guard_record.h"

#include "platform/database.h"
#include "store/failure.h"

namespace keeper {
namespace {

/// Runs an update whose last parameter is the row; anything but one changed row is a failure, since
/// a guard value that was not kept must not be believed.
void updateRow(Statement& statement, int lastParameter, std::int64_t rowId) {
    statement.bind(lastParameter, rowId);
    if (statement.run() != 1) {
        throw KeeperError(0, QStringLiteral("cSWProtect"),
                          QStringLiteral("数据库保护记录不存在，无法更新。"));
    }
}

/// The day alone, not by way of a local time: where summer time begins at midnight, the first
/// minute of such a day does not exist, and a date that moved would break its seal.
QDate readDay(const Statement& row, int column) {
    constexpr qsizetype kDay = 10;
    return QDate::fromString(row.text(column).left(kDay), Qt::ISODate);
}

HardwareTag readTag(const Statement& row, int column) {
    return {row.text(column), row.text(column + 1), row.text(column + 2)};
}

Seal readSeal(const Statement& row, int column) {
    return {row.text(column), row.text(column + 1)};
}

}  // namespace

GuardRecord GuardRecord::read(Database& database) {
    // Brackets, since a quoted name that the table lacks would silently become a text.
    Statement row(database,
                  "select rowid, [01], [02], [03], [04], [05], [06], [08], [09], [11], [12], [13],"
                  " [14], [15], [16], [17], [18], [19], [20], [21], [22], [23], [24], [25], [26]"
                  " from tb_SWProtect order by rowid limit 1");
    if (!row.step()) {
        throw KeeperError(0, QStringLiteral("cSWProtect"),
                          QStringLiteral("数据库保护记录不存在。"));
    }
    GuardRecord record;
    record.rowId = row.integer(0);
    record.dbId = row.text(1);
    record.version = row.text(2);
    record.autoRenew = row.flag(3);
    record.lifetimeDays = row.integer(4);
    record.branchDays = row.integer(5);
    record.originDays = row.integer(6);
    record.branchEnd = readDay(row, 7);
    record.originEnd = readDay(row, 8);
    record.branchTag = readTag(row, 9);
    record.originTag = readTag(row, 12);
    record.branchDaysSeal = readSeal(row, 15);
    record.branchTagSeal = readSeal(row, 17);
    record.originDaysSeal = readSeal(row, 19);
    record.originTagSeal = readSeal(row, 21);
    record.versionSeal = readSeal(row, 23);
    return record;
}

void GuardRecord::writeId(Database& database) const {
    Statement statement(database, "update tb_SWProtect set [01]=? where rowid=?");
    statement.bind(1, dbId);
    updateRow(statement, 2, rowId);
}

void GuardRecord::writeVersion(Database& database) const {
    Statement statement(database, "update tb_SWProtect set [02]=?, [25]=?, [26]=? where rowid=?");
    statement.bind(1, version).bind(2, versionSeal.password).bind(3, versionSeal.digest);
    updateRow(statement, 4, rowId);
}

void GuardRecord::writeLifetime(Database& database) const {
    Statement statement(database, "update tb_SWProtect set [03]=?, [04]=? where rowid=?");
    statement.bind(1, autoRenew).bind(2, lifetimeDays);
    updateRow(statement, 3, rowId);
}

void GuardRecord::writeBranchDays(Database& database) const {
    Statement statement(database,
                        "update tb_SWProtect set [05]=?, [08]=?, [17]=?, [18]=? where rowid=?");
    statement.bind(1, branchDays).bind(2, branchEnd);
    statement.bind(3, branchDaysSeal.password).bind(4, branchDaysSeal.digest);
    updateRow(statement, 5, rowId);
}

void GuardRecord::writeOriginDays(Database& database) const {
    Statement statement(database,
                        "update tb_SWProtect set [06]=?, [09]=?, [21]=?, [22]=? where rowid=?");
    statement.bind(1, originDays).bind(2, originEnd);
    statement.bind(3, originDaysSeal.password).bind(4, originDaysSeal.digest);
    updateRow(statement, 5, rowId);
}

void GuardRecord::writeBranchTag(Database& database) const {
    Statement statement(
        database, "update tb_SWProtect set [11]=?, [12]=?, [13]=?, [19]=?, [20]=? where rowid=?");
    statement.bind(1, branchTag.bios).bind(2, branchTag.cpu).bind(3, branchTag.disk);
    statement.bind(4, branchTagSeal.password).bind(5, branchTagSeal.digest);
    updateRow(statement, 6, rowId);
}

void GuardRecord::writeOriginTag(Database& database) const {
    Statement statement(
        database, "update tb_SWProtect set [14]=?, [15]=?, [16]=?, [23]=?, [24]=? where rowid=?");
    statement.bind(1, originTag.bios).bind(2, originTag.cpu).bind(3, originTag.disk);
    statement.bind(4, originTagSeal.password).bind(5, originTagSeal.digest);
    updateRow(statement, 6, rowId);
}

}  // namespace keeper
