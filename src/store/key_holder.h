// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

namespace keeper {

/// What the sealed database asks of the session's user. The session stands above and joins it to
/// the user's record and to the settings.
class KeyHolder {
  public:
    virtual ~KeyHolder() = default;

    /// The login key of the session; empty before a login.
    [[nodiscard]] virtual QString p_plainLgnKey() const = 0;
    /// Also renews p_hashLgnKey.
    virtual void p_plainLgnKey(const QString& key) = 0;
    /// The session goes on under `key` in the working copy `copy`. Where the user's record on disk
    /// names `formerCopy`, it takes the hash and the path in one step. Throws with nothing changed
    /// when the record does not say so; false when it does, but perhaps not behind a power cut:
    /// then `formerCopy` must stay.
    [[nodiscard]] virtual bool takeLgnKey(const QString& key, const QString& formerCopy,
                                          const QString& copy) = 0;
    /// SHA-1 of the login key, 40 upper-case digits.
    [[nodiscard]] virtual QString p_hashLgnKey() const = 0;
    /// SHA-1 of the independent password, out of the settings.
    [[nodiscard]] virtual QString p_idpPwdHashCode() const = 0;
    /// Full path of the user's sealed file: PRIVATE FOLDER/USER NAME.kvdb.
    [[nodiscard]] virtual QString p_kvdbFile() const = 0;
};

}  // namespace keeper
