// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <sqlcipher/sqlite3.h>

#include <QByteArray>
#include <array>
#include <new>

#include "crypto/secure_wipe.h"
#include "platform/database.h"

namespace keeper {
namespace {

constexpr int kDateLength = 19;
/// More than the program has texts of statements.
constexpr std::size_t kMostIdleStatements = 128;

void putDigits(char* out, int count, int value) {
    for (int i = count - 1; i >= 0; --i) {
        out[i] = static_cast<char>('0' + value % 10);
        value /= 10;
    }
}

/// -1 when there is something else than digits.
int getDigits(const char* text, int count) {
    int value = 0;
    for (int i = 0; i < count; ++i) {
        if (text[i] < '0' || text[i] > '9') {
            return -1;
        }
        value = value * 10 + (text[i] - '0');
    }
    return value;
}

/// By hand: the general formatter is a hundred times slower and whole tables pass through here.
std::array<char, kDateLength> formatDate(const QDate& date, const QTime& time) {
    if (date.year() < 1 || date.year() > 9999) {
        throw DatabaseError(SQLITE_RANGE, QStringLiteral("bind: date out of range"));
    }
    std::array<char, kDateLength> text{};
    putDigits(text.data(), 4, date.year());
    text[4] = text[7] = '-';
    putDigits(&text[5], 2, date.month());
    putDigits(&text[8], 2, date.day());
    text[10] = 'T';
    putDigits(&text[11], 2, time.hour());
    text[13] = text[16] = ':';
    putDigits(&text[14], 2, time.minute());
    putDigits(&text[17], 2, time.second());
    return text;
}

/// A null that comes of want of memory would read as an empty text, and be written back as one.
const unsigned char* textOf(sqlite3* handle, sqlite3_stmt* statement, int column) {
    const auto* found = sqlite3_column_text(statement, column);
    if (found == nullptr && sqlite3_errcode(handle) == SQLITE_NOMEM) {
        throw DatabaseError(SQLITE_NOMEM, QStringLiteral("sqlite3_column_text: out of memory"));
    }
    return found;
}

}  // namespace

sqlite3_stmt* Database::takeStatement(const char* sql) {
    if (m_handle == nullptr) {
        throw DatabaseError(SQLITE_MISUSE, QStringLiteral("sqlite3_prepare_v2: not open"));
    }
    if (auto kept = m_idleStatements.extract(sql); !kept.empty()) {
        return kept.mapped();
    }
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(m_handle, sql, -1, &statement, nullptr) != SQLITE_OK) {
        throw DatabaseError(sqlite3_extended_errcode(m_handle),
                            QStringLiteral("sqlite3_prepare_v2: %1")
                                .arg(QString::fromUtf8(sqlite3_errmsg(m_handle))));
    }
    return statement;
}

void Database::giveBack(sqlite3_stmt* statement) noexcept {
    if (statement == nullptr) {
        return;
    }
    sqlite3_reset(statement);
    // The values may be secrets.
    sqlite3_clear_bindings(statement);
    bool isKept = false;
    try {
        isKept = m_idleStatements.size() < kMostIdleStatements &&
                 m_idleStatements.try_emplace(sqlite3_sql(statement), statement).second;
    } catch (const std::bad_alloc&) {
        isKept = false;
    }
    if (!isKept) {
        sqlite3_finalize(statement);
    }
}

void Database::dropStatements() {
    for (const auto& [sql, statement] : m_idleStatements) {
        sqlite3_finalize(statement);
    }
    m_idleStatements.clear();
}

Statement::Statement(Database& database, const char* sql)
    : m_database(database), m_handle(database.handle()), m_statement(database.takeStatement(sql)) {}

Statement::~Statement() {
    m_database.giveBack(m_statement);
}

void Statement::fail(const char* call) const {
    throw DatabaseError(sqlite3_extended_errcode(m_handle),
                        QStringLiteral("%1: %2").arg(QString::fromLatin1(call),
                                                     QString::fromUtf8(sqlite3_errmsg(m_handle))));
}

void Statement::check(int result, const char* call) const {
    if (result != SQLITE_OK) {
        fail(call);
    }
}

