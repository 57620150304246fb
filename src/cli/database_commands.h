// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "cli/arguments.h"

namespace keeper::cli {

// Each does one command's work and returns the exit status; what fails throws Exit. None of them
// changes a database, counts an attempt or destroys anything.
[[nodiscard]] int runUsers();
[[nodiscard]] int runLs(const Arguments& arguments);
[[nodiscard]] int runInfo(const Arguments& arguments);
[[nodiscard]] int runVerify(const Arguments& arguments);

}  // namespace keeper::cli
