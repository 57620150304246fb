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
        const bool isProved = which != CryptMode::Unseal && proveOpenCopy();
        m_database.close();
        QString plain = m_keys.p_plainLgnKey();
        const WipeGuard wipePlain(plain);
        QString key = GetCryptLgnKey(scheme, plain);
        const WipeGuard wipeKey(key);
        if (which == CryptMode::Unseal) {
            return unseal(scheme, key);
        }
        return seal(scheme, key, target, isProved);
    });
    if (closeDialog) {
        m_display.close();
    }
    return done;
}

/// The last block proves the key and is itself unprotected; the first page, which has a code of its
/// own under the page key, tells a damaged last block from another key.
bool SealedDatabase::firstPageOpens(bool scheme, const QString& key) {
    startWorkingCopy(Origin::Unsealed);
    bool isOpen = false;
    try {
        QFile::remove(m_tmpFile);
        unsealFirstPage(m_cipher, p_kvdbFile(), m_tmpFile, key);
        // A session whose upgrade has failed seals the password of the other scheme.
        isOpen = isPageUnder(scheme) || isPageUnder(!scheme);
    } catch (...) {
        static_cast<void>(removeWorkingCopy());
        throw;
    }
    static_cast<void>(removeWorkingCopy());
    return isOpen;
}

bool SealedDatabase::isPageUnder(bool scheme) {
    QString plain = m_keys.p_plainLgnKey();
    const WipeGuard wipePlain(plain);
    QString password = GetAccessDBSec(scheme, plain);
    const WipeGuard wipePassword(password);
    try {
        m_database.open(m_tmpFile, password);
        m_database.close();
        return true;
    } catch (const DatabaseError& error) {
        // One page of many: the engine reads it and then misses the others.
        return !error.saysWrongPassword();
    }
}

bool SealedDatabase::unseal(bool scheme, const QString& key) {
    const QString sealed = p_kvdbFile();
    // Before it is read: who replaces it meanwhile, replaces it for this session.
    m_sealedMark = sealedMark(sealed);
    m_foreignFile.clear();
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

/// What is sealed takes the place of the last good file, so every page must be sound: the disk may
/// have spoilt one since it was read.
bool SealedDatabase::proveOpenCopy() {
    if (!m_database.isOpen() || m_database.path() != m_tmpFile || !m_wasConnected) {
        return false;
    }
    try {
        m_database.checkPages();
    } catch (const DatabaseError& error) {
        m_database.close();
        refuseSpoiltCopy(error);
    }
    return true;
}

/// The same where the connection is gone. It takes a derivation of the page key, and rolls back the
/// journal of a write that was cut short.
void SealedDatabase::proveClosedCopy(bool scheme) {
    const auto prove = [this](bool inner) {
        QString plain = m_keys.p_plainLgnKey();
        const WipeGuard wipePlain(plain);
        QString password = GetAccessDBSec(inner, plain);
        const WipeGuard wipePassword(password);
        m_database.open(m_tmpFile, password, Database::Trust::AllPages);
        m_database.close();
    };
    try {
        prove(scheme);
    } catch (const DatabaseError& first) {
        if (!first.saysWrongPassword()) {
            refuseSpoiltCopy(first);
        }
        try {
            prove(!scheme);  // a session whose upgrade has failed
        } catch (const DatabaseError& second) {
            refuseSpoiltCopy(second);
        }
    }
}

void SealedDatabase::refuseSpoiltCopy(const DatabaseError& error) {
    if (!error.saysNoDatabase()) {
        throw error;
    }
    m_trouble = Trouble::Damaged;
    throw KeeperError(
        kUnspecified, QStringLiteral("CryptKVDB"),
        QStringLiteral("工作副本已损坏，未作加密，原文件保持不变。工作副本为：\r\n") + m_tmpFile);
}

/// A backup that was put back, or what another machine has sealed: this session knows nothing of
/// its rows, and they are not its to delete.
void SealedDatabase::keepForeignFile() {
    const QString found = m_sealedMark.isEmpty() ? QString() : sealedMark(p_kvdbFile());
    if (!found.isEmpty() && found != m_sealedMark) {
        m_foreignFile = setSealedFileAside(p_kvdbFile());
        m_sealedMark = found;  // once, however often the sealing is tried
    }
}

bool SealedDatabase::seal(bool scheme, const QString& key, const QString& target, bool isProved) {
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
    if (!isProved || QFileInfo(journalOf(m_tmpFile)).size() > 0) {
        proveClosedCopy(scheme);
    }
    if (target.isEmpty()) {
        keepForeignFile();
    }
    sealFile(m_cipher, m_tmpFile, target.isEmpty() ? p_kvdbFile() : target, key, m_random);
    if (target.isEmpty()) {
        m_sealedMark = sealedMark(p_kvdbFile());
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
                m_trouble =
                    isFirst || !error.saysWrongPassword() ? Trouble::Damaged : Trouble::WrongKey;
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
