// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/system.h"

#include "app/private_folder.h"
#include "crypto/secure_wipe.h"
#include "platform/memory_lock.h"
#include "store/failure.h"
#include "store/sealed_database.h"

namespace keeper {

System::System(Database& database, Prompt& prompt, const Clock& clock)
    : m_prompt(prompt), m_clock(clock), m_settings(database, prompt, clock) {
    m_settings.onLgnKeyTip = [this](const QString& text) {
        if (m_user) {
            m_user->p_lgnKeyTip(text);
        }
    };
}

System::~System() {
    secureWipe(m_plainIdpPwd);
}

void System::setUser(std::shared_ptr<User> user) {
    p_plainIdpPwd(QString());
    m_user = std::move(user);
}

QString System::p_userName() const {
    return m_user ? m_user->p_userName() : QString();
}

QString System::p_privateFolder() const {
    return m_user ? m_user->p_privateFolder() : QString();
}

QString System::p_kvdbFile() const {
    return m_user ? m_user->p_kvdbFile() : QString();
}

QString System::p_plainLgnKey() const {
    return m_user ? m_user->p_plainLgnKey() : QString();
}

void System::p_plainLgnKey(const QString& key) {
    m_user->p_plainLgnKey(key);
}

QString System::p_plainIdpPwd() const {
    return QString(m_plainIdpPwd.constData(), m_plainIdpPwd.size());
}

void System::p_plainIdpPwd(const QString& password) {
    secureWipe(m_plainIdpPwd);
    // A buffer of its own, which can be wiped: the caller's may be shared with others.
    m_plainIdpPwd = QString(password.constData(), password.size());
    keepOutOfSwap(m_plainIdpPwd);
}

bool System::takeLgnKey(const QString& key, const QString& formerCopy, const QString& copy) {
    return m_user->takeLgnKey(key, formerCopy, copy);
}

QString System::p_hashLgnKey() const {
    return m_user ? m_user->p_hashLgnKey() : QString();
}

QString System::p_tmpFile() const {
    return m_sealed != nullptr ? m_sealed->p_tmpFile() : QString();
}

void System::RefreshMyUser() {
    m_user->p_lgnKeyChances0(m_settings.p_lgnKeyChances0());
    m_user->p_hideDBPath(m_settings.p_hideDBPath());
    m_user->p_lgnKeyTip(m_settings.p_lgnKeyTip());
    m_user->p_themeBackground(m_settings.p_themeBackground());
    m_user->p_usedTimes(0);
    m_user->p_attackTime(QDateTime());
    m_user->p_activeFile(p_tmpFile());
    m_user->p_activeTime(m_clock.now());
}

bool System::WriteUser() {
    return m_user && m_user->WriteRegistry();
}

QString System::p_defMyBackup() const {
    return privatefolder::backupsOf(p_privateFolder());
}

QString System::p_defBGPictures() const {
    return privatefolder::backgroundsOf(p_privateFolder());
}

QString System::p_defEncrypted() const {
    return privatefolder::encryptedOf(p_privateFolder());
}

bool System::RepairPrivateFolder() {
    return guardedRun(
        m_prompt, QStringLiteral("cSystem.RepairPrivateFolder"),
        [&] { privatefolder::repair(p_privateFolder()); }, Prompt::Icon::Exclamation);
}

bool System::ClearUser(bool deleteFolder) {
    const QString where = QStringLiteral("cSystem.ClearUser");
    const bool cleared = guardedRun(m_prompt, where, [&] {
        if (m_sealed != nullptr && !m_sealed->DiscardWorkingCopy()) {
            throw KeeperError(75, QStringLiteral("ClearUser"),
                              QStringLiteral("数据库的工作副本无法删除：\r\n") + p_tmpFile());
        }
    });
    return cleared && (!deleteFolder || guardedRun(m_prompt, where, [&] {
               privatefolder::destroy(p_privateFolder());
           }));
}

}  // namespace keeper
