// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <functional>

#include "cli/arguments.h"

namespace keeper::cli {

/// The frame of a command line program: forbids core files, reads the words, runs `command` and
/// turns what it throws into one line on standard error. Returns the exit status.
[[nodiscard]] int runProgram(int argc, char** argv,
                             const std::function<int(const Arguments&)>& command);

}  // namespace keeper::cli
