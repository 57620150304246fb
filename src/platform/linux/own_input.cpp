// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/linux/own_input.h"

#include <QCoreApplication>
#include <QEvent>

namespace keeper {

OwnInput::OwnInput() {
    m_sinceInput.start();
    QCoreApplication::instance()->installEventFilter(this);
}

bool OwnInput::eventFilter(QObject* /*receiver*/, QEvent* event) {
    switch (event->type()) {
        case QEvent::KeyPress:
        case QEvent::InputMethod:
        case QEvent::TabletPress:
        case QEvent::TabletMove:
        case QEvent::MouseButtonPress:
        case QEvent::MouseMove:
        case QEvent::Wheel:
        case QEvent::TouchBegin:
        case QEvent::TouchUpdate:
            m_sinceInput.start();
            break;
        default:
            break;
    }
    return false;
}

}  // namespace keeper
