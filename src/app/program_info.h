// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

namespace keeper {

/// The program's name as people see it, in window titles and message boxes.
[[nodiscard]] QString programTitle();
/// Version of this build, such as "0.1.0".
[[nodiscard]] QString programVersion();

}  // namespace keeper
