// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QDate>
#include <QString>
#include <optional>
#include <utility>

namespace keeper {

/// First and last moment of a filter, as the text in which the tables hold times.
struct LogPeriod {
    QString from;
    QString to;
};

/// The days from `from` to `to`, whole. A missing first day means from the beginning, a missing
/// last one until the end of `today`. No value when neither is given: then no row is left out.
[[nodiscard]] std::optional<LogPeriod> logPeriod(const QDate& from, const QDate& to,
                                                 const QDate& today);

/// "YYYY年MM月DD日 hh:mm:ss" from the text in which the tables hold a time; empty for none.
[[nodiscard]] QString logTimeText(const QString& stored);

/// The first day that Clear keeps, as text: rows of earlier days are older than `days` days.
[[nodiscard]] QString firstKeptDay(const QDate& today, int days);

}  // namespace keeper
