// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <cstdint>
#include <string>

struct sqlite3;
struct sqlite3_stmt;

namespace keeper {

/// The system's unencrypted SQLite, as the peer of the encrypted engine. It is loaded at run time
/// and kept apart, because both libraries carry the same names. Failures end the program with a
/// message.
class PlainSqlite {
  public:
    explicit PlainSqlite(const std::string& path);
    ~PlainSqlite();
    PlainSqlite(const PlainSqlite&) = delete;
    PlainSqlite& operator=(const PlainSqlite&) = delete;

    void execute(const char* sql);

    class Query {
      public:
        Query(PlainSqlite& database, const char* sql);
        ~Query();
        Query(const Query&) = delete;
        Query& operator=(const Query&) = delete;
        void bind(int index, const std::string& text);
        void bind(int index, std::int64_t number);
        void bindNull(int index);
        bool step();
        void reset();
        /// Valid until the next step.
        [[nodiscard]] const char* text(int column, int& size) const;
        [[nodiscard]] std::int64_t integer(int column) const;

      private:
        sqlite3* m_handle;
        sqlite3_stmt* m_statement = nullptr;
    };

  private:
    sqlite3* m_handle = nullptr;
};

}  // namespace keeper
