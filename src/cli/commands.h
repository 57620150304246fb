// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "cli/arguments.h"

namespace keeper::cli {

/// Each does one command's work and returns the exit status; what fails throws Exit.
[[nodiscard]] int runFileCommand(const Arguments& arguments);
[[nodiscard]] int runTextCommand(const Arguments& arguments);
[[nodiscard]] int runDigestCommand(const Arguments& arguments);

}  // namespace keeper::cli
