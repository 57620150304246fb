// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "store/time_text.h"

#include <array>

namespace keeper {

QString Time::ShowTime(qint64 seconds, Style style) {
    const auto twoDigits = [](qint64 value) {
        return QStringLiteral("%1").arg(value, 2, 10, QLatin1Char('0'));
    };
    const QString hours = twoDigits(seconds / 3600);
    const QString minutes = twoDigits(seconds % 3600 / 60);
    const QString rest = twoDigits(seconds % 60);
    if (style == Style::Colons) {
        return hours + QLatin1Char(':') + minutes + QLatin1Char(':') + rest;
    }
    return hours + QStringLiteral("小时") + minutes + QStringLiteral("分") + rest +
           QStringLiteral("秒");
}

QString Time::GetWeekDay(const QDate& date) {
    static const std::array<QString, 7> kNames{QStringLiteral("星期日"), QStringLiteral("星期一"),
                                               QStringLiteral("星期二"), QStringLiteral("星期三"),
                                               QStringLiteral("星期四"), QStringLiteral("星期五"),
                                               QStringLiteral("星期六")};
    // QDate counts the days of the week from Monday = 1 to Sunday = 7.
    return date.isValid() ? kNames.at(static_cast<std::size_t>(date.dayOfWeek() % 7)) : QString();
}

QString Time::ShowMoment(const QDateTime& moment) {
    return moment.toString(QStringLiteral("yyyy/M/d h:mm:ss"));
}

}  // namespace keeper
