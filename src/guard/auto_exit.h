// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

namespace keeper {

/// The automatic exit that is set for the session.
enum class AutoExit { None = 0, Close = 1, ShutDown = 2 };

}  // namespace keeper
