// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <utility>

namespace keeper {

/// Second names (hard links) of all files of a folder and its sub-folders, in a mirror of it on the
/// same file system. A file that is deleted in the folder keeps its content, and gets its name
/// back. What is written into a file in its place is not undone.
class FolderLinks {
  public:
    /// Nothing is made yet. `mirror` is a path of this object's own.
    explicit FolderLinks(QString mirror) : m_mirror(std::move(mirror)) {}

    /// Makes the mirror of `folder`. A file that can have no second name, such as one on another
    /// file system, gets none. An older mirror gives its files back first, and stays alone if it
    /// cannot.
    void make(const QString& folder) const;
    /// Whether every file of the mirror has its name in `folder`. True without a mirror.
    [[nodiscard]] bool isWhole(const QString& folder) const;
    /// Gives back the names that are missing, and the folders over them; a name that leads to
    /// another file meanwhile stays. False when one could not be given back.
    bool restore(const QString& folder) const;
    /// Deletes the mirror, and with it the content of files that have no other name.
    void remove() const;

  private:
    QString m_mirror;
};

}  // namespace keeper
