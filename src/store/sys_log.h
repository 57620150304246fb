// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QDateTime>
#include <QString>
#include <cstdint>

namespace keeper {

/// One row of the system log. It keeps no sentence: a status number, one count and a few values
/// separated by tabs, from which the sentence is composed when the row is read.
class SysLog {
  public:
    static constexpr int kLastStatus = 54;

    QDateTime m_dateTime;
    /// What happened, 1 to kLastStatus.
    std::int32_t m_statusNo = 0;
    /// Its meaning hangs on the status: a count, seconds, a bit set, or a sign that tells variants
    /// apart.
    std::int32_t m_lCount = 0;
    /// Values separated by tabs. Empty is legal: the sentence then shows the placeholders.
    QString m_Description;

    /// The sentence; empty for an unknown status. A value that the description lacks reads as an
    /// empty text, so that a row cut at its maximum length can still be shown.
    [[nodiscard]] QString p_Status() const;
};

}  // namespace keeper
