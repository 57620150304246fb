// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <cstdint>
#include <functional>
#include <vector>

namespace keeper {

class ColumnKey;
class Cryptor3;
class Database;
class EventLoop;
class Prompt;

/// Converts what is stored in the columns that hold passwords and numbers, to and from their
/// enciphered form.
///
/// It writes into the caller's transaction, which also holds the switch: only its commit makes a
/// conversion valid, so that a crash leaves all or nothing.
class ColumnCryption {
  public:
    enum class Outcome {
        Done,
        Stopped,  ///< by Stop()
        Failed,   ///< which was told
    };

    ColumnCryption(Database& database, Prompt& prompt, EventLoop& eventLoop, Cryptor3& cryptor,
                   const ColumnKey& key);

    /// Enciphers (or deciphers) every cell under the key's password. A cell whose new content does
    /// not lead back to the old one fails the whole. REQUIRES: a transaction is open, which the
    /// caller rolls back unless all is done.
    [[nodiscard]] Outcome Handle(bool isEnciphering);
    /// From within DisplayProgress or the event loop: Handle() ends behind the present cell.
    void Stop() { m_isStopping = true; }

    /// After each cell, with the percentage done.
    std::function<void(int percent)> DisplayProgress;

  private:
    struct Column;
    struct Cell;

    [[nodiscard]] int count(const Column& column);
    [[nodiscard]] Outcome handle(const Column& column);
    /// The next cells behind `row`; none at the end.
    [[nodiscard]] std::vector<Cell> readCells(const Column& column, std::int64_t row);
    [[nodiscard]] QString converted(const Cell& cell, const Column& column);
    void countCell();

    Database& m_database;
    Prompt& m_prompt;
    EventLoop& m_eventLoop;
    Cryptor3& m_cryptor;
    const ColumnKey& m_key;
    QString m_password;
    bool m_isEnciphering = false;
    bool m_isStopping = false;
    int m_total = 0;
    int m_done = 0;
};

}  // namespace keeper
