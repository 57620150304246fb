// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <optional>

namespace keeper::cli {

class SignalWatch;

/// The key: content of `keyFile` ("-" is standard input), else what is typed on the terminal
/// without echo, asked for twice with `twice`. Never empty. The caller wipes it.
/// Throws Exit: no terminal, unreadable file, not UTF-8, empty, two entries that differ, a signal.
[[nodiscard]] QString obtainKey(const std::optional<QString>& keyFile, bool twice,
                                SignalWatch& signalWatch);

}  // namespace keeper::cli
