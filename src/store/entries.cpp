// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "store/entries.h"

#include <algorithm>
#include <utility>

#include "platform/clock.h"
#include "platform/database.h"
#include "store/column_cipher.h"
#include "store/failure.h"
#include "store/numbering.h"
#include "store/schema.h"

namespace keeper {

namespace {

/// An entry bound to an associated password keeps no password of its own.
QString storedPassword(const ColumnCipher& cipher, const Entry& entry) {
    return entry.m_pwdName == kCustomName ? cipher.toColumn(entry.m_customPwd) : QStringLiteral("");
}

void bindNumber(Statement& statement, int index, const QString& wholeNumber) {
    const EntryNo number = EntryNo::split(wholeNumber);
    statement.bind(index, number.dirPath).bind(index + 1, number.entNo);
}

}  // namespace

bool Entries::Add(const Entry& entry) {
    return guardedRun(m_context.prompt, QStringLiteral("Entries.Add"), [&] { insertRow(entry); });
}

bool Entries::Modify(const QString& oldNo, const Entry& entry) {
    return guardedRun(m_context.prompt, QStringLiteral("Entries.Modify"),
                      [&] { updateRow(oldNo, entry); });
}

void Entries::insertRow(const Entry& entry) {
    const QDateTime now = m_context.clock.now();
    Statement(m_context.database,
              "insert into tb_Entry (dirPath, entNo, Title, pwdName, customPwd, Remarks,"
              " usedTimes, Effective, Bookmark, createDate, recentUpdate, recentModPwd,"
              " modPwdDays) values (?, ?, ?, ?, ?, ?, 0, 1, 0, ?, ?, ?, ?)")
        .bind(1, entry.m_dirPath)
        .bind(2, entry.m_entNo)
        .bind(3, entry.m_Title)
        .bind(4, entry.m_pwdName)
        .bind(5, storedPassword(m_context.cipher, entry))
        .bind(6, entry.m_Remarks)
        .bind(7, now.date())
        .bind(8, now)
        .bind(9, entry.m_recentModPwd)
        .bind(10, int{entry.m_modPwdDays})
        .run();
}

bool Entries::updateRow(const QString& oldNo, const Entry& entry) {
    Statement statement(m_context.database,
                        "update tb_Entry set dirPath = ?, entNo = ?, Title = ?, pwdName = ?,"
                        " customPwd = ?, Remarks = ?, recentUpdate = ?, recentModPwd = ?,"
                        " modPwdDays = ? where dirPath = ? and entNo = ?");
    statement.bind(1, entry.m_dirPath)
        .bind(2, entry.m_entNo)
        .bind(3, entry.m_Title)
        .bind(4, entry.m_pwdName)
        .bind(5, storedPassword(m_context.cipher, entry))
        .bind(6, entry.m_Remarks)
        .bind(7, m_context.clock.now())
        .bind(8, entry.m_recentModPwd)
        .bind(9, int{entry.m_modPwdDays});
    bindNumber(statement, 10, oldNo);
    return statement.run() > 0;
}

bool Entries::Delete(const Entry& entry) {
    return guardedRun(m_context.prompt, QStringLiteral("Entries.Delete"), [&] {
        const int deleted =
            Statement(m_context.database, "delete from tb_Entry where dirPath = ? and entNo = ?")
                .bind(1, entry.m_dirPath)
                .bind(2, entry.m_entNo)
                .run();
        if (deleted == 0) {
            throw KeeperError(3021, QStringLiteral("Entries.Delete"),
                              QStringLiteral("没有当前记录，或当前的记录已被删除。"));
        }
    });
}

int Entries::Display(const std::function<void(const EntryLine&)>& receive) {
    return guarded(m_context.prompt, QStringLiteral("Entries.Display"), 0, [&] {
        Statement statement(m_context.database,
                            "select dirPath, entNo, Title, Bookmark from tb_Entry"
                            " order by dirPath, entNo");
        int count = 0;
        for (; statement.step(); ++count) {
            receive({statement.utf8(0), statement.utf8(1), statement.utf8(2), statement.flag(3)});
        }
        return count;
    });
}

std::int32_t Entries::AddUsedTimes(const QString& number) {
    return guarded(m_context.prompt, QStringLiteral("Entries.AddUsedTimes"), 0, [&] {
        Transaction transaction(m_context.database);
        Statement update(m_context.database,
                         "update tb_Entry set usedTimes = usedTimes + 1"
                         " where dirPath = ? and entNo = ?");
        bindNumber(update, 1, number);
        if (update.run() == 0) {
            return 0;
        }
        Statement select(m_context.database,
                         "select usedTimes from tb_Entry where dirPath = ? and entNo = ?");
        bindNumber(select, 1, number);
        const auto count =
            select.step() ? static_cast<std::int32_t>(select.integer(0)) : std::int32_t{0};
        select.reset();
        transaction.commit();
        return count;
    });
}

bool Entries::SetBookmark(const QString& number, bool isMarked) {
    return guarded(m_context.prompt, QStringLiteral("Entries.SetBookmark"), false, [&] {
        Statement statement(m_context.database,
                            "update tb_Entry set Bookmark = ? where dirPath = ? and entNo = ?");
        statement.bind(1, isMarked);
        bindNumber(statement, 2, number);
        return statement.run() > 0;
    });
}

void Entries::DeleteLike(const QString& dirPath) {
    guardedRun(m_context.prompt, QStringLiteral("Entries.DeleteLike"),
               [&] { deleteRowsLike(dirPath); });
}

void Entries::deleteRowsLike(const QString& dirPath) {
    Statement(m_context.database, "delete from tb_Entry where dirPath = ?").bind(1, dirPath).run();
}

bool Entries::SetEffective(const QString& number, bool isEffective) {
    return guarded(m_context.prompt, QStringLiteral("Entries.SetEffective"), false, [&] {
        Statement statement(m_context.database,
                            isEffective ? "update tb_Entry set Effective = 1"
                                          " where dirPath = ? and entNo = ?"
                                        : "update tb_Entry set Effective = 0, modPwdDays = 0"
                                          " where dirPath = ? and entNo = ?");
        bindNumber(statement, 1, number);
        return statement.run() > 0;
    });
}

bool Entries::MoveTo(const QString& oldNo, const QString& newNo) {
    return guardedRun(m_context.prompt, QStringLiteral("Entries.MoveTo"), [&] {
        if (!AreSameBigClass(oldNo, newNo)) {
            throw KeeperError(5, QStringLiteral("Entries.MoveTo"),
                              QStringLiteral("网络类和文件类的条目或目录不能互相移动。"));
        }
        Statement statement(
            m_context.database,
            "update tb_Entry set dirPath = ?, entNo = ? where dirPath = ? and entNo = ?");
        bindNumber(statement, 1, newNo);
        bindNumber(statement, 3, oldNo);
        statement.run();
    });
}

int Entries::GetRecentUpdates(QStringList& lines, int amount) {
    return guarded(m_context.prompt, QStringLiteral("Entries.GetRecentUpdates"), 0, [&] {
        // Of one second the last added come first: that is how the index of the time lies, so that
        // an import of thousands in one second needs no sorting.
        Statement statement(m_context.database,
                            "select dirPath, entNo, Title from tb_Entry"
                            " order by recentUpdate desc, rowid desc limit ?");
        // A negative limit would mean "all" to the engine.
        statement.bind(1, std::max(amount, 0));
        QStringList found;
        while (statement.step()) {
            found.append(CatTitleNo(statement.text(2), statement.text(0) + statement.text(1)));
        }
        const int count = static_cast<int>(found.size());
        if (count > 0) {
            lines = std::move(found);
        }
        return count;
    });
}

bool Entries::UpdateReducedLocation(std::uint8_t step) {
    return guardedRun(m_context.prompt, QStringLiteral("Entries.UpdateReducedLocation"), [&] {
        if (step <= 1) {
            replaceLocationMarker(m_context.database, QStringLiteral("MORV - Programs/"),
                                  QStringLiteral("MORV_Programs/"));
        } else if (step == 2) {
            replaceLocationMarker(m_context.database, QStringLiteral("MORV_Programs/"),
                                  QStringLiteral("MORV_Programs(x86)/"));
        }
    });
}

void replaceLocationMarker(Database& database, const QString& oldMarker, const QString& newMarker) {
    Statement(database,
              "update tb_Net set Location = ?2 || substr(Location, length(?1) + 1)"
              " where substr(Location, 1, length(?1)) = ?1")
        .bind(1, oldMarker)
        .bind(2, newMarker)
        .run();
}

}  // namespace keeper
