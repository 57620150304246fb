// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QRegularExpression>
#include <QString>

namespace keeper {

/// A caption for tool tips and screen readers: without "&", the letter that Chinese captions append
/// for it, and the colon at the end.
[[nodiscard]] inline QString plainCaption(QString caption) {
    static const QRegularExpression marks(QStringLiteral("\\(&.\\)|&|[：…]$"));
    return caption.remove(marks);
}

}  // namespace keeper
