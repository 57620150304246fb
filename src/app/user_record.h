// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QDateTime>
#include <QString>
#include <cstdint>
#include <optional>

namespace keeper {

/// What the registry keeps of one user, in the order of the record's fields. The members of User
/// of the same names tell what they mean.
struct UserRecord {
    QString activeFile;
    QDateTime activeTime;
    QDateTime attackTime;
    bool autoLogin = false;
    QString keyPartA;
    QString keyPartB;
    bool fingerprint = false;
    bool hideDBPath = false;
    std::int16_t lgnKeyChances0 = 0;
    QString lgnKeyTip;
    QString privateFolder;
    bool themeBackground = false;
    std::int16_t usedTimes = 0;

    /// 14 fields joined by tabs. A text field keeps every character: a backslash is doubled, and
    /// what the ANSI code page lacks, or what would end a field, is written as \uXXXX. A time is
    /// ISO 8601 with its distance from UTC, to the second; an invalid one is the empty text.
    [[nodiscard]] QString toText() const;
    /// No value unless there are exactly 14 fields, each of them readable.
    [[nodiscard]] static std::optional<UserRecord> fromText(const QString& text);

    bool operator==(const UserRecord&) const = default;
};

}  // namespace keeper
