// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QSocketNotifier>
#include <memory>

#include "platform/keyboard_state.h"

struct _XDisplay;  // NOLINT(bugprone-reserved-identifier): the library's own name

namespace keeper {

/// The locks as the X server knows them, over a connection of its own, so that the toolkit's event
/// stream is left alone. Without an X server nothing is ever locked and nothing is told.
class X11KeyboardState final : public KeyboardState {
    Q_OBJECT

  public:
    X11KeyboardState();
    ~X11KeyboardState() override;
    [[nodiscard]] bool capsLock() const override;

  private:
    /// Connects at the first question: the start of the program has no use for it.
    void connectOnce() const;
    void drain();

    mutable _XDisplay* m_display = nullptr;
    mutable bool m_isTried = false;
    mutable bool m_isOn = false;
    mutable int m_xkbEventBase = 0;
    mutable std::unique_ptr<QSocketNotifier> m_notifier;
};

}  // namespace keeper
