// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

namespace keeper {

/// Lets long work on the one thread yield, so that windows repaint and a stop can be pressed.
class EventLoop {
  public:
    virtual ~EventLoop() = default;
    virtual void turn() = 0;
};

}  // namespace keeper
