// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

namespace keeper {

class Cryptor3;

/// From the key that a person types to the key of the sealed file and the password of the database
/// inside it. Scheme false is the current one; scheme true is that of earlier versions and is only
/// read. All results are secrets: wipe them.
class KeyChain {
  public:
    /// The cipher is used by scheme true; its key changes with each call.
    explicit KeyChain(Cryptor3& cipher) : m_cipher(cipher) {}

    /// Key of the sealed file: always 32 characters for keys of up to 32.
    [[nodiscard]] QString GetCryptLgnKey(bool scheme, const QString& key) const;
    /// Password of the database, at most 20 characters. An empty key stands for the password that a
    /// new database is born with.
    [[nodiscard]] static QString GetAccessDBSec(bool scheme, const QString& key);
    /// "]" becomes "}" and ";" becomes ":".
    [[nodiscard]] static QString TransformDBPwd(const QString& text);
    [[nodiscard]] static QString HashToDBPwd(bool scheme, const QString& text);
    /// Index 0 and 1 have 20 characters, 2 has 32; printable ASCII. They stand whole nowhere in the
    /// program.
    [[nodiscard]] static QString GetBuiltinSecret(int index);

  private:
    Cryptor3& m_cipher;
};

}  // namespace keeper
