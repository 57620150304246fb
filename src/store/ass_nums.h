// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <QStringList>
#include <vector>

#include "store/store_context.h"

namespace keeper {

/// An account number that many entries share by its name; a row of tb_AssNum.
class AssNum {
  public:
    QString m_Name;
    /// Plain in memory; wiped at the end.
    QString m_Content;
    QString m_Type;
    QString m_Comment;
    bool m_Effective = true;

    AssNum() = default;
    AssNum(const AssNum&) = default;
    AssNum(AssNum&&) noexcept = default;
    AssNum& operator=(const AssNum&) = default;
    AssNum& operator=(AssNum&&) noexcept = default;
    ~AssNum();
    AssNum& Copy(const AssNum& other) { return *this = other; }
};

/// A row of the association manager: Content as the column holds it, cipher text included.
struct AssNumTotal {
    AssNum row;
    int Total = 0;
};

/// The table of associated numbers: no history, and deleting one never deletes entries. Names are
/// compared exactly. Failures are shown as "[number]AssNums.Operation:" (GetNetBoundedNum as
/// "AssNums.GetEntBoundedPwd") and give the default result; nothing is changed then. The reserved
/// row is never changed or deleted.
class AssNums {
  public:
    explicit AssNums(const StoreContext& context) : m_context(context) {}

    /// Names of the effective rows, ascending, the reserved one included. Returns their count.
    int DisplayNames(QStringList& names);
    /// An object with empty fields when there is no such row.
    [[nodiscard]] AssNum Search(const QString& name);
    bool Add(const AssNum& object);
    /// A new name reaches the bound entries.
    bool Modify(const QString& oldName, const AssNum& object);
    /// True when the row went. A number that still has entries is refused by the database: rebind
    /// them first.
    bool Delete(const QString& name);
    /// Appends a list-box line for each entry bound to the name, by number. Returns their count.
    int GetNetBoundedNum(const QString& name, QStringList& lines);
    /// True when an entry changed its binding; false without entries is no failure.
    bool NetRebindNewAssNum(const QString& oldName, const QString& newName);
    /// Every row with the count of its entries, by name. Returns the number of rows.
    int DisplayAll(std::vector<AssNumTotal>& rows);

  private:
    StoreContext m_context;
};

}  // namespace keeper
