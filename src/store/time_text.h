// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QDateTime>
#include <QString>

namespace keeper {

/// Durations, moments and days of the week as people read them.
class Time {
  public:
    enum class Style { Words, Colons };

    /// Hours, minutes and seconds with at least two digits each: "01小时02分05秒", or "01:02:05".
    /// Hours grow beyond two digits. REQUIRES: seconds >= 0.
    [[nodiscard]] static QString ShowTime(qint64 seconds, Style style = Style::Words);
    /// "星期日" to "星期六"; empty for an invalid date.
    [[nodiscard]] static QString GetWeekDay(const QDate& date);
    /// "2026/5/20 9:05:00", the one form of a moment in messages, whatever the system's language.
    [[nodiscard]] static QString ShowMoment(const QDateTime& moment);
};

}  // namespace keeper
