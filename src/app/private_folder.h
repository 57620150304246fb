// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

namespace keeper {

/// The layout of a private folder: "MORV - " and the user's name, with the sealed database and
/// three subfolders in it. Folder arguments are full paths without a slash at the end.
namespace privatefolder {
/// Of every sealed database, with the dot.
[[nodiscard]] QString databaseExtension();

/// "MORV - ", with which the name of each private folder begins.
[[nodiscard]] QString prefix();
/// What stands behind the prefix in the last step of `path`, which may be a file or a folder; the
/// empty text when there is no prefix.
[[nodiscard]] QString userNameOf(const QString& path);
/// Whether the file lies in the folder that bears its name, by which alone it is found again.
[[nodiscard]] bool isInPlace(const QString& databaseFile);
/// What is told of a file that is not in place.
[[nodiscard]] QString misplacedText();
/// The sealed database in the folder.
[[nodiscard]] QString databaseOf(const QString& folder);
[[nodiscard]] QString backupsOf(const QString& folder);
[[nodiscard]] QString backgroundsOf(const QString& folder);
[[nodiscard]] QString encryptedOf(const QString& folder);

/// Whether both paths lead to one file or folder, links followed. Paths at which nothing can be
/// reached are one where they are written alike.
[[nodiscard]] bool isSamePlace(const QString& one, const QString& other);

/// Makes what is missing: the folder, its subfolders (all 0700) and in each a ".directory" file,
/// by which file managers show icon and tip. What stands already stays as it is. Throws
/// std::system_error for a folder; a ".directory" that cannot be written is left out.
void repair(const QString& folder);

/// Deletes the folder with everything in it. Throws KeeperError that lists what is left, and when
/// the path does not name a private folder: nothing is touched then. An absent folder is no
/// failure.
void destroy(const QString& folder);

}  // namespace privatefolder
}  // namespace keeper
