// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "store/sys_logs.h"

#include <QByteArray>
#include <QStringList>
#include <utility>

#include "platform/clock.h"
#include "platform/database.h"
#include "store/failure.h"
#include "store/log_filter.h"
#include "store/time_text.h"

namespace keeper {

namespace {

constexpr int kFirstExitStatus = 13;

/// The numbers of a list; none for "0". Throws KeeperError 13 on anything that is no number.
std::vector<std::int32_t> parseStatusNos(const QString& statusNos) {
    std::vector<std::int32_t> numbers;
    if (statusNos.trimmed() == QLatin1String("0")) {
        return numbers;
    }
    const QStringList parts = statusNos.split(QLatin1Char(','));
    for (const QString& part : parts) {
        bool isNumber = false;
        numbers.push_back(part.trimmed().toInt(&isNumber));
        if (!isNumber) {
            throw KeeperError(13, QStringLiteral("SysLogs.Display"),
                              QStringLiteral("状态号列表有误：") + statusNos);
        }
    }
    return numbers;
}

QByteArray displaySql(bool hasPeriod, std::size_t statusCount) {
    QByteArray sql = "select dateTime, statusNo, lCount, Description from tb_SysLog where 1";
    if (hasPeriod) {
        sql += " and dateTime between ? and ?";
    }
    if (statusCount > 0) {
        sql += " and statusNo in (?";
        for (std::size_t i = 1; i < statusCount; ++i) {
            sql += ", ?";
        }
        sql += ')';
    }
    return sql + " order by dateTime desc, rowid desc";
}

/// The first characters, never half of a surrogate pair.
QString storedDescription(const QString& description) {
    QString stored = description.left(SysLogs::kMaxDescription);
    if (!stored.isEmpty() && stored.back().isHighSurrogate()) {
        stored.chop(1);
    }
    return stored;
}

QString stayText(const SysLog& log) {
    const QDateTime exit = log.m_dateTime;
    const QDateTime login = exit.addSecs(-qint64{log.m_lCount});
    return QStringLiteral("上次登入本数据库的时间为：\r\n") + Time::ShowMoment(login) +
           QStringLiteral("，") + Time::GetWeekDay(login.date()) +
           QStringLiteral("；\r\n并于\r\n") + Time::ShowMoment(exit) + QStringLiteral("，") +
           Time::GetWeekDay(exit.date()) + QStringLiteral("\r\n") + log.p_Status() +
           QStringLiteral("。");
}

}  // namespace

int SysLogs::Count() {
    return guarded(m_context.prompt, QStringLiteral("SysLogs.Count"), 0, [&] {
        Statement statement(m_context.database, "select count(*) from tb_SysLog");
        return statement.step() ? static_cast<int>(statement.integer(0)) : 0;
    });
}

bool SysLogs::Display(std::vector<SysLogLine>& lines, const QDate& from, const QDate& to,
                      const QString& statusNos, int& count) {
    lines.clear();
    count = 0;
    return guardedRun(m_context.prompt, QStringLiteral("SysLogs.Display"), [&] {
        const std::vector<std::int32_t> numbers = parseStatusNos(statusNos);
        const auto period = logPeriod(from, to, m_context.clock.today());
        Statement statement(m_context.database,
                            displaySql(period.has_value(), numbers.size()).constData());
        int index = 0;
        if (period) {
            statement.bind(1, period->from).bind(2, period->to), index = 2;
        }
        for (const std::int32_t number : numbers) {
            statement.bind(++index, number);
        }
        while (statement.step()) {
            SysLog log;
            log.m_statusNo = static_cast<std::int32_t>(statement.integer(1));
            log.m_lCount = static_cast<std::int32_t>(statement.integer(2));
            log.m_Description = statement.text(3);
            lines.push_back({++count, logTimeText(statement.text(0)),
                             QStringLiteral("%1").arg(log.m_statusNo, 2, 10, QLatin1Char('0')),
                             log.p_Status()});
        }
    });
}

bool SysLogs::Add(const SysLog& log) {
    return guardedRun(m_context.prompt, QStringLiteral("SysLogs.Add"), [&] {
        Statement(m_context.database,
                  "insert into tb_SysLog (dateTime, statusNo, lCount, Description)"
                  " values (?, ?, ?, ?)")
            .bind(1, log.m_dateTime)
            .bind(2, log.m_statusNo)
            .bind(3, log.m_lCount)
            .bind(4, storedDescription(log.m_Description))
            .run();
    });
}

int SysLogs::Clear(std::int16_t days) {
    return guarded(m_context.prompt, QStringLiteral("SysLogs.Clear"), 0, [&] {
        if (days == 0) {
            return Statement(m_context.database, "delete from tb_SysLog").run();
        }
        return Statement(m_context.database, "delete from tb_SysLog where dateTime < ?")
            .bind(1, firstKeptDay(m_context.clock.today(), days))
            .run();
    });
}

bool SysLogs::GetLastTime(QString& text) {
    return guarded(m_context.prompt, QStringLiteral("SysLogs.GetLastTime"), false, [&] {
        // One step down the key for each of the three statuses, however long the log is.
        Statement statement(
            m_context.database,
            "select dateTime, statusNo, lCount, Description from tb_SysLog where rowid in ("
            " select (select rowid from tb_SysLog where statusNo = s.no"
            "         order by dateTime desc, rowid desc limit 1)"
            " from (select ?1 as no union all select ?1 + 1 union all select ?1 + 2) as s)"
            " order by dateTime desc, rowid desc limit 1");
        statement.bind(1, kFirstExitStatus);
        if (!statement.step()) {
            text = QStringLiteral("这是阁下第一次登入本数据库。");
            return false;
        }
        SysLog log;
        log.m_dateTime = statement.dateTime(0);
        log.m_statusNo = static_cast<std::int32_t>(statement.integer(1));
        log.m_lCount = static_cast<std::int32_t>(statement.integer(2));
        log.m_Description = statement.text(3);
        text = stayText(log);
        return true;
    });
}

}  // namespace keeper
