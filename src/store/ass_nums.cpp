// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "store/ass_nums.h"

#include <utility>

#include "crypto/secure_wipe.h"
#include "platform/database.h"
#include "store/column_cipher.h"
#include "store/entry.h"
#include "store/failure.h"
#include "store/numbering.h"
#include "store/schema.h"

namespace keeper {

AssNum::~AssNum() {
    secureWipe(m_Content);
}

int AssNums::DisplayNames(QStringList& names) {
    return guarded(m_context.prompt, QStringLiteral("AssNums.DisplayNames"), 0, [&] {
        Statement statement(m_context.database,
                            "select Name from tb_AssNum where Effective = 1 order by Name");
        QStringList found;
        while (statement.step()) {
            found.append(statement.text(0));
        }
        names = std::move(found);
        return static_cast<int>(names.size());
    });
}

AssNum AssNums::Search(const QString& name) {
    AssNum object;
    guardedRun(m_context.prompt, QStringLiteral("AssNums.Search"), [&] {
        Statement statement(m_context.database,
                            "select Name, Content, Type, Comment, Effective"
                            " from tb_AssNum where Name = ?");
        statement.bind(1, name);
        if (!statement.step()) {
            return;
        }
        // What may throw comes first: on a failure the object stays empty.
        object.m_Content = m_context.cipher.toPlain(statement.text(1));
        object.m_Name = statement.text(0);
        object.m_Type = statement.text(2);
        object.m_Comment = statement.text(3);
        object.m_Effective = statement.flag(4);
    });
    return object;
}

bool AssNums::Add(const AssNum& object) {
    return guardedRun(m_context.prompt, QStringLiteral("AssNums.Add"), [&] {
        Statement(m_context.database,
                  "insert into tb_AssNum (Name, Content, Type, Comment, Effective)"
                  " values (?, ?, ?, ?, ?)")
            .bind(1, object.m_Name)
            .bind(2, m_context.cipher.toColumn(object.m_Content))
            .bind(3, object.m_Type)
            .bind(4, object.m_Comment)
            .bind(5, object.m_Effective)
            .run();
    });
}

bool AssNums::Modify(const QString& oldName, const AssNum& object) {
    return guardedRun(m_context.prompt, QStringLiteral("AssNums.Modify"), [&] {
        if (oldName == kCustomName) {
            throw KeeperError(5, QStringLiteral("AssNums.Modify"),
                              QStringLiteral("不能修改“自定义”号码！"));
        }
        Statement(m_context.database,
                  "update tb_AssNum set Name = ?, Content = ?, Type = ?, Comment = ?,"
                  " Effective = ? where Name = ?")
            .bind(1, object.m_Name)
            .bind(2, m_context.cipher.toColumn(object.m_Content))
            .bind(3, object.m_Type)
            .bind(4, object.m_Comment)
            .bind(5, object.m_Effective)
            .bind(6, oldName)
            .run();
    });
}

bool AssNums::Delete(const QString& name) {
    return guarded(m_context.prompt, QStringLiteral("AssNums.Delete"), false, [&] {
        if (name == kCustomName) {
            throw KeeperError(5, QStringLiteral("AssNums.Delete"),
                              QStringLiteral("不能删除【自定义】号码！"));
        }
        return Statement(m_context.database, "delete from tb_AssNum where Name = ?")
                   .bind(1, name)
                   .run() > 0;
    });
}

int AssNums::GetNetBoundedNum(const QString& name, QStringList& lines) {
    // The one operation that reports under the name of another.
    return guarded(m_context.prompt, QStringLiteral("AssNums.GetEntBoundedPwd"), 0, [&] {
        Statement statement(m_context.database,
                            "select e.dirPath, e.entNo, e.Title from tb_Net as n"
                            " inner join tb_Entry as e"
                            " on n.dirPath = e.dirPath and n.entNo = e.entNo"
                            " where n.numName = ? order by n.dirPath, n.entNo");
        statement.bind(1, name);
        int count = 0;
        for (; statement.step(); ++count) {
            lines.append(CatTitleNo(statement.text(2), statement.text(0) + statement.text(1)));
        }
        return count;
    });
}

bool AssNums::NetRebindNewAssNum(const QString& oldName, const QString& newName) {
    return guarded(m_context.prompt, QStringLiteral("AssNums.NetRebindNewAssNum"), false, [&] {
        return Statement(m_context.database, "update tb_Net set numName = ? where numName = ?")
                   .bind(1, newName)
                   .bind(2, oldName)
                   .run() > 0;
    });
}

int AssNums::DisplayAll(std::vector<AssNumTotal>& rows) {
    return guarded(m_context.prompt, QStringLiteral("AssNums.DisplayAll"), 0, [&] {
        Statement statement(m_context.database,
                            "select A.Name, A.Content, A.Type, A.Comment, A.Effective,"
                            " (select count(*) from tb_Net as B where B.numName = A.Name)"
                            " as Total from tb_AssNum as A order by A.Name asc");
        std::vector<AssNumTotal> found;
        while (statement.step()) {
            AssNumTotal& total = found.emplace_back();
            total.row.m_Name = statement.text(0);
            total.row.m_Content = statement.text(1);
            total.row.m_Type = statement.text(2);
            total.row.m_Comment = statement.text(3);
            total.row.m_Effective = statement.flag(4);
            total.Total = static_cast<int>(statement.integer(5));
        }
        rows = std::move(found);
        return static_cast<int>(rows.size());
    });
}

}  // namespace keeper
