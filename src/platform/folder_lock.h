// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

namespace keeper {

/// Keeps other processes from renaming or deleting a folder. Nothing in it is changed or
/// enciphered, and it stays readable. There is one lock at a time.
class FolderLock {
  public:
    virtual ~FolderLock() = default;
    /// False when the folder could not be locked; then nothing is held. Locking the folder that is
    /// locked already is true and changes nothing.
    virtual bool lock(const QString& folder) = 0;
    /// Does nothing when nothing is locked.
    virtual void unlock() = 0;
    [[nodiscard]] virtual bool isLocked() const = 0;
};

}  // namespace keeper
