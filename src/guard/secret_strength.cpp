// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "guard/secret_strength.h"

#include <array>
#include <bit>

namespace keeper {

QString SecretStrength::text() const {
    static const std::array<QString, 4> kVerdicts{
        QStringLiteral("位：弱"), QStringLiteral("位：中弱"), QStringLiteral("位：中强"),
        QStringLiteral("位：强")};
    if (classes == 0) {
        return {};
    }
    return QString::number(length) + kVerdicts.at(static_cast<std::size_t>(classes) - 1);
}

SecretStrength MeasureStrength(QStringView text) {
    unsigned seen = 0;
    for (const QChar unit : text) {
        if (unit >= u'0' && unit <= u'9') {
            seen |= 1U;
        } else if (unit >= u'A' && unit <= u'Z') {
            seen |= 2U;
        } else if (unit >= u'a' && unit <= u'z') {
            seen |= 4U;
        } else {
            seen |= 8U;
        }
    }
    return {static_cast<int>(text.size()), std::popcount(seen)};
}

}  // namespace keeper