Statement& Statement::bind(int index, const QString& text) {
    QByteArray bytes = text.toUtf8();
    const int result = sqlite3_bind_text(m_statement, index, bytes.constData(),
                                         static_cast<int>(bytes.size()), SQLITE_TRANSIENT);
    secureWipe(bytes.data(), static_cast<std::size_t>(bytes.size()));
    check(result, "sqlite3_bind_text");
    return *this;
}

Statement& Statement::bind(int index, std::int64_t number) {
    check(sqlite3_bind_int64(m_statement, index, number), "sqlite3_bind_int64");
    return *this;
}

Statement& Statement::bind(int index, const QDateTime& time) {
    if (!time.isValid()) {
        return bindNull(index);
    }
    const QDateTime local = time.timeSpec() == Qt::LocalTime ? time : time.toLocalTime();
    const auto text = formatDate(local.date(), local.time());
    check(sqlite3_bind_text(m_statement, index, text.data(), kDateLength, SQLITE_TRANSIENT),
          "sqlite3_bind_text");
    return *this;
}

Statement& Statement::bind(int index, const QDate& date) {
    if (!date.isValid()) {
        return bindNull(index);
    }
    const auto text = formatDate(date, QTime(0, 0));
    check(sqlite3_bind_text(m_statement, index, text.data(), kDateLength, SQLITE_TRANSIENT),
          "sqlite3_bind_text");
    return *this;
}

Statement& Statement::bindNull(int index) {
    check(sqlite3_bind_null(m_statement, index), "sqlite3_bind_null");
    return *this;
}

bool Statement::step() {
    const int result = sqlite3_step(m_statement);
    if (result != SQLITE_ROW && result != SQLITE_DONE) {
        fail("sqlite3_step");
    }
    return result == SQLITE_ROW;
}

int Statement::run() {
    while (step()) {
    }
    const int rows = sqlite3_stmt_readonly(m_statement) != 0 ? 0 : sqlite3_changes(m_handle);
    // The parameters stay, so that a loop binds only what differs.
    check(sqlite3_reset(m_statement), "sqlite3_reset");
    return rows;
}

void Statement::reset() {
    // A failed step is reported by step(); the answer here only repeats it.
    sqlite3_reset(m_statement);
    check(sqlite3_clear_bindings(m_statement), "sqlite3_clear_bindings");
}

bool Statement::isNull(int column) const {
    return sqlite3_column_type(m_statement, column) == SQLITE_NULL;
}

QString Statement::text(int column) const {
    const auto* found = textOf(m_handle, m_statement, column);
    return found == nullptr ? QString()
                            : QString::fromUtf8(reinterpret_cast<const char*>(found),
                                                sqlite3_column_bytes(m_statement, column));
}

std::string_view Statement::utf8(int column) const {
    const auto* found = textOf(m_handle, m_statement, column);
    return found == nullptr
               ? std::string_view()
               : std::string_view(
                     reinterpret_cast<const char*>(found),
                     static_cast<std::size_t>(sqlite3_column_bytes(m_statement, column)));
}

std::int64_t Statement::integer(int column) const {
    return sqlite3_column_int64(m_statement, column);
}

bool Statement::isSameRowAs(const Statement& other) const {
    const int columns = sqlite3_data_count(m_statement);
    if (sqlite3_data_count(other.m_statement) != columns) {
        return false;
    }
    for (int i = 0; i < columns; ++i) {
        if (sqlite3_column_type(m_statement, i) != sqlite3_column_type(other.m_statement, i) ||
            utf8(i) != other.utf8(i)) {
            return false;
        }
    }
    return true;
}

QDateTime Statement::dateTime(int column) const {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(m_statement, column));
    if (text == nullptr || sqlite3_column_bytes(m_statement, column) != kDateLength) {
        return {};
    }
    const QDate date(getDigits(text, 4), getDigits(text + 5, 2), getDigits(text + 8, 2));
    const QTime time(getDigits(text + 11, 2), getDigits(text + 14, 2), getDigits(text + 17, 2));
    if (!date.isValid() || !time.isValid()) {
        return {};
    }
    const QDateTime moment(date, time);
    // Written in a zone where clocks did not jump then; a day on from the day before lies behind
    // the gap.
    return moment.isValid() ? moment : QDateTime(date.addDays(-1), time).addSecs(24 * 60 * 60);
}

}  // namespace keeper
