// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <functional>
#include <stdexcept>
#include <vector>

#include "crypto/cryptor2.h"
#include "crypto/cryptor3.h"
#include "platform/database.h"
#include "platform/random.h"
#include "store/cryptor_host_adapter.h"
#include "store/key_holder.h"
#include "store/sealed_database.h"
#include "support/fake_ports.h"
#include "support/scripted_prompt.h"

namespace keeper {

using namespace Qt::StringLiterals;

class FakeKeyHolder final : public KeyHolder {
  public:
    QString plain = QStringLiteral("登录key-123");
    QString idpHash;
    QString file;
    bool refusesKeys = false;
    std::function<void(const QString& key, const QString& copy)> onTaken;

    [[nodiscard]] QString p_plainLgnKey() const override { return plain; }
    void p_plainLgnKey(const QString& key) override {
        if (refusesKeys) {
            throw std::runtime_error("refused");
        }
        plain = key;
    }
    [[nodiscard]] bool takeLgnKey(const QString& key, const QString& /*formerCopy*/,
                                  const QString& copy) override {
        p_plainLgnKey(key);
        if (onTaken) {
            onTaken(key, copy);
        }
        return true;
    }
    [[nodiscard]] QString p_hashLgnKey() const override { return Cryptor2::hashString(plain); }
    [[nodiscard]] QString p_idpPwdHashCode() const override { return idpHash; }
    [[nodiscard]] QString p_kvdbFile() const override { return file; }
};

class RecordingDisplay final : public ConnectingDisplay {
  public:
    std::vector<CryptMode> modes;
    std::vector<int> progress;
    int closed = 0;
    void SetMsg(CryptMode mode) override { modes.push_back(mode); }
    void setProgress(int percent) override { progress.push_back(percent); }
    void close() override { ++closed; }
};

/// A whole session over one sealed file in `folder`; several of them stand for several starts of
/// the program.
struct VaultSession {
    explicit VaultSession(const QString& folder) : stateFolder(folder + QStringLiteral("/state")) {
        QDir().mkpath(folder + QStringLiteral("/private"));
        keys.file = folder + QStringLiteral("/private/某人.kvdb");
    }

    /// Like a new user: working copy, first password, connected.
    [[nodiscard]] bool build() {
        return vault.CreateWorkingCopy(QDateTime(QDate(2026, 5, 20), QTime(12, 0))) &&
               connectUnder(QString()) && vault.InitLgnKey(keys.plain);
    }
    [[nodiscard]] bool connectUnder(const QString& key, bool scheme = false) {
        return vault.ConnAccess(SealedDatabase::GetAccessDBSec(scheme, key), message);
    }
    [[nodiscard]] bool open(bool scheme = false) {
        return vault.CryptKVDB(scheme, 0, true, {}) && connectUnder(keys.plain, scheme);
    }
    [[nodiscard]] bool seal(bool scheme = false) { return vault.CryptKVDB(scheme, 1, true, {}); }
    void addRow(int number) {
        Statement row(database, "INSERT INTO tb_SysLog VALUES(?1,1,?2,?3)");
        row.bind(1, QDateTime(QDate(2026, 1, 1), QTime(0, 0))).bind(2, number);
        row.bind(3, QStringLiteral("密文检查") + QString(300, u'x')).run();
    }
    [[nodiscard]] int rows() {
        Statement count(database, "SELECT count(*) FROM tb_SysLog");
        return count.step() ? static_cast<int>(count.integer(0)) : -1;
    }
    [[nodiscard]] QStringList filesIn(const QString& place) const {
        return QDir(place).entryList(QDir::Files | QDir::Hidden);
    }

    QString stateFolder;
    FakeKeyHolder keys;
    ScriptedPrompt prompt;
    FakeEventLoop eventLoop;
    PromptCryptorHost host{prompt, eventLoop};
    Cryptor3 cipher{host};
    SystemRandom random;
    RecordingDisplay display;
    Database database{{.keyRounds = 10}};
    SealedDatabase vault{keys, cipher, database, prompt, random, display, stateFolder};
    QString message;
};

inline QByteArray contentOf(const QString& path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

inline void putContent(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    ASSERT_EQ(file.write(bytes), bytes.size());
}

}  // namespace keeper
