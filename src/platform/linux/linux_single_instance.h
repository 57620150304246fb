// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QLockFile>
#include <QSocketNotifier>
#include <memory>

#include "platform/single_instance.h"
#include "platform/unique_fd.h"

namespace keeper {

/// The lock is a file in the session's runtime folder, which a reboot empties; it is judged by the
/// kernel's lock on it, so that the file of a killed process binds nobody. Only the holder then
/// listens on a datagram socket beside it.
class LinuxSingleInstance final : public SingleInstance {
    Q_OBJECT

  public:
    /// `folder` is made with mode 0700 when it is absent; see defaultFolder().
    explicit LinuxSingleInstance(const QString& folder);
    ~LinuxSingleInstance() override;

    [[nodiscard]] Outcome acquire() override;
    bool askHolder(const QString& path = {}) override;

    /// In the runtime folder of the session, also when its variable is not set; else in
    /// `configuration`, the folder of all programs' settings.
    [[nodiscard]] static QString defaultFolder(const QString& configuration);

  private:
    void listen();
    void receive();
    [[nodiscard]] QString socketPath() const;

    QString m_folder;
    std::unique_ptr<QLockFile> m_lock;
    UniqueFd m_socket;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

}  // namespace keeper
