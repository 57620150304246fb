// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "store/companions.h"

#include <utility>

#include "platform/database.h"
#include "store/column_cipher.h"
#include "store/ent_logs.h"
#include "store/failure.h"
#include "store/numbering.h"
#include "store/schema.h"

namespace keeper {

namespace {

/// Reads columns 0 to 12 of a join, in the order of tb_Entry.
void readEntry(const Statement& statement, const ColumnCipher& cipher, Entry& entry) {
    entry.m_dirPath = statement.text(0);
    entry.m_entNo = statement.text(1);
    entry.m_Title = statement.text(2);
    entry.m_pwdName = statement.text(3);
    entry.m_customPwd = cipher.toPlain(statement.text(4));
    entry.m_Remarks = statement.text(5);
    entry.m_usedTimes = static_cast<std::int32_t>(statement.integer(6));
    entry.m_Effective = statement.flag(7);
    entry.m_Bookmark = statement.flag(8);
    entry.m_createDate = statement.date(9);
    entry.m_recentUpdate = statement.dateTime(10);
    entry.m_recentModPwd = statement.date(11);
    entry.m_modPwdDays = static_cast<std::int16_t>(statement.integer(12));
}

/// Common half, companion and history in one transaction: `writeCommon` tells whether there is an
/// entry to go on with, and both throw on failure. A failure is shown when the transaction is gone,
/// under the name of the half that failed.
template <typename WriteCommon, typename WriteCompanion>
bool writeBoth(const StoreContext& context, const QString& where, const QString& whereCommon,
               const EntLog* history, WriteCommon&& writeCommon, WriteCompanion&& writeCompanion) {
    QString current = where;
    return guardedRun(context.prompt, current, [&] {
        Transaction transaction(context.database);
        current = whereCommon;
        const bool isThere = writeCommon();
        current = where;
        if (isThere) {
            writeCompanion();
            if (history != nullptr) {
                current = QStringLiteral("EntLogs.Add");
                EntLogs(context).insertRow(*history);
            }
            transaction.commit();
        }
    });
}

template <typename Object, typename WriteCompanion>
bool addBoth(const StoreContext& context, Entries& entries, const QString& where,
             const Object& object, const EntLog* history, WriteCompanion&& writeCompanion) {
    const auto writeCommon = [&] {
        entries.insertRow(object);
        return true;
    };
    return writeBoth(context, where, QStringLiteral("Entries.Add"), history, writeCommon,
                     writeCompanion);
}

template <typename Object, typename WriteCompanion>
bool modifyBoth(const StoreContext& context, Entries& entries, const QString& where,
                const QString& oldNo, const Object& object, const EntLog* history,
                WriteCompanion&& writeCompanion) {
    // Without such an entry the new number may belong to another one, whose companion is not to be
    // touched.
    const auto writeCommon = [&] { return entries.updateRow(oldNo, object); };
    return writeBoth(context, where, QStringLiteral("Entries.Modify"), history, writeCommon,
                     writeCompanion);
}

}  // namespace

QString NetEntries::where(const char* operation) const {
    return m_name + QLatin1Char('.') + QLatin1String(operation);
}

bool NetEntries::Add(const NetEntry& object, const EntLog* history) {
    return addBoth(m_context, m_entries, where("Add"), object, history,
                   [&] { writeCompanion(object); });
}

bool NetEntries::Modify(const QString& oldNo, const NetEntry& object, const EntLog* history) {
    return modifyBoth(m_context, m_entries, where("Modify"), oldNo, object, history,
                      [&] { writeCompanion(object); });
}

void NetEntries::writeCompanion(const NetEntry& object) {
    const bool isCustom = object.m_numName == kCustomName;
    Statement(m_context.database,
              "insert or replace into tb_Net (dirPath, entNo, numName, customNum, Location)"
              " values (?, ?, ?, ?, ?)")
        .bind(1, object.m_dirPath)
        .bind(2, object.m_entNo)
        .bind(3, object.m_numName)
        .bind(4, isCustom ? m_context.cipher.toColumn(object.m_customNum) : QStringLiteral(""))
        .bind(5, object.m_Address)
        .run();
}

void NetEntries::search(const QString& number, NetEntry& object) {
    guardedRun(m_context.prompt, where("Search"), [&] {
        Statement statement(m_context.database,
                            "select e.dirPath, e.entNo, e.Title, e.pwdName, e.customPwd, e.Remarks,"
                            " e.usedTimes, e.Effective, e.Bookmark, e.createDate, e.recentUpdate,"
                            " e.recentModPwd, e.modPwdDays, n.numName, n.customNum, n.Location"
                            " from tb_Entry as e inner join tb_Net as n"
                            " on n.dirPath = e.dirPath and n.entNo = e.entNo"
                            " where e.dirPath = ? and e.entNo = ?");
        const EntryNo no = EntryNo::split(number);
        statement.bind(1, no.dirPath).bind(2, no.entNo);
        if (!statement.step()) {
            return;
        }
        NetEntry found;
        readEntry(statement, m_context.cipher, found);
        found.m_numName = statement.text(13);
        found.m_customNum = m_context.cipher.toPlain(statement.text(14));
        found.m_Address = statement.text(15);
        object = std::move(found);
    });
}

Web Webs::Search(const QString& number) {
    Web web;
    search(number, web);
    return web;
}

Prg Prgs::Search(const QString& number) {
    Prg prg;
    search(number, prg);
    return prg;
}

bool Prgs::UpgradeData() {
    return guardedRun(context().prompt, where("UpgradeData"), [&] {
        replaceLocationMarker(context().database, QStringLiteral("MORV_Programs(x64)/"),
                              QStringLiteral("MORV_Programs/"));
    });
}

bool Fils::Add(const Fil& object, const EntLog* history) {
    return addBoth(m_context, m_entries, QStringLiteral("Fils.Add"), object, history,
                   [&] { writeCompanion(object); });
}

bool Fils::Modify(const QString& oldNo, const Fil& object, const EntLog* history) {
    return modifyBoth(m_context, m_entries, QStringLiteral("Fils.Modify"), oldNo, object, history,
                      [&] { writeCompanion(object); });
}

void Fils::writeCompanion(const Fil& object) {
    Statement(m_context.database,
              "insert or replace into tb_Fil (dirPath, entNo, filePath, hashCode, Encrypted)"
              " values (?, ?, ?, ?, ?)")
        .bind(1, object.m_dirPath)
        .bind(2, object.m_entNo)
        .bind(3, object.m_filePath)
        .bind(4, object.m_hashCode)
        .bind(5, object.m_Encrypted)
        .run();
}

Fil Fils::Search(const QString& number) {
    Fil object;
    guardedRun(m_context.prompt, QStringLiteral("Fils.Search"), [&] {
        Statement statement(m_context.database,
                            "select e.dirPath, e.entNo, e.Title, e.pwdName, e.customPwd, e.Remarks,"
                            " e.usedTimes, e.Effective, e.Bookmark, e.createDate, e.recentUpdate,"
                            " e.recentModPwd, e.modPwdDays, f.filePath, f.hashCode, f.Encrypted"
                            " from tb_Entry as e inner join tb_Fil as f"
                            " on f.dirPath = e.dirPath and f.entNo = e.entNo"
                            " where e.dirPath = ? and e.entNo = ?");
        const EntryNo no = EntryNo::split(number);
        statement.bind(1, no.dirPath).bind(2, no.entNo);
        if (!statement.step()) {
            return;
        }
        Fil found;
        readEntry(statement, m_context.cipher, found);
        found.m_filePath = statement.text(13);
        found.m_hashCode = statement.text(14);
        found.m_Encrypted = statement.flag(15);
        object = std::move(found);
    });
    return object;
}

bool Fils::UpdateFilePathOnUserNameChange(const QString& oldName, const QString& newName) {
    const QString where = QStringLiteral("Fils.UpdateFilePathOnUserNameChange");
    return guardedRun(m_context.prompt, where, [&] {
        const auto folderOf = [](const QString& name) {
            return QStringLiteral("MORV - ") + name + QLatin1Char('/');
        };
        Statement(m_context.database,
                  "update tb_Fil set filePath = replace(filePath, ?1, ?2)"
                  " where substr(filePath, 1, length(?1)) = ?1")
            .bind(1, folderOf(oldName))
            .bind(2, folderOf(newName))
            .run();
    });
}

}  // namespace keeper
