// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QObject>

namespace keeper {

/// The locks of the keyboard, of which only Caps Lock spoils a key typed blind.
class KeyboardState : public QObject {
    Q_OBJECT

  public:
    [[nodiscard]] virtual bool capsLock() const = 0;

  Q_SIGNALS:
    void capsLockChanged(bool isOn);
};

}  // namespace keeper
