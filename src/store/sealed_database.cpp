// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "store/sealed_database.h"

#include <QFile>
#include <QFileInfo>
#include <cmath>
#include <utility>

#include "crypto/cryptor3.h"
#include "crypto/secure_wipe.h"
#include "platform/database.h"
#include "platform/durable_file.h"
#include "platform/prompt.h"
#include "store/failure.h"
#include "store/key_holder.h"
#include "store/sealed_file.h"
#include "store/working_copy_files.h"

namespace keeper {
namespace {

/// People know this number for everything that says "no database under this password, or busy".
constexpr std::int32_t kUnspecified = -2147467259;
constexpr std::int32_t kConnectFailed = static_cast<std::int32_t>(0x80040001U);

/// Runs `operation`; what it throws becomes the message of a failed connection.
template <typename Operation>
bool connected(QString& message, Operation&& operation) {
    message.clear();
    try {
        operation();
        return true;
    } catch (const DatabaseError& error) {
        message = error.saysNoDatabase() || error.saysBusy()
                      ? QStringLiteral("{%1}数据库不可识别。").arg(kUnspecified)
                      : QStringLiteral("{%1}%2").arg(QString::number(error.number()),
                                                     error.description());
    } catch (...) {
        const Failure failure = currentFailure();
        message =
            QStringLiteral("{%1}%2").arg(QString::number(failure.number), failure.description);
    }
    return false;
}

[[noreturn]] void refuseRemoval(const QString& path) {
    throw KeeperError(75, QStringLiteral("CryptKVDB"),
                      QStringLiteral("数据库已保存，但工作副本无法删除：\r\n") + path);
}

/// Shows what a cipher does for the length of one operation.
class ProgressBinding {
  public:
    ProgressBinding(Cryptor3& cipher, ConnectingDisplay& display) : m_cipher(cipher) {
        m_cipher.DisplayProgress = [&display](float percent) {
            display.setProgress(static_cast<int>(std::lround(percent)));
        };
    }
    ~ProgressBinding() { m_cipher.DisplayProgress = nullptr; }
    ProgressBinding(const ProgressBinding&) = delete;
    ProgressBinding& operator=(const ProgressBinding&) = delete;

