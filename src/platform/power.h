// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

namespace keeper {

/// The machine's switch.
class Power {
  public:
    virtual ~Power() = default;
    /// Shuts the machine down; it goes on after the call, so that the program can end in order.
    /// Throws std::exception when the system refuses.
    virtual void shutDown() = 0;
};

}  // namespace keeper
