// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QObject>

namespace keeper {

/// Tells when the world around the program ends or pauses, early enough to save and seal.
///
/// Each signal is sent once per event, on the one thread. The system's shutdown and sleep are held
/// back until every slot of the signal has returned (as far as the system's own limit goes, which
/// is commonly five seconds).
class SessionWatch : public QObject {
    Q_OBJECT

  public:
    enum class Ending {
        Logout,      ///< the desktop session ends
        Shutdown,    ///< the machine halts or restarts
        Terminated,  ///< a signal asks this process to end
    };
    Q_ENUM(Ending)

    /// Starts to listen. Never waits for a service: what is missing stays silent.
    virtual void start() = 0;
    /// Whether the system is known to wait for this program at its end.
    [[nodiscard]] virtual bool canDelay() const = 0;

  Q_SIGNALS:
    void ending(keeper::SessionWatch::Ending how);
    void goingToSleep();
    void wokeUp();
    /// The desktop's screen lock was asked for.
    void lockRequested();
};

}  // namespace keeper
