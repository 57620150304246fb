// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QDateTime>
#include <QString>
#include <cstdint>

#include "crypto/secure_wipe.h"

namespace keeper {

/// The fields that entries of all kinds share. Secrets are plain in memory and wiped at the end.
class Entry {
  public:
    QString m_dirPath;
    QString m_entNo;
    QString m_Title;
    /// Name of the associated password, or kCustomName.
    QString m_pwdName;
    /// Counts only while m_pwdName is kCustomName; the table holds an empty text otherwise.
    QString m_customPwd;
    QString m_Remarks;
    std::int32_t m_usedTimes = 0;
    /// False: discarded, kept but out of use.
    bool m_Effective = false;
    bool m_Bookmark = false;
    QDate m_createDate;
    QDateTime m_recentUpdate;
    QDate m_recentModPwd;
    /// Days between reminders to change the password; 0 for none.
    std::int16_t m_modPwdDays = 0;

    Entry() = default;
    Entry(const Entry&) = default;
    Entry(Entry&&) noexcept = default;
    Entry& operator=(const Entry&) = default;
    Entry& operator=(Entry&&) noexcept = default;
    ~Entry() { secureWipe(m_customPwd); }

    /// Takes the thirteen common fields from an entry of any kind.
    Entry& Copy(const Entry& other) { return *this = other; }
    /// The whole number: directory and own pair.
    [[nodiscard]] QString p_No() const { return m_dirPath + m_entNo; }
    void p_No(const QString& wholeNumber);
};

/// What network objects and applications add, in tb_Net.
class NetEntry : public Entry {
  public:
    /// The URL of a network object; the program path of an application, reduced.
    QString m_Address;
    /// Counts only while m_numName is kCustomName.
    QString m_customNum;
    QString m_numName;

    NetEntry() = default;
    NetEntry(const NetEntry&) = default;
    NetEntry(NetEntry&&) noexcept = default;
    NetEntry& operator=(const NetEntry&) = default;
    NetEntry& operator=(NetEntry&&) noexcept = default;
    ~NetEntry() { secureWipe(m_customNum); }
};

class Web : public NetEntry {
  public:
    Web& Copy(const Web& other) { return *this = other; }
};

class Prg : public NetEntry {
  public:
    Prg& Copy(const Prg& other) { return *this = other; }
};

/// A user file, with its companion row in tb_Fil.
class Fil : public Entry {
  public:
    /// Reduced when it lies in the private folder.
    QString m_filePath;
    /// MD5 of the file.
    QString m_hashCode;
    /// The file on disk is encrypted.
    bool m_Encrypted = false;

    Fil& Copy(const Fil& other) { return *this = other; }
};

}  // namespace keeper
