// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QObject>
#include <memory>

namespace keeper {

/// Tells when the world around the program ends or pauses, early enough to save and seal.
///
/// Each signal is sent once per event, on the one thread. The system's shutdown is held back until
/// this process has ended; its sleep until every slot of the signal has returned and nobody holds
/// it (both as far as the system's own limit goes, which is commonly five seconds).
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
    /// For a slot of goingToSleep() whose work goes on behind its return: the system stays awake
    /// until the last of these is gone. Empty where the system does not wait.
    [[nodiscard]] virtual std::shared_ptr<const void> hold() const = 0;

  Q_SIGNALS:
    void ending(keeper::SessionWatch::Ending how);
    void goingToSleep();
    void wokeUp();
    /// The desktop's screen lock was asked for.
    void lockRequested();
};

}  // namespace keeper
