// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QApplication>

#include "workspace/ports.h"

namespace keeper {

/// The desktop's bell, which it may show instead of sounding it.
class QtBeeper final : public Beeper {
  public:
    void MessageBeep(Sound /*sound*/) override { QApplication::beep(); }
};

}  // namespace keeper
