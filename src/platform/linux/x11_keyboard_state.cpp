// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/linux/x11_keyboard_state.h"

// The X headers last: they define words such as None and Bool.
#include <X11/XKBlib.h>
#include <X11/Xlib.h>

namespace keeper {

X11KeyboardState::X11KeyboardState() = default;

X11KeyboardState::~X11KeyboardState() {
    m_notifier.reset();
    if (m_display != nullptr) {
        XCloseDisplay(m_display);
    }
}

void X11KeyboardState::connectOnce() const {
    if (m_isTried) {
        return;
    }
    m_isTried = true;
    int error = 0;
    int reason = 0;
    m_display = XkbOpenDisplay(nullptr, &m_xkbEventBase, &error, nullptr, nullptr, &reason);
    if (m_display == nullptr) {
        return;
    }
    XkbSelectEventDetails(m_display, XkbUseCoreKbd, XkbStateNotify, XkbModifierLockMask,
                          XkbModifierLockMask);
    XkbStateRec state{};
    XkbGetState(m_display, XkbUseCoreKbd, &state);
    m_isOn = (state.locked_mods & LockMask) != 0;
    m_notifier =
        std::make_unique<QSocketNotifier>(ConnectionNumber(m_display), QSocketNotifier::Read);
    auto* self = const_cast<X11KeyboardState*>(this);
    connect(m_notifier.get(), &QSocketNotifier::activated, self, [self] { self->drain(); });
}

bool X11KeyboardState::capsLock() const {
    connectOnce();
    if (m_display != nullptr) {
        // Asked anew: the event of a lock pressed this moment may not have been read yet.
        XkbStateRec state{};
        XkbGetState(m_display, XkbUseCoreKbd, &state);
        if (XEventsQueued(m_display, QueuedAlready) > 0) {
            // The round trip has read events that the socket will not announce again.
            auto* self = const_cast<X11KeyboardState*>(this);
            QMetaObject::invokeMethod(
                self, [self] { self->drain(); }, Qt::QueuedConnection);
        }
        return (state.locked_mods & LockMask) != 0;
    }
    return false;
}

void X11KeyboardState::drain() {
    bool isOn = m_isOn;
    while (XPending(m_display) > 0) {
        XEvent event{};
        XNextEvent(m_display, &event);
        if (event.type == m_xkbEventBase) {
            XkbEvent xkb{};
            xkb.core = event;
            if (xkb.any.xkb_type == XkbStateNotify) {
                isOn = (xkb.state.locked_mods & LockMask) != 0;
            }
        }
    }
    if (isOn != m_isOn) {
        m_isOn = isOn;
        Q_EMIT capsLockChanged(isOn);
    }
}

}  // namespace keeper
