// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

namespace keeper {

/// True when the cipher gives its published answers on this processor: each path that it has, both
/// ways, at 128-, 224- and 256-bit blocks. Takes microseconds; a program that gets false must not
/// touch data.
[[nodiscard]] bool cipherSelfTest();

}  // namespace keeper
