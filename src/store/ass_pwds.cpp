// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "store/ass_pwds.h"

#include <utility>

#include "crypto/secure_wipe.h"
#include "platform/clock.h"
#include "platform/database.h"
#include "store/column_cipher.h"
#include "store/ent_logs.h"
#include "store/entry.h"
#include "store/failure.h"
#include "store/numbering.h"
#include "store/schema.h"

namespace keeper {

AssPwd::~AssPwd() {
    secureWipe(m_Content);
}

int AssPwds::DisplayNames(QStringList& names) {
    return guarded(m_context.prompt, QStringLiteral("AssPwds.DisplayNames"), 0, [&] {
        Statement statement(m_context.database,
                            "select Name from tb_AssPwd where Effective = 1 order by Name");
        QStringList found;
        while (statement.step()) {
            found.append(statement.text(0));
        }
        names = std::move(found);
        return static_cast<int>(names.size());
    });
}

AssPwd AssPwds::Search(const QString& name) {
    AssPwd object;
    guardedRun(m_context.prompt, QStringLiteral("AssPwds.Search"), [&] {
        Statement statement(m_context.database,
                            "select Name, Content, Length, updateTime, Effective"
                            " from tb_AssPwd where Name = ?");
        statement.bind(1, name);
        if (!statement.step()) {
            return;
        }
        // What may throw comes first: on a failure the object stays empty.
        object.m_Content = m_context.cipher.toPlain(statement.text(1));
        object.m_Name = statement.text(0);
        object.m_Length = static_cast<int>(statement.integer(2));
        object.m_updateTime = statement.dateTime(3);
        object.m_Effective = statement.flag(4);
    });
    return object;
}

bool AssPwds::Add(const AssPwd& object) {
    return guardedRun(m_context.prompt, QStringLiteral("AssPwds.Add"), [&] {
        Statement(m_context.database,
                  "insert into tb_AssPwd (Name, Content, Length, updateTime, Effective)"
                  " values (?, ?, ?, ?, ?)")
            .bind(1, object.m_Name)
            .bind(2, m_context.cipher.toColumn(object.m_Content))
            .bind(3, object.m_Length)
            .bind(4, object.m_updateTime)
            .bind(5, object.m_Effective)
            .run();
    });
}

int AssPwds::GetEntBoundedPwd(const QString& name, QStringList& lines) {
    // The one operation that reports under the name of another class.
    return guarded(m_context.prompt, QStringLiteral("Entries.GetEntBoundedPwd"), 0, [&] {
        Statement statement(m_context.database,
                            "select dirPath, entNo, Title from tb_Entry where pwdName = ?"
                            " order by dirPath, entNo");
        statement.bind(1, name);
        int count = 0;
        for (; statement.step(); ++count) {
            lines.append(CatTitleNo(statement.text(2), statement.text(0) + statement.text(1)));
        }
        return count;
    });
}

bool AssPwds::Delete(const QString& name) {
    return guarded(m_context.prompt, QStringLiteral("AssPwds.Delete"), false, [&] {
        // Every entry with a password of its own would go with the reserved row.
        if (name == kCustomName) {
            throw KeeperError(5, QStringLiteral("AssPwds.Delete"),
                              QStringLiteral("不能删除【自定义】密码！"));
        }
        return Statement(m_context.database, "delete from tb_AssPwd where Name = ?")
                   .bind(1, name)
                   .run() > 0;
    });
}

bool AssPwds::Modify(const AssPwd& before, const AssPwd& after) {
    const QString where = QStringLiteral("AssPwds.Modify");
    // What was at work when something was thrown; shown when the transaction is gone.
    QString current = where;
    return guardedRun(m_context.prompt, current, [&] {
        if (before.m_Name == kCustomName) {
            throw KeeperError(5, QStringLiteral("AssPwds.Modify"),
                              QStringLiteral("不能修改“自定义”密码！"));
        }
        Transaction transaction(m_context.database);
        if (before.m_Content != after.m_Content) {
            current = QStringLiteral("EntLogs.Add");
            addHistory(before);
            current = where;
            Statement(m_context.database, "update tb_Entry set recentModPwd = ? where pwdName = ?")
                .bind(1, m_context.clock.today())
                .bind(2, before.m_Name)
                .run();
        }
        Statement(m_context.database,
                  "update tb_AssPwd set Name = ?, Content = ?, Length = ?, updateTime = ?,"
                  " Effective = ? where Name = ?")
            .bind(1, after.m_Name)
            .bind(2, m_context.cipher.toColumn(after.m_Content))
            .bind(3, after.m_Length)
            .bind(4, after.m_updateTime)
            .bind(5, after.m_Effective)
            .bind(6, before.m_Name)
            .run();
        transaction.commit();
    });
}

void AssPwds::addHistory(const AssPwd& before) {
    Statement bound(
        m_context.database,
        "select dirPath, entNo from tb_Entry where pwdName = ? order by dirPath, entNo");
    bound.bind(1, before.m_Name);
    while (bound.step()) {
        EntLog log;
        log.SetEntry2(bound.text(0), bound.text(1), EntLog::kModifyPassword, m_context.clock.now());
        log.SetOrgPwd(before.m_Name, before.m_Content);
        m_entLogs.insertRow(log);
    }
}

int AssPwds::DisplayAll(std::vector<AssPwdTotal>& rows) {
    return guarded(m_context.prompt, QStringLiteral("AssPwds.DisplayAll"), 0, [&] {
        Statement statement(m_context.database,
                            "select A.Name, A.Content, A.Length, A.updateTime, A.Effective,"
                            " (select count(*) from tb_Entry as B where B.pwdName = A.Name)"
                            " as Total from tb_AssPwd as A order by A.Name asc");
        std::vector<AssPwdTotal> found;
        while (statement.step()) {
            AssPwdTotal& total = found.emplace_back();
            total.row.m_Name = statement.text(0);
            total.row.m_Content = statement.text(1);
            total.row.m_Length = static_cast<int>(statement.integer(2));
            total.row.m_updateTime = statement.dateTime(3);
            total.row.m_Effective = statement.flag(4);
            total.Total = static_cast<int>(statement.integer(5));
        }
        rows = std::move(found);
        return static_cast<int>(rows.size());
    });
}

}  // namespace keeper
