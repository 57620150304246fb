// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later
//
// usage: print_entries FILE.kvdb KEY
// Unseals the database and prints what the end-to-end tests look for: a directory or an entry a
// line.

#include <QTemporaryDir>
#include <cstdio>

#include "support/vault.h"

namespace keeper {
namespace {

void print(Database& database, const char* sql, int columns) {
    Statement rows(database, sql);
    while (rows.step()) {
        for (int i = 0; i < columns; ++i) {
            std::printf("%s%s", i == 0 ? "" : "\t", rows.text(i).toUtf8().constData());
        }
        std::printf("\n");
    }
}

int run(const QString& file, const QString& key) {
    const QTemporaryDir folder;
    ScriptedPrompt prompt;
    FakeEventLoop eventLoop;
    PromptCryptorHost host{prompt, eventLoop};
    Cryptor3 cipher{host};
    SystemRandom random;
    RecordingDisplay display;
    FakeKeyHolder keys;
    keys.file = file;
    keys.plain = key;
    Database database;
    SealedDatabase vault{keys, cipher, database, prompt, random, display, folder.path()};
    QString message;
    if (!vault.CryptKVDB(false, 0, true, {}) ||
        !vault.ConnAccess(SealedDatabase::GetAccessDBSec(false, key), message)) {
        std::fprintf(stderr, "not opened: %s\n", message.toUtf8().constData());
        return 1;
    }
    print(database, "SELECT 'dir',dirPath,Title FROM tb_Directory ORDER BY dirPath", 3);
    print(database, "SELECT 'ent',dirPath||entNo,Title,customPwd,Bookmark FROM tb_Entry ORDER BY 2",
          5);
    database.close();
    return 0;
}

}  // namespace
}  // namespace keeper

int main(int count, char** words) {
    return count == 3
               ? keeper::run(QString::fromLocal8Bit(words[1]), QString::fromLocal8Bit(words[2]))
               : 2;
}
