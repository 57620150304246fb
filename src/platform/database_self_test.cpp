// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/database_self_test.h"

#include <QFile>
#include <QTemporaryDir>

#include "platform/database.h"

namespace keeper {
namespace {

const QString kPassword = QStringLiteral("self-test");
const QString kContent = QStringLiteral("known answer");

/// Whether the file gives its content away to somebody without the password.
bool isReadableInClear(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return true;
    }
    const QByteArray bytes = file.readAll();
    return bytes.isEmpty() || bytes.startsWith("SQLite format") ||
           bytes.contains(kContent.toUtf8());
}

bool refusesOtherPassword(const QString& path, const DatabaseOptions& options) {
    Database other(options);
    try {
        other.open(path, kPassword + QLatin1Char('x'));
    } catch (const DatabaseError& error) {
        return error.saysNoDatabase();
    }
    return false;
}

}  // namespace

QString databaseSelfTest(const QString& folder) {
    const QTemporaryDir place(folder + QStringLiteral("/self-test-XXXXXX"));
    if (!place.isValid()) {
        return place.errorString();
    }
    // The derivation is proved by one round as well as by many.
    const DatabaseOptions options{.keyRounds = 1, .locksKeys = false};
    const QString path = place.filePath(QStringLiteral("known"));
    try {
        Database database(options);
        database.create(path, kPassword);
        database.execute("create table known (answer text)");
        Statement(database, "insert into known values (?1)").bind(1, kContent).run();
        database.close();
        if (isReadableInClear(path)) {
            return QStringLiteral("所链接的数据库引擎没有加密数据");
        }
        if (!refusesOtherPassword(path, options)) {
            return QStringLiteral("数据库引擎接受了错误的密码");
        }
        database.open(path, kPassword);
        Statement query(database, "select answer from known");
        if (!query.step() || query.text(0) != kContent) {
            return QStringLiteral("数据库引擎读出的内容与写入的不同");
        }
    } catch (const DatabaseError& error) {
        return error.description();
    }
    return {};
}

}  // namespace keeper
