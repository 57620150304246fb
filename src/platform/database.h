// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QDateTime>
#include <QString>
#include <array>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>

struct sqlite3;
struct sqlite3_stmt;

namespace keeper {

class PageKey;

/// A failed call of the database engine. `number` is the engine's extended result code; the
/// description names the failed call and the engine's text, and never holds a key or a bound value.
class DatabaseError : public std::runtime_error {
  public:
    DatabaseError(int number, const QString& description)
        : std::runtime_error(description.toStdString()),
          m_number(number),
          m_description(description) {}
    [[nodiscard]] int number() const { return m_number; }
    [[nodiscard]] const QString& description() const { return m_description; }
    /// The file is no sound database under this password.
    [[nodiscard]] bool saysNoDatabase() const;
    /// The first page is not under this password, or is no page of a database at all.
    [[nodiscard]] bool saysWrongPassword() const;
    /// Somebody else holds the file.
    [[nodiscard]] bool saysBusy() const;

  private:
    int m_number;
    QString m_description;
};

/// Page cipher and derivation of the engine; the values are part of the file format.
struct DatabaseOptions {
    /// Rounds of PBKDF2. Tests lower this; the program never does.
    int keyRounds = 256'000;
    int pageSize = 4096;
    /// Whether the keys are kept out of the swap space, which takes milliseconds.
    bool locksKeys = true;
};

/// One open, encrypted, exclusively held database file.
///
/// Opening takes the lock at once and keeps it until close, so that a second program is refused
/// from the first moment (SQLITE_BUSY). Foreign keys are on. A hot journal of a crash is rolled
/// back. Every failure throws DatabaseError. Not copyable; statements must be gone before close().
///
/// While it is open nobody else in this process may open and close the file: POSIX drops the lock
/// of a process with the first descriptor that it closes.
class Database {
  public:
    /// How much of a file is read before it is trusted. AllPages checks the authentication code of
    /// every page, unused ones included; it is for files that come from outside the program's own
    /// writes. Only the page key can make such a code, so it stands for the engine's own slower
    /// check of the structure.
    enum class Trust { Header, AllPages };

    explicit Database(DatabaseOptions options = {});
    ~Database();
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    /// Makes a new file (mode 0600) under `password`. REQUIRES: not open, `path` absent, password
    /// not empty.
    void create(const QString& path, const QString& password);
    /// Opens an existing file and proves the password by reading it. A missing or empty file, and a
    /// size that is not the number of pages that the file itself tells, is refused (SQLITE_NOTADB
    /// or SQLITE_CORRUPT) and leaves the file untouched.
    void open(const QString& path, const QString& password, Trust trust = Trust::Header);
    void close();
    /// Whether another process has the database open. REQUIRES: this process has not.
    [[nodiscard]] static bool isHeldElsewhere(const QString& path);
    [[nodiscard]] bool isOpen() const { return m_handle != nullptr; }
    [[nodiscard]] const QString& path() const { return m_path; }

    /// Changes the password: a proven copy, made at `beside` on the same file system, takes the
    /// place of the file. On failure the old password stands, and the database is open under it
    /// unless the disk cannot even read. REQUIRES: no transaction, no statement, `beside` absent.
    void rekey(const QString& oldPassword, const QString& newPassword, const QString& beside);
    /// Writes a compacted copy of the open database to the absent `target` (mode 0600) under
    /// `password`, compares it with this one and flushes it to disk. A failure leaves no target.
    void exportTo(const QString& target, const QString& password);
    /// The engine's own integrity check and the foreign keys; an empty text means sound.
    [[nodiscard]] QString checkIntegrity();
    /// Reads the whole file again and checks the authentication code of every page: the disk may
    /// have spoilt one since. Throws DatabaseError (SQLITE_CORRUPT). REQUIRES: opened by open(), no
    /// transaction.
    void checkPages() const;

