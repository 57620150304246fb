// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/ports/qt_event_loop.h"

#include <QCoreApplication>

namespace keeper {

void QtEventLoop::turn() {
    constexpr qint64 frame = 16;
    if (m_sinceLast.isValid() && m_sinceLast.elapsed() < frame) {
        return;
    }
    QCoreApplication::processEvents();
    m_sinceLast.start();
}

}  // namespace keeper
