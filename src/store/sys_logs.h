// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QDate>
#include <QString>
#include <cstdint>
#include <vector>

#include "store/store_context.h"
#include "store/sys_log.h"

namespace keeper {

/// A line of the system log as people read it.
struct SysLogLine {
    /// Running number from 1.
    int no = 0;
    QString dateTime;
    QString statusNo;
    QString status;
};

/// The table of the system log. Failures are shown as "[number]SysLogs.Operation:" and give the
/// default result.
class SysLogs {
  public:
    static constexpr int kMaxDescription = 150;

    explicit SysLogs(const StoreContext& context) : m_context(context) {}

    int Count();
    /// The rows of a period, newest first, rows of one second newest first too. An invalid day is
    /// none given. `statusNos` is "0" for all, or numbers separated by commas.
    bool Display(std::vector<SysLogLine>& lines, const QDate& from, const QDate& to,
                 const QString& statusNos, int& count);
    /// Stores the first 150 characters of the description.
    bool Add(const SysLog& log);
    /// Deletes what is more than `days` days old, or with 0 everything. Returns the rows deleted.
    int Clear(std::int16_t days);
    /// The report of the last stay at this database, from the records of its exits; false when
    /// there was none, with a text that says so.
    bool GetLastTime(QString& text);

  private:
    StoreContext m_context;
};

}  // namespace keeper
