// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <QStringView>

namespace keeper {

/// Length of a secret and the number of character classes in it (digits, upper-case letters,
/// lower-case letters, everything else).
struct SecretStrength {
    int length = 0;
    int classes = 0;

    /// The count of characters and the verdict, such as "6位：中强"; empty for an empty secret.
    [[nodiscard]] QString text() const;
    /// 0, 25, 50, 75 or 100.
    [[nodiscard]] int percent() const { return classes * 25; }
};

/// The classes alone decide the verdict; the length is only shown.
[[nodiscard]] SecretStrength MeasureStrength(QStringView text);

}  // namespace keeper
