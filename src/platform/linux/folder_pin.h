// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QByteArray>
#include <QString>
#include <functional>
#include <vector>

#include "platform/unique_fd.h"

namespace keeper {

/// Takes a folder and its sub-folders the way of being renamed, emptied or deleted, and gives it
/// back. What stood before is told to a journal first, so that any later start can give it back.
///
/// With the system's leave folders become immutable, which binds every process. An ordinary person
/// has no such leave: then the right to write is taken from them, which keeps their content and
/// keeps them in their place, but lets the outer one be renamed beside itself.
class FolderPin {
  public:
    /// Throws std::system_error; what was done so far is taken back.
    FolderPin(const QString& folder, QString journal);
    /// Gives back. What fails stays in the journal for heal().
    ~FolderPin();
    FolderPin(const FolderPin&) = delete;
    FolderPin& operator=(const FolderPin&) = delete;

    /// Takes again what somebody has given back meanwhile.
    void renew() const;
    /// Gives back for as long as `mend` changes the folders, and takes what is at `folder` then.
    /// Throws as the constructor does; what was taken before is taken again then.
    void takeAnew(const QString& folder, const std::function<void()>& mend);
    /// Leaves the journal behind at the end, for heal().
    void keepJournal() { m_keepsJournal = true; }
    /// The outer folder, wherever it lies now.
    [[nodiscard]] int descriptor() const { return m_folders.front().handle.get(); }
    /// All folders, the outer one first.
    [[nodiscard]] std::vector<int> descriptors() const;
    [[nodiscard]] bool isImmutable() const { return m_isImmutable; }

    /// Gives back what a journal tells, and the files that were deleted meanwhile as far as the
    /// mirror holds them. Does nothing without a journal; it stays when a folder could not be
    /// freed, which is false, when a file could not be given back, or when the whole place where
    /// the folder lay is not there.
    static bool heal(const QString& journal);
    /// Where the second names of the folder's files lie beside its journal; see FolderLinks.
    [[nodiscard]] static QString mirrorOf(const QString& journal);

  private:
    struct Pinned {
        QString path;
        UniqueFd handle;
        unsigned mode = 0;
    };

    [[nodiscard]] static std::vector<Pinned> collect(const QString& folder);
    void takeAll();
    bool take(const Pinned& pinned) const;
    void giveBack();
    [[nodiscard]] QByteArray toJournal() const;

    QString m_journal;
    std::vector<Pinned> m_folders;
    bool m_isImmutable = false;
    bool m_keepsJournal = false;
};

}  // namespace keeper
