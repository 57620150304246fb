// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

namespace keeper {

/// What CryptKVDB is doing.
enum class CryptMode : int {
    Unseal = 0,
    Seal = 1,
    SealForDispatch = 2,
    SealAndBackUp = 3,
    SealAfterFailedBackup = 4,
};

/// The small window that shows the progress of sealing and unsealing.
class ConnectingDisplay {
  public:
    virtual ~ConnectingDisplay() = default;

    /// Shows the window without blocking, with the text of the mode (see connectingText).
    virtual void SetMsg(CryptMode mode) = 0;
    /// 0 .. 100; the label shows the number followed by "%".
    virtual void setProgress(int percent) = 0;
    virtual void close() = 0;
};

/// Status line of a mode; a failed backup has two lines.
[[nodiscard]] QString connectingText(CryptMode mode);

}  // namespace keeper
