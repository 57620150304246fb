// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <vector>

#include "store/store_context.h"

namespace keeper {

class Entries;

/// One row of tb_Directory.
class Directory {
  public:
    QString m_Title;

    Directory& Copy(const Directory& other) { return *this = other; }
    [[nodiscard]] const QString& p_dirPath() const { return m_dirPath; }
    /// Stores the number and derives the parent: a big class is its own parent.
    void p_dirPath(const QString& number);
    [[nodiscard]] const QString& p_parantDir() const { return m_parentDir; }

  private:
    QString m_dirPath;
    QString m_parentDir;
};

/// The table of directories. Failures are shown as "[number]Directories.Operation:" and give the
/// default result; nothing is changed then. The number search is the caller's (store/numbering.h).
class Directories {
  public:
    explicit Directories(const StoreContext& context) : m_context(context) {}

    /// Fills `rows` in ascending order of number, so that a parent stands before its children, and
    /// returns their count. With no rows `rows` stays as it is.
    int Display(std::vector<Directory>& rows);
    bool Add(const Directory& directory);
    /// True when a row changed.
    bool Rename(const QString& dirPath, const QString& title);
    /// Deletes the directory and all below it: subdirectories, entries, companion rows. True when
    /// the row went. The big classes are fixed and never go.
    bool Delete(const QString& dirPath);
    /// Deletes the subdirectories of `parentDir` and all below them. The entries directly in it are
    /// left to Entries.DeleteLike.
    void Clear(const QString& parentDir);
    /// Clear() and Entries.DeleteLike in one transaction. Shows a failure under the name of the one
    /// that failed; nothing is deleted then.
    bool ClearAll(const QString& parentDir, Entries& entries);
    /// Gives a directory a new number. Its whole subtree follows in the same transaction: each
    /// subdirectory keeps its tail behind the new head, entries and companion rows follow their
    /// directory. True when a row changed.
    ///
    /// Refused with a message, and nothing changed: a target below the directory itself, a move
    /// between user files and the other big classes, a target whose parent does not exist or whose
    /// number is taken, and the big classes.
    bool MoveTo(const QString& oldPath, const QString& newPath);

  private:
    void deleteBelow(const QString& parentDir);

    StoreContext m_context;
};

}  // namespace keeper
