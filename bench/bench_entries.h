// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

#include "platform/database.h"
#include "store/schema.h"

namespace keeper {

/// Adds `count` network objects, 99 to a directory as a tree would fill.
/// REQUIRES: no directory below "01", count up to 99 * 99 * 99.
inline void addEntries(Database& database, int count) {
    const QDateTime now(QDate(2026, 5, 20), QTime(12, 0));
    const auto pair = [](int number) {
        return QStringLiteral("%1").arg(number + 1, 2, 10, QLatin1Char('0'));
    };
    Transaction transaction(database);
    Statement directory(database, "INSERT INTO tb_Directory VALUES(?1,?2,?3)");
    Statement entry(database,
                    "INSERT INTO tb_Entry VALUES(?1,?2,?3,'自定义',?4,?5,0,1,0,?6,?6,?6,0)");
    Statement net(database, "INSERT INTO tb_Net VALUES(?1,?2,'自定义',?3,?4)");
    QString parent;
    QString folder;
    for (int i = 0; i < count; ++i) {
        const int leaf = i / 99;
        if (i % (99 * 99) == 0) {
            parent = QStringLiteral("01") + pair(leaf / 99);
            directory.bind(1, parent).bind(2, QStringLiteral("01")).bind(3, parent).run();
        }
        if (i % 99 == 0) {
            folder = parent + pair(leaf % 99);
            directory.bind(1, folder).bind(2, parent).bind(3, folder).run();
        }
        const QString number = pair(i % 99);
        const QString mark = QString::number(i);
        entry.bind(1, folder).bind(2, number).bind(3, QStringLiteral("网络对象 ") + mark);
        entry.bind(4, QStringLiteral("P4ssw0rd-") + mark).bind(5, QStringLiteral("备注"));
        entry.bind(6, now.addSecs(-i)).run();
        net.bind(1, folder).bind(2, number).bind(3, QStringLiteral("user") + mark);
        net.bind(4, QStringLiteral("https://www.example.org/") + mark).run();
    }
    transaction.commit();
}

/// A new database at `path` with so many entries. REQUIRES: `path` absent.
inline void buildDatabase(Database& database, const QString& path, const QString& password,
                          int count) {
    database.create(path, password);
    createSchema(database, QDateTime(QDate(2026, 5, 20), QTime(12, 0)));
    addEntries(database, count);
}

}  // namespace keeper
