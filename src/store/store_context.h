// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

namespace keeper {

class Clock;
class ColumnCipher;
class Database;
class Prompt;

/// What every data class works with. The composition root makes the objects and outlives all.
struct StoreContext {
    Database& database;
    Prompt& prompt;
    const Clock& clock;
    ColumnCipher& cipher;
};

}  // namespace keeper
