// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QObject>
#include <QSocketNotifier>

namespace keeper {

/// Turns SIGTERM, SIGINT and SIGHUP into an event of the one thread. There may be one at a time:
/// a signal handler can only reach what is global to the process. The former handlers come back
/// with the end of the object.
class UnixSignals final : public QObject {
    Q_OBJECT

  public:
    /// Throws std::system_error when the kernel gives no pair of sockets.
    UnixSignals();
    ~UnixSignals() override;

  Q_SIGNALS:
    void received(int signalNumber);

  private:
    void drain();

    int m_readEnd = -1;
    QSocketNotifier* m_notifier = nullptr;
};

}  // namespace keeper
