// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QDateTime>
#include <QString>
#include <cstdint>

namespace keeper {

class Database;

/// Written into the header of every database file (PRAGMA application_id, "MORV").
constexpr std::int32_t kApplicationId = 0x4D4F5256;
/// PRAGMA user_version: number of the layout below. It is not the version that people see.
constexpr std::int32_t kSchemaVersion = 1;

/// Name of the built-in row of tb_AssPwd and tb_AssNum, to which entries with a value of their own
/// are bound.
inline const QString kCustomName = QStringLiteral("自定义");

/// Makes all tables, indexes and the rows that each new database starts with, in one transaction.
/// `now` dates the example entry. REQUIRES: an open, empty database.
///
/// What the tables promise (docs/file-format.md has every column):
/// - Types, ranges and the form of numbers are CHECK constraints; a wrong value fails its
/// statement.
/// - parentDir always is dirPath without its last pair (a big class is its own parent), so no row
///   can become unreachable.
/// - Deleting a directory deletes all below it: subdirectories, entries, companion rows. Changing
///   the number of a directory changes the numbers of its entries and companion rows.
/// - Changing dirPath alone, or that of a directory with subdirectories, is refused. To move a
///   subtree, open one Transaction and update its directories deepest first, each in one statement
///   that sets both dirPath and parentDir; the reference to the parent is only looked at on commit,
///   and the entries follow by themselves. A new number in use fails the statement.
/// - Renaming an associated password renames the binding of its entries, deleting it deletes them.
///   Renaming an associated number renames the binding; deleting one that is bound is refused.
/// - tb_EntLog and tb_SysLog are tied to nothing.
/// - Entries are written before their companion row.
void createSchema(Database& database, const QDateTime& now);

}  // namespace keeper