  private:
    Cryptor3& m_cipher;
};

}  // namespace

QString connectingText(CryptMode mode) {
    switch (mode) {
        case CryptMode::Unseal:
            return QStringLiteral("正在解密……");
        case CryptMode::Seal:
            return QStringLiteral("正在加密……");
        case CryptMode::SealForDispatch:
            return QStringLiteral("正在分派数据库");
        case CryptMode::SealAndBackUp:
            return QStringLiteral("正在加密并备份");
        case CryptMode::SealAfterFailedBackup:
            return QStringLiteral("退出备份失败\r\n指定备份路径无效,");
    }
    return {};
}

SealedDatabase::SealedDatabase(KeyHolder& keys, Cryptor3& cipher, Database& database,
                               Prompt& prompt, Random& random, ConnectingDisplay& display,
                               QString stateFolder)
    : m_keys(keys),
      m_cipher(cipher),
      m_database(database),
      m_prompt(prompt),
      m_random(random),
      m_display(display),
      m_chain(cipher),
      m_stateFolder(std::move(stateFolder)) {}

QString SealedDatabase::p_kvdbFile() const {
    return m_keys.p_kvdbFile();
}

bool SealedDatabase::CryptKVDB(bool scheme, int mode, bool closeDialog, const QString& target) {
    m_trouble = Trouble::System;
    const bool done = guarded(m_prompt, QStringLiteral("cSystem.CryptKVDB"), false, [&] {
        if (mode < static_cast<int>(CryptMode::Unseal) ||
            mode > static_cast<int>(CryptMode::SealAfterFailedBackup)) {
            throw KeeperError(5, QStringLiteral("CryptKVDB"), QStringLiteral("未知的加密模式。"));
        }
        const auto which = static_cast<CryptMode>(mode);
        m_display.SetMsg(which);
        const ProgressBinding progress(m_cipher, m_display);
        m_database.close();
        QString plain = m_keys.p_plainLgnKey();
        const WipeGuard wipePlain(plain);
        QString key = GetCryptLgnKey(scheme, plain);
        const WipeGuard wipeKey(key);
        return which == CryptMode::Unseal ? unseal(scheme, key) : seal(scheme, key, target);
    });
    if (closeDialog) {
        m_display.close();
    }
    return done;
}

/// The last block proves the key and is itself unprotected; the first page, which has a code of its
/// own under the page key, tells a damaged last block from another key.
bool SealedDatabase::firstPageOpens(bool scheme, const QString& key) {
    QString plain = m_keys.p_plainLgnKey();
    const WipeGuard wipePlain(plain);
    QString password = GetAccessDBSec(scheme, plain);
    const WipeGuard wipePassword(password);
    startWorkingCopy(Origin::Unsealed);
    bool isOpen = true;
    try {
        QFile::remove(m_tmpFile);
        unsealFirstPage(m_cipher, p_kvdbFile(), m_tmpFile, key);
        m_database.open(m_tmpFile, password);
        m_database.close();
    } catch (const DatabaseError& error) {
        // One page of many: the engine reads it and then misses the others.
        isOpen = !error.saysWrongPassword();
    } catch (...) {
        static_cast<void>(removeWorkingCopy());
        throw;
    }
    static_cast<void>(removeWorkingCopy());
    return isOpen;
}

bool SealedDatabase::unseal(bool scheme, const QString& key) {
    const QString sealed = p_kvdbFile();
    startWorkingCopy(Origin::Unsealed);
    UnsealResult result = UnsealResult::SystemFailed;
    try {
        result = unsealFile(m_cipher, sealed, m_tmpFile, key);
    } catch (...) {
        static_cast<void>(removeWorkingCopy());
        throw;
    }
    if (result == UnsealResult::Done) {
        m_trouble = Trouble::None;
        return true;
    }
    static_cast<void>(removeWorkingCopy());
    if (result == UnsealResult::NotUnderThisKey && firstPageOpens(scheme, key)) {
        result = UnsealResult::Malformed;
    }
    switch (result) {
        case UnsealResult::Done:
        case UnsealResult::NotUnderThisKey:
            m_trouble = Trouble::WrongKey;
            break;
        case UnsealResult::Malformed:
            m_trouble = Trouble::Damaged;
            throw KeeperError(kUnspecified, QStringLiteral("CryptKVDB"),
                              QStringLiteral("密码数据库文件不完整：文件已损坏，或者复制时被截断。"
                                             "没有改动任何文件，请用备份替换后再登录。"));
        case UnsealResult::SystemFailed:
            throw KeeperError(5, QStringLiteral("CryptKVDB"),
                              QStringLiteral("解密未能完成。\r\n") + m_cipher.lastFailure());
    }
    return false;
}

/// A journal beside the closed working copy means that a write was cut short: without it the file
/// may be inconsistent, so it is rolled back before anybody copies the file.
void SealedDatabase::settleJournal(bool scheme) {
    if (QFileInfo(journalOf(m_tmpFile)).size() == 0) {
        return;
    }
    const auto settle = [this](bool inner) {
        QString plain = m_keys.p_plainLgnKey();
        const WipeGuard wipePlain(plain);
        QString password = GetAccessDBSec(inner, plain);
        const WipeGuard wipePassword(password);
        m_database.open(m_tmpFile, password);
        m_database.close();
    };
    try {
        settle(scheme);
    } catch (const DatabaseError&) {
        settle(!scheme);  // a session whose upgrade has failed
    }
}

bool SealedDatabase::seal(bool scheme, const QString& key, const QString& target) {
    if (m_origin == Origin::Unsealed && !m_wasConnected && target.isEmpty()) {
        if (!removeWorkingCopy()) {
            refuseRemoval(m_tmpFile);
        }
        m_trouble = Trouble::None;
        return true;
    }
    if (Database::isHeldElsewhere(m_tmpFile)) {
        m_trouble = Trouble::InUse;
        throw KeeperError(kUnspecified, QStringLiteral("CryptKVDB"),
                          QStringLiteral("数据库正被另一程序使用，未作加密。"));
    }
    if (!m_wasConnected) {
        m_trouble = Trouble::Damaged;
        throw KeeperError(kUnspecified, QStringLiteral("CryptKVDB"),
                          QStringLiteral("数据库未曾打开，未作加密，原文件保持不变。"));
    }
    settleJournal(scheme);
    const qint64 size = QFileInfo(m_tmpFile).size();
    if (size == 0 || size % DatabaseOptions{}.pageSize != 0) {
        m_trouble = Trouble::Damaged;
        throw KeeperError(kUnspecified, QStringLiteral("CryptKVDB"),
                          QStringLiteral("数据库已损坏，未作加密，原文件保持不变。"));
    }
    sealFile(m_cipher, m_tmpFile, target.isEmpty() ? p_kvdbFile() : target, key, m_random);
    if (target.isEmpty()) {
        ReleaseSealedFile();
    }
    if (target.isEmpty() && !removeWorkingCopy()) {
        refuseRemoval(m_tmpFile);
    }
    m_trouble = Trouble::None;
    return true;
}

bool SealedDatabase::ConnAccess(const QString& password, QString& message) {
    m_trouble = Trouble::System;
    const bool isFirst = m_origin == Origin::Unsealed && !m_wasConnected;
    // A copy that a crash left may have suffered; it is to replace the good sealed file.
    const bool isForeign = isFirst || (m_origin == Origin::Resumed && !m_wasConnected);
    const bool done = connected(message, [&] {
        m_database.close();
        try {
            m_database.open(m_tmpFile, password,
                            isForeign ? Database::Trust::AllPages : Database::Trust::Header);
        } catch (const DatabaseError& error) {
            if (error.saysBusy()) {
                m_trouble = Trouble::InUse;
            } else if (error.saysNoDatabase()) {
                m_trouble = isFirst ? Trouble::Damaged : Trouble::WrongKey;
            }
            throw;
        }
    });
    if (done) {
        if (m_origin == Origin::Resumed && !m_wasConnected) {
            removeRelatives();
        }
        m_wasConnected = true;
        m_trouble = Trouble::None;
    }
    return done;
}

bool SealedDatabase::ConnAccess2(const QString& file, const QString& password, Database& connection,
                                 QString& message) {
    return connected(message, [&] {
        connection.close();
        connection.open(file, password, Database::Trust::AllPages);
    });
}

void SealedDatabase::compactInto(const QString& fresh, const QString& password) {
    m_database.close();
    m_database.open(m_tmpFile, password);
    m_database.exportTo(fresh, password);
    m_database.close();
}

bool SealedDatabase::CompactDB(bool scheme) {
    QString plain = m_keys.p_plainLgnKey();
    const WipeGuard wipePlain(plain);
    QString password = GetAccessDBSec(scheme, plain);
    const WipeGuard wipePassword(password);
    QString fresh;
    return guarded(m_prompt, QStringLiteral("cSystem.CompactDB"), false, [&] {
        QString message;
        try {
            ensurePrivateFolder(m_stateFolder);
            removeLeftovers(m_stateFolder, QString(), kCompactingSuffix);
            fresh = makeFreshFile(m_stateFolder, QString(), kCompactingSuffix, m_random);
            QFile::remove(fresh);
            compactInto(fresh, password);
            // One step instead of delete and move: there is always one whole file at the old path.
            moveDurably(fresh, m_tmpFile);
        } catch (...) {
            QFile::remove(fresh);
            ConnAccess(password, message);
            throw;
        }
        if (!ConnAccess(password, message)) {
            throw KeeperError(kConnectFailed, QStringLiteral("CompactDB"), message);
        }
        return true;
    });
}

bool SealedDatabase::HoldSealedFile() {
    return m_hold.take(p_kvdbFile());
}

}  // namespace keeper
