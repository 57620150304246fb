// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

// Puts entries into the sealed database of a real user, for scripts/bench_session.sh.
// usage: fill_database FILE.kvdb LOGIN-KEY COUNT

#include <QTemporaryDir>
#include <cstdio>
#include <stdexcept>

#include "bench_entries.h"
#include "crypto/cryptor3.h"
#include "crypto/cryptor_host.h"
#include "platform/random.h"
#include "store/key_chain.h"
#include "store/sealed_file.h"

namespace keeper {
namespace {

class SilentHost final : public CryptorHost {
  public:
    void showMessage(Severity /*severity*/, const QString& text) override {
        throw std::runtime_error(text.toStdString());
    }
    void turnEventLoop() override {}
};

void fill(const QString& file, const QString& key, int count) {
    const QTemporaryDir folder;
    const QString copy = folder.filePath(QStringLiteral("copy"));
    SilentHost host;
    Cryptor3 cipher(host);
    SystemRandom random;
    const QString fileKey = KeyChain(cipher).GetCryptLgnKey(false, key);
    createPrivateFile(copy);
    if (unsealFile(cipher, file, copy, fileKey) != UnsealResult::Done) {
        throw std::runtime_error("not unsealed");
    }
    Database database;
    database.open(copy, KeyChain::GetAccessDBSec(false, key));
    database.execute("DELETE FROM tb_Directory WHERE dirPath LIKE '01__%'");
    addEntries(database, count);
    database.close();
    sealFile(cipher, copy, file, fileKey, random);
}

}  // namespace
}  // namespace keeper

int main(int count, char** words) {
    if (count != 4) {
        return 2;
    }
    try {
        keeper::fill(QString::fromLocal8Bit(words[1]), QString::fromLocal8Bit(words[2]),
                     QString::fromLocal8Bit(words[3]).toInt());
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
