// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "store/column_cipher.h"

#include "crypto/secure_wipe.h"
#include "store/column_text.h"
#include "store/failure.h"

namespace keeper {

QString ColumnCipher::toColumn(const QString& plain) const {
    if (!isOn() || plain.isEmpty()) {
        return plain;
    }
    QString key = m_key.p_plainIdpPwd();
    const WipeGuard keyGuard(key);
    // The cipher passes a text through when its key is empty: plain text in an enciphered column.
    if (key.isEmpty()) {
        throw KeeperError(5, QStringLiteral("ColumnCipher"),
                          QStringLiteral("独立密码尚未验证，无法加密该内容。"));
    }
    QString column = encipheredCell(m_cryptor, plain, key);
    if (column.isEmpty()) {
        throw KeeperError(5, QStringLiteral("ColumnCipher"),
                          QStringLiteral("号码或密码加密失败，未保存。"));
    }
    return column;
}

QString ColumnCipher::toPlain(const QString& column) const {
    if (!isOn() || column.isEmpty()) {
        return column;
    }
    QString key = m_key.p_plainIdpPwd();
    const WipeGuard keyGuard(key);
    return decipheredCell(m_cryptor, column, key);
}

}  // namespace keeper
