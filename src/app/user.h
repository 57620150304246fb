// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QDateTime>
#include <QString>
#include <cstdint>

#include "app/regedit.h"
#include "app/user_record.h"
#include "platform/autostart.h"
#include "platform/clock.h"
#include "platform/prompt.h"
#include "platform/random.h"

namespace keeper {

/// What the records of users need of the rest of the program.
struct UserServices {
    Regedit& regedit;
    Autostart& autostart;
    Random& random;
    Prompt& prompt;
};

/// One user of this machine: what must be known before the user's database is open. The record is
/// of this machine, it does not travel with the database.
class User {
  public:
    explicit User(const UserServices& services) : m_services(services) {}
    ~User();
    User(const User&) = delete;
    User& operator=(const User&) = delete;

    /// False, and nothing changed except perhaps the hash, when the user is unknown to this
    /// machine or the record cannot be read.
    bool ReadRegistry(const QString& name);
    /// Writes the record under a fresh password and key pair. False when nothing was written. What
    /// it replaces unread is kept beside the registry. An entry that starts the program with the
    /// session follows the folder and the program.
    /// REQUIRES: a private folder with a user's name.
    bool WriteRegistry();
    /// Whether the record on disk still is what this object last read or wrote. Another instance
    /// of the program, or another machine with the same home, may have written since.
    [[nodiscard]] bool isAsRecorded() const;

    /// When the 24-hour ban was triggered; invalid when no ban stands.
    [[nodiscard]] const QDateTime& p_attackTime() const { return m_record.attackTime; }
    void p_attackTime(const QDateTime& value) { m_record.attackTime = value; }
    /// Login attempts allowed, as of the last login.
    [[nodiscard]] std::int16_t p_lgnKeyChances0() const { return m_record.lgnKeyChances0; }
    void p_lgnKeyChances0(std::int16_t value) { m_record.lgnKeyChances0 = value; }
    /// Failed attempts since the last good login.
    [[nodiscard]] std::int16_t p_usedTimes() const { return m_record.usedTimes; }
    void p_usedTimes(std::int16_t value) { m_record.usedTimes = value; }
    /// Attempts left, never below 0.
    [[nodiscard]] int p_remainedTimes() const;
    [[nodiscard]] bool p_fingerprint() const { return m_record.fingerprint; }
    void p_fingerprint(bool value) { m_record.fingerprint = value; }
    [[nodiscard]] bool p_hideDBPath() const { return m_record.hideDBPath; }
    void p_hideDBPath(bool value) { m_record.hideDBPath = value; }
    /// Whether the record holds the login key. True takes over the key that p_plainLgnKey() holds
    /// (and stays false without one); false forgets it for the record, while a session that runs
    /// under it goes on.
    [[nodiscard]] bool p_remLgnKey() const;
    void p_remLgnKey(bool value);
    /// Hint of the login key.
    [[nodiscard]] const QString& p_lgnKeyTip() const { return m_record.lgnKeyTip; }
    void p_lgnKeyTip(const QString& value) { m_record.lgnKeyTip = value; }
    /// SHA-1 of the login key; empty for a database that this machine has not seen.
    [[nodiscard]] const QString& p_hashLgnKey() const { return m_key.hash; }
    void p_hashLgnKey(const QString& value) { m_key.hash = value; }
    /// The sealed file that this machine has seen last, as sealedMark() tells it; empty where that
    /// is unknown.
    [[nodiscard]] const QString& p_sealedMark() const { return m_sealedMark; }
    void p_sealedMark(const QString& value) { m_sealedMark = value; }
    /// Full path without a slash at the end.
    [[nodiscard]] const QString& p_privateFolder() const { return m_record.privateFolder; }
    void p_privateFolder(const QString& value);
    /// By the name of the private folder; empty when that is none.
    [[nodiscard]] QString p_userName() const;
    [[nodiscard]] QString p_kvdbFile() const;
    [[nodiscard]] bool p_autoLogin() const { return m_record.autoLogin; }
    void p_autoLogin(bool value) { m_record.autoLogin = value; }
    /// The login key, which is held enciphered only. The caller wipes the copy. A new key renews
    /// p_hashLgnKey(), and the remembered key when there is one.
    [[nodiscard]] QString p_plainLgnKey() const;
    void p_plainLgnKey(const QString& value);
    /// The key was changed, and the database goes on in the working copy `copy`. When the record on
    /// disk names `formerCopy`, it changes key and path in one step. Throws with nothing changed
    /// when it could not be written; false when it was, but perhaps not for good.
    [[nodiscard]] bool takeLgnKey(const QString& key, const QString& formerCopy,
                                  const QString& copy);
    /// Whether the sealed file may still be under the key from before a change: a session ended
    /// abnormally between that change and its sealing.
    [[nodiscard]] bool p_isKeyChangePending() const { return !m_key.formerHash.isEmpty(); }
    /// While a change is pending and its working copy is gone or given up, both keys are good.
    void acceptFormerKey() { m_isCopyGivenUp = true; }
    [[nodiscard]] bool CheckLgnKey(const QString& key) const;
    /// Login time, or exit time after a clean exit.
    [[nodiscard]] const QDateTime& p_activeTime() const { return m_record.activeTime; }
    void p_activeTime(const QDateTime& value) { m_record.activeTime = value; }
    /// Working copy of the running session; empty after a clean exit.
    [[nodiscard]] const QString& p_activeFile() const { return m_record.activeFile; }
    /// Another path ends a pending change of the key.
    void p_activeFile(const QString& value);
    /// Whether the desktop session starts the program with this user's database. Set at once; a
    /// failure is shown.
    [[nodiscard]] bool p_startupWithOS() const { return m_startupWithOS; }
    void p_startupWithOS(bool value);
    /// Makes ready for a new record.
    void Clear();
    /// Background picture on the login form.
    [[nodiscard]] bool p_themeBackground() const { return m_record.themeBackground; }
    void p_themeBackground(bool value) { m_record.themeBackground = value; }

  private:
    /// The record as the registry holds it.
    struct Values {
        QString hash;
        QString pair;
        QString password;
        QString text;
        QString formerHash;
        QString sealedMark;
    };
    /// What belongs to the login key beside the record.
    struct Key {
        QString hash;
        QString formerHash;  ///< of the sealed file's key while that is another; else empty
        QString partA;       ///< the key of the session, in the form of the record
        QString partB;
    };

    bool writeValues(const Values& values);
    void refreshAutostart() const;
    /// Whether there is a record on disk that this program cannot read.
    [[nodiscard]] bool isUnreadable() const;
    /// Whether the record on disk names this working copy.
    [[nodiscard]] bool isRecorded(const QString& copy) const;

    UserServices m_services;
    UserRecord m_record;  ///< its key parts are the remembered key
    Key m_key;
    /// The enciphered record as last read or written; each writing makes another one.
    QString m_recordText;
    QString m_sealedMark;
    bool m_isCopyGivenUp = false;
    bool m_startupWithOS = false;
};

}  // namespace keeper
