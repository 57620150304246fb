// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace keeper {

/// Content of a small file, at most 64 KiB; empty when it is absent, closed to this user, or a
/// device behind it has nothing to tell. Throws std::system_error when the system has no means left
/// to look (no free descriptor, no memory): the answer must not then be "absent".
[[nodiscard]] QByteArray readSmallFile(const QString& path);

/// The same for a file that must not give way to another source unless it really is absent or
/// closed to this user: every other failure throws.
[[nodiscard]] QByteArray readIdFile(const QString& path);

/// Names in a folder, in order; none where readSmallFile() would have no content. Throws like it.
[[nodiscard]] QStringList namesIn(const QString& folder);

/// One printable line: control characters and runs of blanks become one blank, the ends are
/// trimmed, at most 255 units are kept.
[[nodiscard]] QString oneLine(const QByteArray& utf8);

}  // namespace keeper
