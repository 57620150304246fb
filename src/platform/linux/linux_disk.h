// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

namespace keeper {

/// Serial number of the fixed disk that the system runs from, or of the first fixed disk by its
/// place on the bus when the root file system stands on none (network root, a live stick).
///
/// Device names (sda, sdb) change between boots, so none of them enters the result. USB drives,
/// removable media, optical drives and virtual devices never count. Empty when no fixed disk tells
/// a serial number. `root` is empty, or the root of a tree that holds sys/, proc/, dev/ and run/.
[[nodiscard]] QString fixedDiskSerial(const QString& root);

}  // namespace keeper
