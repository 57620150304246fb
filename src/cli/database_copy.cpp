// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "cli/database_copy.h"

#include <QFileInfo>

#include "cli/console.h"
#include "cli/key_entry.h"

namespace keeper::cli {
namespace {

/// What can be refused before a key is asked for.
QString sealedFileAt(const QString& path) {
    const QFileInfo file(path);
    if (!file.isFile()) {
        throw Exit(kFailed, QStringLiteral("%1：没有这个文件").arg(path));
    }
    if (!file.isReadable()) {
        throw Exit(kFailed, QStringLiteral("%1：没有读取权限").arg(path));
    }
    return file.absoluteFilePath();
}

}  // namespace

DatabaseCopy::DatabaseCopy(const QString& path, const std::optional<QString>& keyFile)
    : m_path(path),
      m_keys(sealedFileAt(path), obtainKey(keyFile, /*twice=*/false, m_signals)),
      m_sealed(m_keys, m_cipher, m_connection, m_prompt, m_random, m_display,
               UserFolders::ofSystem().state + QStringLiteral("/morvane-keeper")) {
    m_loop.onTurn = [this] {
        if (m_signals.pending() != 0) {
            m_cipher.p_stopRequested(true);
        }
    };
    try {
        open();
    } catch (...) {
        m_sealed.DiscardWorkingCopy();
        throw;
    }
}

DatabaseCopy::~DatabaseCopy() {
    m_sealed.DiscardWorkingCopy();
}

void DatabaseCopy::open() {
    for (const bool scheme : {false, true}) {
        if (tryScheme(scheme)) {
            m_isOldScheme = scheme;
            return;
        }
    }
    fail(QStringLiteral("密钥错误"));
}

bool DatabaseCopy::tryScheme(bool scheme) {
    using Trouble = SealedDatabase::Trouble;
    const bool isUnsealed =
        m_sealed.CryptKVDB(scheme, static_cast<int>(CryptMode::Unseal), true, QString());
    heedSignals();
    QString message;
    if (isUnsealed) {
        QString key = m_keys.p_plainLgnKey();
        const WipeGuard wipeKey(key);
        // A session whose upgrade has failed seals the password of the other scheme.
        for (const bool inner : {scheme, !scheme}) {
            QString password = SealedDatabase::GetAccessDBSec(inner, key);
            const WipeGuard wipePassword(password);
            if (m_sealed.ConnAccess(password, message)) {
                heedSignals();
                return true;
            }
        }
    } else {
        message = withoutTag(m_prompt.message);
    }
    if (m_sealed.trouble() != Trouble::WrongKey) {
        fail(message);
    }
    m_sealed.DiscardWorkingCopy();
    return false;
}

void DatabaseCopy::heedSignals() {
    if (m_signals.pending() != 0) {
        throw Exit(128 + m_signals.pending(), QStringLiteral("已中断，%1 未改变").arg(m_path));
    }
}

void DatabaseCopy::fail(const QString& reason) {
    throw Exit(kFailed, QStringLiteral("%1：%2").arg(m_path, reason));
}

}  // namespace keeper::cli
