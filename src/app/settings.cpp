// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/settings.h"

#include <algorithm>
#include <limits>
#include <string>

#include "app/private_folder.h"
#include "crypto/cryptor2.h"
#include "store/failure.h"

namespace keeper {
namespace {

constexpr int unreadable = 4;
constexpr int highestAuthority = 30;
/// Row of tb_TypeByte: chances of the independent password that are used up. A database that no
/// wrong password was tried on holds 0.
constexpr std::size_t usedIdpPwdChances = 12;

[[noreturn]] void refuseRow(const char* table, std::size_t row) {
    throw KeeperError(
        unreadable, QStringLiteral("数据库异常"),
        QStringLiteral("设置表%1的第%2行缺失或无效。").arg(QString::fromLatin1(table)).arg(row));
}

/// The column's value as a whole number within the type; no value when it is something else.
template <typename Number>
bool readValue(const Statement& row, Number& value) {
    const std::int64_t number = row.integer(1);
    value = static_cast<Number>(number);
    return row.text(2) == QStringLiteral("integer") && std::int64_t{value} == number;
}

bool readValue(const Statement& row, QDateTime& value) {
    value = row.dateTime(1);
    return row.isNull(1) || value.isValid();
}

bool readValue(const Statement& row, QString& value) {
    value = row.text(1);
    return row.isNull(1) || row.text(2) == QStringLiteral("text");
}

template <typename Value, std::size_t count>
void readTable(Database& database, const char* table, SettingRows<Value, count>& rows) {
    const std::string sql =
        std::string("SELECT rowNo,value,typeof(value) FROM ") + table + " ORDER BY rowNo";
    Statement select(database, sql.c_str());
    for (std::size_t i = 1; i <= count; ++i) {
        if (!select.step() || select.integer(0) != static_cast<std::int64_t>(i) ||
            !readValue(select, rows.row(i))) {
            refuseRow(table, i);
        }
    }
}

template <typename Value>
void bindValue(Statement& statement, int index, const Value& value) {
    if constexpr (std::is_same_v<Value, QString>) {
        // A null text would be stored as null.
        statement.bind(index, value.isNull() ? QStringLiteral("") : value);
    } else if constexpr (std::is_same_v<Value, QDateTime> || std::is_same_v<Value, bool>) {
        statement.bind(index, value);
    } else {
        statement.bind(index, std::int64_t{value});
    }
}

template <typename Value, std::size_t count>
void writeTable(Database& database, const char* table, const SettingRows<Value, count>& rows,
                bool isNew) {
    const std::string sql = isNew
                                ? std::string("INSERT INTO ") + table + "(value,rowNo) VALUES(?,?)"
                                : std::string("UPDATE ") + table + " SET value=? WHERE rowNo=?";
    Statement statement(database, sql.c_str());
    for (std::size_t i = 1; i <= count; ++i) {
        bindValue(statement, 1, rows.row(i));
        statement.bind(2, static_cast<std::int64_t>(i));
        if (statement.run() != 1) {
            refuseRow(table, i);
        }
        statement.reset();
    }
}

/// One order of tables for reading and writing.
template <typename Tables, typename Operation>
void forEachTable(Tables& tables, Operation&& operation) {
    operation("tb_TypeBoolean", tables.booleans);
    operation("tb_TypeByte", tables.bytes);
    operation("tb_TypeInteger", tables.integers);
    operation("tb_TypeLong", tables.longs);
    operation("tb_TypeDate", tables.dates);
    operation("tb_TypeText", tables.texts);
}

/// Colours of the system, by index: 15 is the face of buttons, 18 the text on them.
constexpr std::int32_t systemColour(std::int32_t index) {
    return std::numeric_limits<std::int32_t>::min() + index;
}

}  // namespace

Settings::Settings(Database& database, Prompt& prompt, const Clock& clock)
    : m_database(database), m_prompt(prompt), m_clock(clock) {}

bool Settings::ReadDB(QString& message) {
    message.clear();
    m_isUnreadable = false;
    return guardedRun(m_prompt, QStringLiteral("cSystem.ReadDB"), [&] {
        try {
            Tables fresh;
            forEachTable(
                fresh, [&](const char* table, auto& rows) { readTable(m_database, table, rows); });
            m_rows = fresh;
        } catch (const DatabaseError& error) {
            // The engine's generic error is what a missing table or column gives.
            constexpr int kPrimaryCode = 0xFF;
            constexpr int kGenericError = 1;
            m_isUnreadable = (error.number() & kPrimaryCode) != kGenericError;
            message = error.description();
            throw;
        } catch (const KeeperError& error) {
            message = error.description();
            throw;
        } catch (...) {
            // Too little memory, say, is no verdict on the database.
            m_isUnreadable = true;
            message = currentFailure().description;
            throw;
        }
        m_lgnKeyChances1 = p_lgnKeyChances0();
    });
}

bool Settings::WriteDB(bool isNew) {
    return guardedRun(m_prompt, QStringLiteral("cSystem.WriteDB"), [&] {
        Transaction transaction(m_database);
        forEachTable(m_rows, [&](const char* table, const auto& rows) {
            writeTable(m_database, table, rows, isNew);
        });
        transaction.commit();
    });
}

bool Settings::NewBuild(const QString& userName) {
    // One object serves all logins of the program, so the rows may be those of another user; the
    // two hints and the digest were given for the new one.
    Tables fresh;
    for (const std::size_t given : {3U, 4U, 5U}) {
        fresh.texts.row(given) = m_rows.texts.row(given);
    }
    m_rows = fresh;
    p_loadTips(true);
    p_recentUpdateAmount(10);
    p_optionTabNo(1);
    p_mainHotKey(1);
    p_singleFillNum(7);
    p_singleFillPwd(8);
    p_lgnKeyChances0(10);
    p_lgnKeyChances1(10);
    p_idpPwdChances0(5);
    p_idpPwdChances1(5);
    p_backgroundColor(systemColour(15));
    p_foregroundColor(systemColour(18));
    p_mainSizeType(2);
    p_backupPath(privatefolder::backupsOf(privatefolder::prefix() + userName));
    const QDateTime today = m_clock.today().startOfDay();
    p_backupStart(today);
    p_idpPwdModifyStart(today);
    p_lgnKeyModifyStart(today);
    p_sqUpdateStart(today);
    p_networkBackupStart(today);
    p_sheetsWidth(6100);
    return WriteDB(true);
}

bool Settings::UpgradeDatabase(std::uint8_t fromVersion) {
    if (fromVersion < 4) {
        p_themeBackground(false);
    } else if (fromVersion < 6) {
        p_assNumToolTipType(false);
        const bool oldType = p_backupType();
        p_backupType(!p_backupPeriod());
        p_backupPeriod(!oldType);
        p_deadCountType(!p_deadCountType());
    }
    return true;
}

int Settings::GetAuthority(int index) const {
    if (index < 0 || index > highestAuthority) {
        return 0;
    }
    return static_cast<int>((static_cast<std::uint32_t>(p_Authorities()) >> unsigned(index)) & 1U);
}

void Settings::SetAuthority(int value, int index) {
    if (index < 0 || index > highestAuthority) {
        return;
    }
    const std::uint32_t bit = 1U << static_cast<unsigned>(index);
    const auto bits = static_cast<std::uint32_t>(p_Authorities());
    // Clearing takes the sign bit along, which is out of use.
    p_Authorities(static_cast<std::int32_t>(value == 1 ? bits | bit : bits & (0x7FFFFFFFU - bit)));
}

void Settings::p_idpPwdChances0(std::uint8_t value) {
    if (value != p_idpPwdChances0()) {
        m_rows.bytes.row(usedIdpPwdChances) = 0;
    }
    m_rows.bytes.row(3) = value;
}

std::int16_t Settings::p_idpPwdChances1() const {
    return static_cast<std::int16_t>(
        std::max(0, p_idpPwdChances0() - m_rows.bytes.row(usedIdpPwdChances)));
}

void Settings::p_idpPwdChances1(std::int16_t value) {
    m_rows.bytes.row(usedIdpPwdChances) =
        static_cast<std::uint8_t>(std::clamp(p_idpPwdChances0() - value, 0, 255));
}

void Settings::KeepIdpPwdChances(int left) {
    const std::int16_t before = p_idpPwdChances1();
    p_idpPwdChances1(static_cast<std::int16_t>(left));
    try {
        Statement update(m_database, "UPDATE tb_TypeByte SET value=? WHERE rowNo=?");
        update.bind(1, std::int64_t{m_rows.bytes.row(usedIdpPwdChances)});
        update.bind(2, static_cast<std::int64_t>(usedIdpPwdChances));
        if (update.run() != 1) {
            refuseRow("tb_TypeByte", usedIdpPwdChances);
        }
    } catch (...) {
        p_idpPwdChances1(before);
        throw;
    }
}

void Settings::SetHashIdpPwd(const QString& password) {
    m_rows.texts.row(3) = Cryptor2::hashString(password);
}

void Settings::p_lgnKeyTip(const QString& value) {
    m_rows.texts.row(5) = value;
    if (onLgnKeyTip) {
        onLgnKeyTip(value);
    }
}

bool Settings::reminds(unsigned bit) const {
    return ((p_entPwdModifyType() >> bit) & 1U) != 0;
}

void Settings::setReminds(unsigned bit, bool value) {
    const unsigned mask = 1U << bit;
    const unsigned bits = p_entPwdModifyType();
    p_entPwdModifyType(static_cast<std::uint8_t>(value ? bits | mask : bits & (255U - mask)));
}

}  // namespace keeper