    /// Gives back the memory of all pages in clear that no statement needs just now, wiped. Reading
    /// goes on as before, from the file.
    void forgetPages();

    /// Runs statements without parameters (schema, pragmas). Never put a value into the text.
    void execute(const char* sql);
    /// Rows changed by the last finished insert, update or delete, cascades not counted.
    [[nodiscard]] int changes() const;
    [[nodiscard]] sqlite3* handle() const { return m_handle; }

  private:
    friend class Statement;
    /// A statement that nobody runs, prepared now or kept from an earlier use.
    [[nodiscard]] sqlite3_stmt* takeStatement(const char* sql);
    void giveBack(sqlite3_stmt* statement) noexcept;
    void dropStatements();
    [[nodiscard]] sqlite3* connect(const QString& path, const QString& password, bool isNew,
                                   std::unique_ptr<PageKey>* pageKey = nullptr) const;
    void checkSize() const;
    void forgetCodeKey();

    sqlite3* m_handle = nullptr;
    QString m_path;
    DatabaseOptions m_options;
    /// Of the pages' authentication codes; it opens nothing.
    std::array<std::uint8_t, 32> m_codeKey{};
    /// Preparing costs more than to look one entry up. Reset and without values.
    std::unordered_map<std::string, sqlite3_stmt*> m_idleStatements;
};

/// A prepared statement; the database keeps it for the next of the same text. Parameters count from
/// 1, columns from 0. Dates and times are both stored as 19 characters "YYYY-MM-DDThh:mm:ss" in
/// local time (a date alone at 00:00:00), so that they sort and compare as text. An invalid date is
/// stored as null and read back invalid; a year outside 1 .. 9999 is refused.
class Statement {
  public:
    Statement(Database& database, const char* sql);
    ~Statement();
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    Statement& bind(int index, const QString& text);
    Statement& bind(int index, std::int64_t number);
    Statement& bind(int index, int number) { return bind(index, std::int64_t{number}); }
    Statement& bind(int index, bool flag) { return bind(index, std::int64_t{flag ? 1 : 0}); }
    Statement& bind(int index, const QDateTime& time);
    Statement& bind(int index, const QDate& date);
    /// Literals would choose the flag: wrap them in a QString.
    Statement& bind(int index, const char16_t* text) = delete;
    Statement& bind(int index, const char* text) = delete;
    Statement& bindNull(int index);

    /// Advances to the next row; false when there is none.
    [[nodiscard]] bool step();
    /// Runs to the end, for statements without rows, and returns the rows changed.
    int run();
    /// Ready for new parameters; the old ones are cleared.
    void reset();

    [[nodiscard]] bool isNull(int column) const;
    /// Null reads as the empty text, 0, false and the invalid date.
    [[nodiscard]] QString text(int column) const;
    /// The text as UTF-8, valid until the next step; empty for null.
    [[nodiscard]] std::string_view utf8(int column) const;
    [[nodiscard]] std::int64_t integer(int column) const;
    [[nodiscard]] bool flag(int column) const { return integer(column) != 0; }
    /// A time that the local clock leaves out reads as the moment behind the gap.
    [[nodiscard]] QDateTime dateTime(int column) const;
    [[nodiscard]] QDate date(int column) const { return dateTime(column).date(); }
    /// Whether both stand on rows of the same columns, types and bytes.
    [[nodiscard]] bool isSameRowAs(const Statement& other) const;

  private:
    [[noreturn]] void fail(const char* call) const;
    void check(int result, const char* call) const;

    Database& m_database;
    sqlite3* m_handle;
    sqlite3_stmt* m_statement = nullptr;
};

/// All or nothing: rolls back unless commit() was reached. Nested ones are savepoints.
class Transaction {
  public:
    explicit Transaction(Database& database);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    void commit();

  private:
    Database& m_database;
    bool m_isNested;
    bool m_done = false;
};

}  // namespace keeper
