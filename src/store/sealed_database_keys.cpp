// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

// The keys of a sealed database: what they become, how they change, how they are checked.

#include <QFile>
#include <QFileInfo>

#include "crypto/code_page.h"
#include "crypto/cryptor2.h"
#include "crypto/secure_wipe.h"
#include "platform/database.h"
#include "platform/durable_file.h"
#include "store/failure.h"
#include "store/key_holder.h"
#include "store/sealed_database.h"
#include "store/sealed_file.h"
#include "store/working_copy_files.h"

namespace keeper {
namespace {

/// SHA-1 of the empty text.
const QString kEmptyDigest = QStringLiteral("DA39A3EE5E6B4B0D3255BFEF95601890AFD80709");

}  // namespace

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

bool SealedDatabase::CheckLgnKey(const QString& key) const {
    return isInCodePage(key) && Cryptor2::hashString(key) == m_keys.p_hashLgnKey();
}

bool SealedDatabase::CheckIdpPwd(const QString& key) const {
    return isInCodePage(key) && Cryptor2::hashString(key) == m_keys.p_idpPwdHashCode();
}

bool SealedDatabase::IsIdpPwdNull() const {
    return m_keys.p_idpPwdHashCode() == kEmptyDigest;
}

}  // namespace keeper
