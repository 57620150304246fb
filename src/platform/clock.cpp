// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/clock.h"

namespace keeper {

QDateTime SystemClock::now() const {
    return QDateTime::currentDateTime();
}

}  // namespace keeper
