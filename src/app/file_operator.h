// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

#include "platform/clock.h"
#include "platform/prompt.h"
#include "platform/user_folders.h"

namespace keeper {

/// Whose private folder the paths are reduced against.
class PrivateFolderOwner {
  public:
    virtual ~PrivateFolderOwner() = default;
    [[nodiscard]] virtual QString p_userName() const = 0;
    /// Full path without a slash at the end.
    [[nodiscard]] virtual QString p_privateFolder() const = 0;
    /// Hint of the login key.
    [[nodiscard]] virtual QString p_lgnKeyTip() const = 0;
};

/// Services around paths and files. Paths that are stored in the database are kept in a reduced
/// form, without what differs from machine to machine; docs/registry-format.md, "Paths", has the
/// rules.
class FileOperator {
  public:
    FileOperator(const UserFolders& folders, const Clock& clock, Prompt& prompt,
                 const PrivateFolderOwner& owner);

    /// What stands behind "MORV - " in the path's file or last folder name; else empty.
    [[nodiscard]] static QString GetUserNameByPath(const QString& path);
    /// Deletes the file when it exists; failures are passed over.
    static void EnsureNotExist(const QString& path);
    /// An existing file of at least one byte.
    [[nodiscard]] static bool FileValid(const QString& path);

    /// A path from its reduced form; the last slash as in ReducePath().
    [[nodiscard]] QString ResolvePath(const QString& path, bool withSlash) const;
    /// A path into the private folder keeps its tail from the folder's name on; any other stays.
    /// `withSlash` tells whether the outcome ends with a slash. The empty path stays empty, since
    /// a slash alone would name the root, and the root keeps its slash.
    [[nodiscard]] QString ReducePath(const QString& path, bool withSlash) const;
    [[nodiscard]] static QString ReduceProgramPath(const QString& path);
    /// A program that is missing under "/usr" but present under "/usr/local", or the other way
    /// round, is found there: machines differ in this.
    [[nodiscard]] QString ResolveProgramPath(const QString& path) const;

    /// Length of a file as people read it; "文件不存在" and "文件太大" (2 GiB and more, which no
    /// cipher and no digest here takes) otherwise.
    [[nodiscard]] static QString GetFileLenHuman_Path(const QString& path);
    [[nodiscard]] static QString GetFileLenHuman_Size(qint64 size);

    /// Path of a backup in the folder `tail`: user, hint of the key, and time or "覆盖备份". The
    /// hint tells later which key opens the copy; it is cut where the name would pass the 255
    /// bytes that file systems allow.
    [[nodiscard]] QString GetBackupFilePath(bool isDated, const QString& tail) const;

    [[nodiscard]] QString GetDesktopPath() const;
    [[nodiscard]] static QString GetCurrentFolder();
    /// The chosen file, or the empty text. Starts in `path`, for saving with its name filled in.
    [[nodiscard]] QString FileDialog(bool isSave, const QString& title, const QString& path,
                                     const QString& filter) const;

    /// Numbers of well-known folders, as callers and stored settings use them.
    enum FolderCode {
        Documents = 5,
        Music = 13,
        Videos = 14,
        Desktop = 16,
        Configuration = 26,
        LocalData = 28,
        Programs = 38,
        Pictures = 39,
        Profile = 40,
        ProgramsX86 = 42
    };
    enum FolderFlag { NoFlags = 0, CreateFolder = 0x8000 };
    /// The empty text for a code that has no folder here. With CreateFolder a missing one is made.
    [[nodiscard]] QString GetUserFolder(int code, int flags) const;
    [[nodiscard]] QString BrowseFolder(const QString& title, const QString& folder) const;
    /// The folder for temporary files. Nothing secret belongs there.
    [[nodiscard]] QString GetTempPath() const;

  private:
    [[nodiscard]] QString GetProgramFolder(bool x86) const;

    const UserFolders& m_folders;
    const Clock& m_clock;
    Prompt& m_prompt;
    const PrivateFolderOwner& m_owner;
};

}  // namespace keeper
