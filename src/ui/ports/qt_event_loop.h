// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QElapsedTimer>

#include "platform/event_loop.h"

namespace keeper {

/// Turns the toolkit's loop, at most once in a frame's time: work that yields at each small step
/// must not pay for each.
class QtEventLoop final : public EventLoop {
  public:
    void turn() override;

  private:
    QElapsedTimer m_sinceLast;
};

}  // namespace keeper
