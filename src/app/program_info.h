// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

namespace keeper {

/// The program's name as people see it, in window titles and message boxes.
[[nodiscard]] QString programTitle();
/// Version of this build, such as "3.4.0"; its first number and a second number of at least 4
/// are what a database must fit to be opened (its own version is checked at each login).
[[nodiscard]] QString programVersion();
/// What the about box says.
[[nodiscard]] QString aboutText();

}  // namespace keeper
