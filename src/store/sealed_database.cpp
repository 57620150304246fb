// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "store/sealed_database.h"

#include <fcntl.h>
#include <sys/file.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <cmath>
#include <utility>

#include "crypto/code_page.h"
#include "crypto/cryptor2.h"
#include "crypto/cryptor3.h"
#include "crypto/secure_wipe.h"
#include "platform/database.h"
#include "platform/durable_file.h"
#include "platform/prompt.h"
#include "store/failure.h"
#include "store/key_holder.h"
#include "store/schema.h"
#include "store/sealed_file.h"

namespace keeper {
namespace {

/// SHA-1 of the empty text.
const QString kEmptyDigest = QStringLiteral("DA39A3EE5E6B4B0D3255BFEF95601890AFD80709");
/// People know this number for everything that says "no database under this password, or busy".
constexpr std::int32_t kUnspecified = -2147467259;
constexpr std::int32_t kConnectFailed = static_cast<std::int32_t>(0x80040001U);
const QString kWorkingSuffix = QStringLiteral(".tmp");
const QString kFreshSuffix = QStringLiteral(".fresh");
const QString kCompactingSuffix = QStringLiteral(".compacting");

QString journalOf(const QString& path) {
    return path + QStringLiteral("-journal");
}

/// The part of a working copy's name that the copies of one session share; every change of the key
/// makes a new one.
QString familyOf(const QString& path) {
    const QString name = QFileInfo(path).fileName().chopped(kWorkingSuffix.size());
    return name.section(u'-', 0, 0);
}

/// Removes the file; false when it is still there.
bool isGone(const QString& path) {
    return QFile::remove(path) || !QFileInfo::exists(path);
}

/// Not valid when another process, or another session of this one, has the mark.
UniqueFd lockedMark(const QString& path) {
    UniqueFd mark(::open(QFile::encodeName(path).constData(), O_RDWR | O_CLOEXEC));
    if (mark.isValid() && ::flock(mark.get(), LOCK_EX | LOCK_NB) == 0) {
        return mark;
    }
    return UniqueFd();
}

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

QString SealedDatabase::GetCryptLgnKey(bool scheme, const QString& key) const {
    return m_chain.GetCryptLgnKey(scheme, key);
}

QString SealedDatabase::GetAccessDBSec(bool scheme, const QString& key) {
    return KeyChain::GetAccessDBSec(scheme, key);
}

QString SealedDatabase::TransformDBPwd(const QString& text) {
    return KeyChain::TransformDBPwd(text);
}

bool SealedDatabase::setAccessDBSec(
    bool scheme, const QString& newKey, bool initial,
    const std::function<void(const QString&, const QString&)>& change) {
    return guardedRun(m_prompt, QStringLiteral("cSystem.SetAccessDBSec"), [&] {
        QString current = initial ? QString() : m_keys.p_plainLgnKey();
        const WipeGuard wipeCurrent(current);
        QString oldPassword = GetAccessDBSec(scheme, current);
        const WipeGuard wipeOld(oldPassword);
        QString newPassword = TransformDBPwd(KeyChain::HashToDBPwd(false, newKey));
        const WipeGuard wipeNew(newPassword);
        change(oldPassword, newPassword);
    });
}

bool SealedDatabase::InitLgnKey(const QString& key) {
    return setAccessDBSec(false, key, true,
                          [this](const QString& oldPassword, const QString& newPassword) {
                              rekeyFile(oldPassword, newPassword);
                          });
}

bool SealedDatabase::SetLgnKey(bool scheme, const QString& key) {
    return setAccessDBSec(scheme, key, false,
                          [&](const QString& oldPassword, const QString& newPassword) {
                              if (m_freshMark.isValid()) {
                                  rekeyInPlace(oldPassword, newPassword, key);
                              } else {
                                  moveToNewKey(oldPassword, newPassword, key);
                              }
                          });
}

void SealedDatabase::rekeyFile(const QString& oldPassword, const QString& newPassword) {
    m_database.rekey(oldPassword, newPassword, m_tmpFile + kCompactingSuffix);
    flushFolderOf(m_tmpFile);
}

/// For a working copy that no record names yet: a crash leaves nothing that anybody looks for.
void SealedDatabase::rekeyInPlace(const QString& oldPassword, const QString& newPassword,
                                  const QString& key) {
    rekeyFile(oldPassword, newPassword);
    try {
        m_keys.p_plainLgnKey(key);
    } catch (...) {
        // A session under a key that its database does not have would lock its user out.
        rekeyFile(newPassword, oldPassword);
        throw;
    }
}

void SealedDatabase::moveToNewKey(const QString& oldPassword, const QString& newPassword,
                                  const QString& key) {
    const QString former = m_tmpFile;
    const bool wasOpen = m_database.isOpen();
    QString copy;
    bool isDurable = false;
    try {
        copy = makeFreshFile(QFileInfo(former).absolutePath(), familyOf(former) + u'-',
                             kWorkingSuffix, m_random);
        QFile::remove(copy);
        m_database.exportTo(copy, newPassword);
        flushFolderOf(copy);
        m_database.close();
        m_database.open(copy, newPassword);
        isDurable = m_keys.takeLgnKey(key, former, copy);
    } catch (...) {
        if (m_database.isOpen() && m_database.path() != former) {
            m_database.close();
        }
        QFile::remove(copy);
        if (wasOpen && !m_database.isOpen()) {
            m_database.open(former, oldPassword);
        }
        throw;
    }
    m_tmpFile = copy;
    if (isDurable) {
        QFile::remove(former);
    }
}

/// A key change that was cut short leaves two working copies of one session; the user's record told
/// which of them counts, and that one is open now.
void SealedDatabase::removeRelatives() {
    const QFileInfo mine(m_tmpFile);
    if (!m_tmpFile.endsWith(kWorkingSuffix)) {
        return;
    }
    const QString family = familyOf(m_tmpFile);
    const QDir folder = mine.dir();
    for (const QString& name :
         folder.entryList({family + u'*' + kWorkingSuffix}, QDir::Files | QDir::Hidden)) {
        if (name != mine.fileName() && familyOf(name) == family &&
            isGone(journalOf(folder.filePath(name)))) {
            QFile::remove(folder.filePath(name));
        }
    }
}

bool SealedDatabase::CheckLgnKey(const QString& key) const {
    return isInCodePage(key) && Cryptor2::hashString(key) == m_keys.p_hashLgnKey();
}

bool SealedDatabase::CheckIdpPwd(const QString& key) const {
    return isInCodePage(key) && Cryptor2::hashString(key) == m_keys.p_idpPwdHashCode();
}

bool SealedDatabase::IsIdpPwdNull() const {
    return m_keys.p_idpPwdHashCode() == kEmptyDigest;
}

void SealedDatabase::startWorkingCopy(Origin origin) {
    ensurePrivateFolder(m_stateFolder);
    removeAbandonedCopies();
    // The mark comes first: a kill in between leaves no copy that nobody would take away.
    QString mark;
    do {
        mark = makeFreshFile(m_stateFolder, QString(), kWorkingSuffix + kFreshSuffix, m_random);
        m_freshMark = lockedMark(mark);
        // Another program may clear it away before it is locked.
    } while (!m_freshMark.isValid() || !QFileInfo::exists(mark));
    m_tmpFile = mark.chopped(kFreshSuffix.size());
    createPrivateFile(m_tmpFile);
    m_origin = origin;
    m_wasConnected = false;
}

void SealedDatabase::removeAbandonedCopies() {
    removeLeftovers(m_stateFolder, QString(), kCompactingSuffix);
    removeLeftovers(m_stateFolder, QString(), kDispatchingSuffix);
    const QDir folder(m_stateFolder);
    const QStringList marks =
        folder.entryList({u'*' + kWorkingSuffix + kFreshSuffix}, QDir::Files | QDir::Hidden);
    for (const QString& name : marks) {
        const QString mark = folder.filePath(name);
        const QString copy = mark.chopped(kFreshSuffix.size());
        if (lockedMark(mark).isValid() && !Database::isHeldElsewhere(copy) && isGone(copy) &&
            isGone(journalOf(copy))) {
            QFile::remove(mark);
        }
    }
}

bool SealedDatabase::removeWorkingCopy() {
    removeRelatives();
    removeLeftovers(m_stateFolder, QString(), kCompactingSuffix);
    if (!isGone(m_tmpFile) || !isGone(journalOf(m_tmpFile))) {
        return false;
    }
    m_origin = Origin::None;
    m_wasConnected = false;
    KeepWorkingCopy();
    return true;
}

void SealedDatabase::KeepWorkingCopy() {
    if (!m_tmpFile.isEmpty()) {
        QFile::remove(m_tmpFile + kFreshSuffix);
    }
    m_freshMark = UniqueFd();
}

bool SealedDatabase::CreateWorkingCopy(const QDateTime& now) {
    m_trouble = Trouble::System;
    const bool made = guardedRun(m_prompt, QStringLiteral("cSystem.CreateUser"), [&] {
        m_database.close();
        startWorkingCopy(Origin::New);
        QFile::remove(m_tmpFile);
        try {
            m_database.create(m_tmpFile, GetAccessDBSec(false, QString()));
            createSchema(m_database, now);
            m_database.close();
        } catch (...) {
            DiscardWorkingCopy();
            throw;
        }
    });
    if (made) {
        m_trouble = Trouble::None;
    }
    return made;
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

void SealedDatabase::GetResumeTempFile(const QString& path) {
    m_tmpFile = path;
    KeepWorkingCopy();
    m_origin = Origin::Resumed;
    m_wasConnected = false;
}

bool SealedDatabase::DiscardWorkingCopy() {
    m_database.close();
    return m_tmpFile.isEmpty() || (!Database::isHeldElsewhere(m_tmpFile) && removeWorkingCopy());
}

}  // namespace keeper
