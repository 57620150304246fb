// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QDBusConnection>
#include <QDBusUnixFileDescriptor>
#include <QVariantMap>
#include <functional>
#include <memory>

#include "platform/linux/unix_signals.h"
#include "platform/session_watch.h"

class QDBusMessage;

namespace keeper {

/// The end of the session as this system tells it: logind's signals under a delay inhibitor, the
/// session manager's wish to commit, and SIGTERM, SIGINT or SIGHUP.
class LinuxSessionWatch final : public SessionWatch {
    Q_OBJECT

  public:
    /// `systemBus` is where logind answers; connecting to it is left to start() when none is given.
    LinuxSessionWatch();
    explicit LinuxSessionWatch(const QDBusConnection& systemBus);
    ~LinuxSessionWatch() override;

    void start() override;
    [[nodiscard]] bool canDelay() const override { return m_inhibitor != nullptr; }
    [[nodiscard]] std::shared_ptr<const void> hold() const override { return m_inhibitor; }

  private Q_SLOTS:
    void onPrepareForShutdown(bool isBeginning);
    void onPrepareForSleep(bool isBeginning);
    void onSessionLock();
    void onSessionChanged(const QString& interface, const QVariantMap& changed);

  private:
    void watchLogind();
    void findDisplaysSession();
    void watchSession(const QString& path);
    void ask(const QDBusMessage& question, std::function<void(const QDBusMessage&)> answered);
    void takeInhibitor();
    void releaseInhibitor();
    void tellEnding(Ending how);

    std::unique_ptr<QDBusConnection> m_bus;
    std::unique_ptr<UnixSignals> m_signals;
    std::shared_ptr<const QDBusUnixFileDescriptor> m_inhibitor;
    /// A wish that was answered by release before the descriptor came.
    bool m_isInhibitorWanted = false;
    bool m_isGoingToSleep = false;
    bool m_isStarted = false;
    bool m_isEnding = false;
};

}  // namespace keeper
