// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "store/ent_logs.h"

#include <QByteArray>

#include "crypto/secure_wipe.h"
#include "platform/clock.h"
#include "platform/database.h"
#include "store/column_cipher.h"
#include "store/failure.h"
#include "store/log_filter.h"
#include "store/numbering.h"

namespace keeper {

namespace {

QString statusText(std::int32_t statusNo) {
    switch (statusNo) {
        case EntLog::kCreateEntry:
            return QStringLiteral("1.创建条目");
        case EntLog::kModifyPassword:
            return QStringLiteral("2.修改密码");
        default:
            return QStringLiteral("(过时状态)");
    }
}

QByteArray displaySql(bool hasNumber, bool hasPeriod, bool hasStatus) {
    QByteArray sql =
        "select dirPath, entNo, dateTime, statusNo, pwdName, originalPwd from tb_EntLog where 1";
    if (hasNumber) {
        sql += " and dirPath = ?1 and entNo = ?2";
    }
    if (hasPeriod) {
        sql += " and dateTime between ?3 and ?4";
    }
    if (hasStatus) {
        sql += " and statusNo = ?5";
    }
    return sql + " order by dateTime desc, rowid desc";
}

QString passwordText(const Statement& statement, const ColumnCipher& cipher) {
    const QString pwdName = statement.text(4);
    if (pwdName.isEmpty()) {
        return QStringLiteral("(不予显示)");
    }
    QString password = cipher.toPlain(statement.text(5));
    const WipeGuard guard(password);
    return pwdName + QStringLiteral("：") + password;
}

}  // namespace

EntLog::~EntLog() {
    secureWipe(m_originalPwd);
}

EntLogLine::~EntLogLine() {
    secureWipe(password);
}

QString EntLog::GetStatus() const {
    return statusText(m_statusNo);
}

void EntLog::p_No(const QString& wholeNumber) {
    const EntryNo number = EntryNo::split(wholeNumber);
    m_dirPath = number.dirPath;
    m_entNo = number.entNo;
}

void EntLog::SetEntry(const QString& wholeNumber, std::int32_t status, const QDateTime& now) {
    const EntryNo number = EntryNo::split(wholeNumber);
    SetEntry2(number.dirPath, number.entNo, status, now);
}

void EntLog::SetEntry2(const QString& dirPath, const QString& entNo, std::int32_t status,
                       const QDateTime& now) {
    m_dirPath = dirPath;
    m_entNo = entNo;
    m_statusNo = status;
    if (status != kModifyPassword) {
        m_pwdName.clear();
        secureWipe(m_originalPwd);
        m_originalPwd.clear();
    }
    m_dateTime = now;
}

void EntLog::SetOrgPwd(const QString& pwdName, const QString& originalPwd) {
    m_pwdName = pwdName;
    m_originalPwd = originalPwd;
}

bool EntLogs::Display(std::vector<EntLogLine>& lines, const QString& number, const QDate& from,
                      const QDate& to, std::int32_t status, int& count) {
    lines.clear();
    count = 0;
    return guardedRun(m_context.prompt, QStringLiteral("EntLogs.Display"), [&] {
        const auto period = logPeriod(from, to, m_context.clock.today());
        Statement statement(
            m_context.database,
            displaySql(!number.isEmpty(), period.has_value(), status != 0).constData());
        if (!number.isEmpty()) {
            const EntryNo no = EntryNo::split(number);
            statement.bind(1, no.dirPath).bind(2, no.entNo);
        }
        if (period) {
            statement.bind(3, period->from).bind(4, period->to);
        }
        if (status != 0) {
            statement.bind(5, status);
        }
        while (statement.step()) {
            EntLogLine& line = lines.emplace_back();
            line.no = ++count;
            line.dateTime = logTimeText(statement.text(2));
            line.number = statement.text(0) + statement.text(1);
            line.status = statusText(static_cast<std::int32_t>(statement.integer(3)));
            line.password = passwordText(statement, m_context.cipher);
        }
    });
}

bool EntLogs::Add(const EntLog& log) {
    return guardedRun(m_context.prompt, QStringLiteral("EntLogs.Add"), [&] { insertRow(log); });
}

void EntLogs::insertRow(const EntLog& log) {
    Statement(m_context.database,
              "insert into tb_EntLog (dirPath, entNo, dateTime, statusNo, pwdName, originalPwd)"
              " values (?, ?, ?, ?, ?, ?)")
        .bind(1, log.p_dirPath())
        .bind(2, log.p_entNo())
        .bind(3, log.p_dateTime())
        .bind(4, log.p_statusNo())
        .bind(5, log.p_pwdName())
        .bind(6, m_context.cipher.toColumn(log.p_originalPwd()))
        .run();
}

int EntLogs::Delete(const QString& number) {
    return guarded(m_context.prompt, QStringLiteral("EntLogs.Delete"), 0, [&] {
        const EntryNo no = EntryNo::split(number);
        return Statement(m_context.database,
                         "delete from tb_EntLog where dirPath = ? and entNo = ?")
            .bind(1, no.dirPath)
            .bind(2, no.entNo)
            .run();
    });
}

int EntLogs::Clear(std::int16_t days) {
    return guarded(m_context.prompt, QStringLiteral("EntLogs.Clear"), 0, [&] {
        if (days == 0) {
            return Statement(m_context.database, "delete from tb_EntLog").run();
        }
        return Statement(m_context.database, "delete from tb_EntLog where dateTime < ?")
            .bind(1, firstKeptDay(m_context.clock.today(), days))
            .run();
    });
}

int EntLogs::Count(const QString& number) {
    return guarded(m_context.prompt, QStringLiteral("EntLogs.Count"), 0, [&] {
        const EntryNo no = EntryNo::split(number);
        Statement statement(m_context.database,
                            number.isEmpty()
                                ? "select count(*) from tb_EntLog"
                                : "select count(*) from tb_EntLog where dirPath = ? and entNo = ?");
        if (!number.isEmpty()) {
            statement.bind(1, no.dirPath).bind(2, no.entNo);
        }
        return statement.step() ? static_cast<int>(statement.integer(0)) : 0;
    });
}

}  // namespace keeper
