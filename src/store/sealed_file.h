// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <cstdint>
#include <optional>

namespace keeper {

class Cryptor3;
class Random;

/// Why a file could not be unsealed.
enum class UnsealResult {
    Done,
    /// The last block is not the one that this key makes: another key, or damage in that block.
    NotUnderThisKey,
    /// No key makes such a file: it is empty, cut, copied in part, or has a page of zeros, as a
    /// power cut or a failing disk leaves them.
    Malformed,
    /// The key is right; disk, rights or memory failed. Says nothing about the content.
    SystemFailed,
};

/// The end of the name of a copy that is prepared for another machine. A killed program leaves it
/// in the state folder, where the next working copy clears it away.
inline const QString kDispatchingSuffix = QStringLiteral(".dispatching");

/// Path of a new, empty file that only its owner may read: FOLDER/PREFIX, 32 random digits, SUFFIX.
/// Throws std::system_error.
[[nodiscard]] QString makeFreshFile(const QString& folder, const QString& prefix,
                                    const QString& suffix, Random& random);

/// A new, empty file that only its owner may read. Throws std::system_error, also when there is
/// one.
void createPrivateFile(const QString& path);

/// Deletes the files of the folder whose names begin and end so.
void removeLeftovers(const QString& folder, const QString& prefix, const QString& suffix);

/// Renames over `to`, which then survives a power cut. REQUIRES: the content of `from` is flushed,
/// both lie on one file system. Throws std::system_error.
void moveDurably(const QString& from, const QString& to);

/// Makes the name of a file survive a power cut. Throws std::system_error.
void flushFolderOf(const QString& path);

/// Enciphers `source` into the place of `target` in one step: beside it, flushed, renamed over it,
/// folder flushed. The old target stays whole on every failure, which throws (std::system_error or
/// KeeperError). Leftovers of interrupted runs beside the target are removed. `source` stays.
void sealFile(Cryptor3& cipher, const QString& source, const QString& target, const QString& key,
              Random& random);

/// Deciphers `source` into the existing, empty `target`. On failure there is no target.
/// Throws std::system_error when the source cannot be read.
[[nodiscard]] UnsealResult unsealFile(Cryptor3& cipher, const QString& source,
                                      const QString& target, const QString& key);

/// Tells a sealed file from another that takes its place: its last block, which is the same for all
/// files under one key, size and time of change, joined by "-". Empty for no sealed file. Throws
/// std::system_error when the disk cannot tell.
[[nodiscard]] QString sealedMark(const QString& path);

/// Whether two marks are of files under one key; unknown marks are.
[[nodiscard]] bool isSameKeyByMark(const QString& left, const QString& right);

/// Keeps the file under another name in its folder, which is returned; the file stays in its place
/// where the file system has links. Throws std::system_error.
[[nodiscard]] QString setSealedFileAside(const QString& path);

/// What the person is told of it.
[[nodiscard]] QString foreignFileText(const QString& aside);

/// What can be told of a sealed file without its key: the number of its pages, or nothing for one
/// that no key makes. Throws std::system_error.
[[nodiscard]] std::optional<std::int64_t> pagesOfSealedFile(const QString& path);

/// Deciphers the first page of the database in `source` into the new file `target` (mode 0600),
/// whatever the rest is like. Throws std::system_error.
void unsealFirstPage(Cryptor3& cipher, const QString& source, const QString& target,
                     const QString& key);

}  // namespace keeper
