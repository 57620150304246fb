// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

namespace keeper {

class Cryptor3;

/// Where the state of column encryption comes from; the settings and the gate above implement it.
class ColumnKey {
  public:
    virtual ~ColumnKey() = default;
    /// Whether the columns that hold passwords and numbers are enciphered.
    [[nodiscard]] virtual bool p_idpPwdSwitch() const = 0;
    /// The plain independent password, once it has been verified; empty before.
    [[nodiscard]] virtual QString p_plainIdpPwd() const = 0;
};

/// The boundary between plain values in memory and the enciphered columns of the database.
class ColumnCipher {
  public:
    /// Both must outlive this object.
    ColumnCipher(const ColumnKey& key, Cryptor3& cryptor) : m_key(key), m_cryptor(cryptor) {}

    [[nodiscard]] bool isOn() const { return m_key.p_idpPwdSwitch(); }

    /// What the column holds for a value: the value itself while the switch is off. Throws
    /// KeeperError 5 when the cell would not read back as the same value (no verified password, a
    /// failing cipher), because storing it would lose the value.
    [[nodiscard]] QString toColumn(const QString& plain) const;
    /// The value behind a column. An empty text stays empty. A wrong key gives a wrong text.
    [[nodiscard]] QString toPlain(const QString& column) const;

  private:
    const ColumnKey& m_key;
    Cryptor3& m_cryptor;
};

}  // namespace keeper
