// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/appearance.h"
#include "platform/keyboard_state.h"

namespace keeper {

class FakeKeyboardState final : public KeyboardState {
  public:
    [[nodiscard]] bool capsLock() const override { return m_isOn; }
    void set(bool isOn) {
        m_isOn = isOn;
        Q_EMIT capsLockChanged(isOn);
    }

  private:
    bool m_isOn = false;
};

class FakeAppearance final : public Appearance {
  public:
    [[nodiscard]] Scheme scheme() const override { return m_scheme; }
    void set(Scheme scheme) {
        m_scheme = scheme;
        Q_EMIT schemeChanged(scheme);
    }

  private:
    Scheme m_scheme = Scheme::Unknown;
};

}  // namespace keeper
