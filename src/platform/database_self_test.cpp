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
    const DatabaseOptions options{.keyRounds = 1};
    const QString path = place.filePath(QStringLiteral("known"));
    try {
        Database database(options);
        database.create(path, kPassword);
        database.execute("create table known (answer text)");
        Statement(database, "insert into known values (?1)").bind(1, kContent).run();
        database.close();
        if (isReadableInClear(path)) {
            return QStringLiteral("the linked database engine does not encrypt");
        }
        if (!refusesOtherPassword(path, options)) {
            return QStringLiteral("the database engine takes a wrong password");
        }
        database.open(path, kPassword);
        Statement query(database, "select answer from known");
        if (!query.step() || query.text(0) != kContent) {
            return QStringLiteral("the database engine does not read back what it wrote");
        }
    } catch (const DatabaseError& error) {
        return error.description();
    }
    return {};
}

}  // namespace keeper
