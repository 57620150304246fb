// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <vector>

#include "store/store_context.h"

namespace keeper {

class EntLogs;

/// A password that many entries share by its name; a row of tb_AssPwd.
class AssPwd {
  public:
    QString m_Name;
    /// Plain in memory; wiped at the end.
    QString m_Content;
    int m_Length = 0;
    QDateTime m_updateTime;
    /// False keeps it bound and hides it from the lists that offer names.
    bool m_Effective = true;

    AssPwd() = default;
    AssPwd(const AssPwd&) = default;
    AssPwd(AssPwd&&) noexcept = default;
    AssPwd& operator=(const AssPwd&) = default;
    AssPwd& operator=(AssPwd&&) noexcept = default;
    ~AssPwd();
    AssPwd& Copy(const AssPwd& other) { return *this = other; }
};

/// A row of the association manager: Content as the column holds it, cipher text included.
struct AssPwdTotal {
    AssPwd row;
    /// Entries bound to it.
    int Total = 0;
};

/// The table of associated passwords. Names are compared exactly. Failures are shown as
/// "[number]AssPwds.Operation:" (GetEntBoundedPwd as "Entries.GetEntBoundedPwd") and give the
/// default result; nothing is changed then. The reserved row is never changed or deleted.
class AssPwds {
  public:
    /// REQUIRES: `entLogs` outlives this object.
    AssPwds(const StoreContext& context, EntLogs& entLogs)
        : m_context(context), m_entLogs(entLogs) {}

    /// Names of the effective rows, ascending, the reserved one included. Returns their count.
    int DisplayNames(QStringList& names);
    /// An object with empty fields when there is no such row.
    [[nodiscard]] AssPwd Search(const QString& name);
    bool Add(const AssPwd& object);
    /// Appends a list-box line for each entry bound to the name, by number. Returns their count.
    int GetEntBoundedPwd(const QString& name, QStringList& lines);
    /// True when the row went, and all entries bound to it with it.
    bool Delete(const QString& name);
    /// Writes the row of `before`. A new name reaches the bound entries. A new content also writes
    /// the old one to the entry log of each bound entry and restarts its reminder, all in one
    /// transaction.
    bool Modify(const AssPwd& before, const AssPwd& after);
    /// Every row with the count of its entries, by name. Returns the number of rows.
    int DisplayAll(std::vector<AssPwdTotal>& rows);

  private:
    /// A history row for each bound entry. Throws on failure.
    void addHistory(const AssPwd& before);

    StoreContext m_context;
    EntLogs& m_entLogs;
};

}  // namespace keeper
