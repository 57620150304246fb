// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/database.h"
#include "platform/page_key.h"

namespace keeper {

/// To be called before anything starts the cipher library by itself: a configuration file, which
/// the environment may name, must not load code into this process, and reading it would take longer
/// than all the rest of the start. A second call does nothing.
void startCipherLibrary();

/// Heads the file behind a connection. Throws DatabaseError.
[[nodiscard]] PageKey::Salt saltOf(sqlite3* handle);

/// Checks the authentication code of every page of an open database, those that no table uses
/// included, which the engine itself never looks at, under the key of the codes. Throws
/// DatabaseError (SQLITE_CORRUPT). REQUIRES: no transaction.
void checkAllPages(const Database& database, const DatabaseOptions& options,
                   const PageKey::Bytes& codeKey);

/// Throws DatabaseError (SQLITE_CORRUPT) unless both databases have the same tables with the same
/// rows in the same order.
void compareTables(Database& left, Database& right);

}  // namespace keeper
