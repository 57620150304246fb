// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "store/column_cryption.h"

#include <array>

#include "crypto/secure_wipe.h"
#include "platform/database.h"
#include "platform/event_loop.h"
#include "store/column_cipher.h"
#include "store/column_text.h"
#include "store/failure.h"

namespace keeper {

struct ColumnCryption::Column {
    const char* counting;
    /// Row number, content, and what a person knows the row by, behind a row number.
    const char* reading;
    const char* writing;
    const char16_t* handler;
    /// How a message names a row: %1 is what it is known by.
    const char16_t* place;
};

struct ColumnCryption::Cell {
    std::int64_t row = 0;
    QString content;
    QString place;

    Cell() = default;
    Cell(Cell&&) = default;
    Cell& operator=(Cell&&) = default;
    ~Cell() { secureWipe(content); }
};

ColumnCryption::ColumnCryption(Database& database, Prompt& prompt, EventLoop& eventLoop,
                               Cryptor3& cryptor, const ColumnKey& key)
    : m_database(database),
      m_prompt(prompt),
      m_eventLoop(eventLoop),
      m_cryptor(cryptor),
      m_key(key) {}

ColumnCryption::Outcome ColumnCryption::Handle(bool isEnciphering) {
    static constexpr std::array columns{
        Column{"select count(customPwd) from tb_Entry where customPwd is not null",
               "select rowid, customPwd, dirPath||entNo from tb_Entry"
               " where customPwd is not null and rowid > ? order by rowid limit ?",
               "update tb_Entry set customPwd = ? where rowid = ?", u"HandleEntry",
               u"条目[%1]的密码"},
        Column{"select count(customNum) from tb_Net where customNum is not null",
               "select rowid, customNum, dirPath||entNo from tb_Net"
               " where customNum is not null and rowid > ? order by rowid limit ?",
               "update tb_Net set customNum = ? where rowid = ?", u"HandleNet", u"条目[%1]的号码"},
        Column{"select count(Content) from tb_AssNum where Content is not null",
               "select rowid, Content, Name from tb_AssNum"
               " where Content is not null and rowid > ? order by rowid limit ?",
               "update tb_AssNum set Content = ? where rowid = ?", u"HandleAssNum",
               u"关联号码【%1】"},
        Column{"select count(Content) from tb_AssPwd where Content is not null",
               "select rowid, Content, Name from tb_AssPwd"
               " where Content is not null and rowid > ? order by rowid limit ?",
               "update tb_AssPwd set Content = ? where rowid = ?", u"HandleAssPwd",
               u"关联密码【%1】"},
        Column{"select count(originalPwd) from tb_EntLog where originalPwd is not null",
               "select rowid, originalPwd, dirPath||entNo from tb_EntLog"
               " where originalPwd is not null and rowid > ? order by rowid limit ?",
               "update tb_EntLog set originalPwd = ? where rowid = ?", u"HandleEntLog",
               u"条目[%1]的密码日志"}};

    m_isEnciphering = isEnciphering;
    m_isStopping = false;
    m_total = m_done = 0;
    return guarded(m_prompt, QStringLiteral("ColumnCryption.Handle"), Outcome::Failed, [&] {
        for (const Column& column : columns) {
            m_total += count(column);
        }
        m_password = m_key.p_plainIdpPwd();
        const WipeGuard wipe(m_password);
        if (m_password.isEmpty()) {
            throw KeeperError(5, QStringLiteral("ColumnCryption"),
                              QStringLiteral("独立密码尚未验证。"));
        }
        for (const Column& column : columns) {
            const Outcome outcome = handle(column);
            if (outcome != Outcome::Done) {
                return outcome;
            }
        }
        return Outcome::Done;
    });
}

int ColumnCryption::count(const Column& column) {
    Statement statement(m_database, column.counting);
    return statement.step() ? static_cast<int>(statement.integer(0)) : 0;
}

ColumnCryption::Outcome ColumnCryption::handle(const Column& column) {
    const QString where = QStringLiteral("ColumnCryption.") + QString::fromUtf16(column.handler);
    return guarded(m_prompt, where, Outcome::Failed, [&] {
        Statement write(m_database, column.writing);
        for (auto cells = readCells(column, 0); !cells.empty();
             cells = readCells(column, cells.back().row)) {
            for (const Cell& cell : cells) {
                if (!cell.content.isEmpty()) {
                    QString content = converted(cell, column);
                    const WipeGuard wipe(content);
                    write.bind(1, content).bind(2, cell.row).run();
                    write.reset();
                }
                countCell();
                if (m_isStopping) {
                    return Outcome::Stopped;
                }
            }
        }
        return Outcome::Done;
    });
}

std::vector<ColumnCryption::Cell> ColumnCryption::readCells(const Column& column,
                                                            std::int64_t row) {
    // The rows are read ahead of being written: what a query over a table finds while that table
    // changes is not defined. A few at a time, so that little lies in memory in clear.
    constexpr int kReadAhead = 128;
    std::vector<Cell> cells;
    cells.reserve(kReadAhead);
    Statement read(m_database, column.reading);
    read.bind(1, row).bind(2, kReadAhead);
    while (read.step()) {
        Cell& cell = cells.emplace_back();
        cell.row = read.integer(0);
        cell.content = read.text(1);
        cell.place = read.text(2);
    }
    return cells;
}

QString ColumnCryption::converted(const Cell& cell, const Column& column) {
    const auto fail = [&](const QString& what) {
        throw KeeperError(5, QStringLiteral("ColumnCryption"),
                          QString::fromUtf16(column.place).arg(cell.place) + what);
    };
    if (m_isEnciphering) {
        QString enciphered = encipheredCell(m_cryptor, cell.content, m_password);
        if (enciphered.isEmpty()) {
            fail(QStringLiteral("加密失败。"));
        }
        return enciphered;
    }
    QString plain = decipheredCell(m_cryptor, cell.content, m_password);
    if (plain.isEmpty() || encipheredCell(m_cryptor, plain, m_password) != cell.content) {
        secureWipe(plain);
        fail(QStringLiteral("不是当前独立密码下的密文，无法解密。"));
    }
    return plain;
}

void ColumnCryption::countCell() {
    ++m_done;
    if (DisplayProgress) {
        DisplayProgress(static_cast<int>(100.0 * m_done / m_total));
    }
    m_eventLoop.turn();
}

}  // namespace keeper
