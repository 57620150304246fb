// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <QStringList>

namespace keeper {

/// Deletes a folder with everything in it, read-only children included. It stays inside the folder
/// and on its file system: a symbolic link in it is deleted as a link, a file system mounted inside
/// is left alone. When `folder` itself is a link, what it leads to is deleted, then the link.
///
/// Goes on after a failure, so that as much as possible is gone, and returns "path: reason" for
/// what is left; an empty list means that nothing is left. An absent folder is no failure.
[[nodiscard]] QStringList removeTree(const QString& folder);

}  // namespace keeper
