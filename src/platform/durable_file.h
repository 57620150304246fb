// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QByteArray>
#include <QString>
#include <chrono>
#include <optional>

#include "platform/unique_fd.h"

namespace keeper {

/// Files that must be whole after a power cut, and that nobody else may read. Every failure is a
/// std::system_error that names the failed step and the path; a failed replacement leaves the old
/// content as it was.

/// Makes the folder and its missing parents with mode 0700; what stands already stays as it is.
void ensureFolder(const QString& folder);
/// The same, and takes the rights of others from the folder when it stands already.
void ensurePrivateFolder(const QString& folder);

/// The whole content of a regular file; no value when there is none. A file above `limit` bytes is
/// EFBIG, anything but a regular file EINVAL, a link that leads nowhere ENOENT.
[[nodiscard]] std::optional<QByteArray> readWholeFile(const QString& path, qint64 limit);

/// Puts `content` in the place of the file in one step: written beside it with mode 0600, flushed,
/// renamed over it, the folder flushed. A link stays, and the file that it leads to is replaced. Of
/// several writers the last one counts, and none disturbs another. What a kill leaves is deleted by
/// the next replacement in that folder. REQUIRES: the folder exists.
void replaceFile(const QString& path, const QByteArray& content);

/// Gives a file the first free name of the form PATH.SUFFIX, PATH.SUFFIX-2, ... and never one that
/// is in use. Returns the new path.
QString setFileAside(const QString& path, const QString& suffix);
/// Writes `content` under such a name, as durably as replaceFile(), while PATH stays as it is.
QString copyAside(const QString& path, const QByteArray& content, const QString& suffix);

/// Deletes a file durably; false when there was none.
bool removeFile(const QString& path);

/// Holds an exclusive lock between processes, and between objects of one process, on a separate
/// lock file (mode 0600), which stays. The system frees it when the process dies.
class FileLock {
  public:
    /// Throws std::system_error EWOULDBLOCK when another holder keeps it for longer than
    /// `patience`.
    explicit FileLock(const QString& path,
                      std::chrono::milliseconds patience = std::chrono::seconds(5));

  private:
    UniqueFd m_file;
};

}  // namespace keeper
