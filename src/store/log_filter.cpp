// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "store/log_filter.h"

namespace keeper {

namespace {

QString dayText(const QDate& day) {
    return day.toString(Qt::ISODate);
}

}  // namespace

// Bounds are texts and not QDateTime: midnight does not exist on some days of some time zones.
std::optional<LogPeriod> logPeriod(const QDate& from, const QDate& to, const QDate& today) {
    if (!from.isValid() && !to.isValid()) {
        return std::nullopt;
    }
    return LogPeriod{
        from.isValid() ? dayText(from) + QStringLiteral("T00:00:00") : QStringLiteral(""),
        dayText(to.isValid() ? to : today) + QStringLiteral("T23:59:59")};
}

QString logTimeText(const QString& stored) {
    constexpr qsizetype kDay = 10;
    constexpr qsizetype kTime = 8;
    if (stored.size() < kDay + 1 + kTime) {
        return {};
    }
    const QStringView text(stored);
    return QStringLiteral("%1年%2月%3日 %4")
        .arg(text.first(4), text.sliced(5, 2), text.sliced(8, 2), text.sliced(kDay + 1, kTime));
}

QString firstKeptDay(const QDate& today, int days) {
    return dayText(today.addDays(-days));
}

}  // namespace keeper
