// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QDBusConnection>
#include <QElapsedTimer>
#include <chrono>
#include <memory>
#include <optional>

#include "platform/idle_time.h"

struct _XDisplay;  // NOLINT(bugprone-reserved-identifier): the library's own name

namespace keeper {

class OwnInput;

/// The idle time by the X server's screen-saver extension, over a connection of its own; where
/// there is none, or where it sees only a part of the input (as under Wayland), by the desktop's
/// services on the session bus; without them by the events of this program's windows. To be made
/// behind the application's object.
class DesktopIdleTime final : public IdleTime {
  public:
    DesktopIdleTime();
    /// `display` as for the X library, empty for none; `sessionBus` is where the desktop answers.
    DesktopIdleTime(const QByteArray& display, const QDBusConnection& sessionBus);
    ~DesktopIdleTime() override;
    DesktopIdleTime(const DesktopIdleTime&) = delete;
    DesktopIdleTime& operator=(const DesktopIdleTime&) = delete;

    [[nodiscard]] std::optional<qint64> sinceLastInput() override;
    [[nodiscard]] bool isDesktopWide() override;

  private:
    [[nodiscard]] std::optional<qint64> askServer();
    [[nodiscard]] std::optional<qint64> askDesktop();

    QByteArray m_displayName;
    _XDisplay* m_display = nullptr;
    bool m_isServerTried = false;
    /// Connecting is left to the first question.
    std::unique_ptr<QDBusConnection> m_bus;
    /// Runs since nobody on the bus answered, who is asked again after so long.
    QElapsedTimer m_silence;
    std::chrono::milliseconds m_pause{0};
    bool m_hasAnswered = false;
    std::unique_ptr<OwnInput> m_ownInput;
};

}  // namespace keeper
