// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QDateTime>
#include <QString>

namespace keeper {

class SealedDatabase;
class System;
class Users;

/// The rules for the name of a new user, in the folder that will hold the private folder. False
/// with a `message` that people can act on.
[[nodiscard]] bool CheckNewUserName(const QString& name, const QString& parentFolder,
                                    const Users& users, QString& message);

/// Whether a hint may be kept: it goes into file names and into the tab-joined record of the user.
[[nodiscard]] bool CheckSecretTip(const QString& text, QString& message);

/// Whether all characters of a secret count: one that the code page lacks would stand for each
/// other such character, and a near miss would open. False with a `message`.
[[nodiscard]] bool checkCharacters(const QString& secret, QString& message);

/// The rules for a new login key and a new independent password in the wizard.
[[nodiscard]] bool checkNewLoginKey(const QString& key, QString& message);
[[nodiscard]] bool checkNewIndependentPassword(const QString& password, QString& message);

/// Lays out the private folder of the session's user and the working copy of a new database, and
/// copies the example content that lies in `programFolder`.
[[nodiscard]] bool CreateUser(System& system, SealedDatabase& database,
                              const QString& programFolder, const QDateTime& now);

}  // namespace keeper
