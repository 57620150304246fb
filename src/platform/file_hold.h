// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

#include "platform/unique_fd.h"

namespace keeper {

/// A claim on a file that every program of this system sees, also those of other desktop users. It
/// ends with the object or the process. A file that takes the place of the held one is not held.
class FileHold {
  public:
    /// Claims the file at `path` and drops an earlier claim. False when another program has it. A
    /// file that cannot be opened is not claimed, and a file system without locks lets everybody
    /// through.
    bool take(const QString& path);
    void release() { m_file = UniqueFd(); }

  private:
    UniqueFd m_file;
};

/// Whether another program, or another object of this one, holds the file.
[[nodiscard]] bool isFileHeld(const QString& path);

}  // namespace keeper
