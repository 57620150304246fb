// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/linux/desktop_idle_time.h"

#include <QDBusError>
#include <QDBusMessage>
#include <algorithm>
#include <array>
#include <utility>

#include "platform/linux/own_input.h"

// The X headers last: they define words such as None and Bool.
#include <X11/Xlib.h>
#include <X11/extensions/scrnsaver.h>

namespace keeper {
namespace {

/// Services that tell the idle time in milliseconds.
struct IdleService {
    const char* service;
    const char* path;
    const char* interface;
    const char* method;
};

constexpr std::array kIdleServices{
    IdleService{"org.gnome.Mutter.IdleMonitor", "/org/gnome/Mutter/IdleMonitor/Core",
                "org.gnome.Mutter.IdleMonitor", "GetIdletime"},
    IdleService{"org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver",
                "org.freedesktop.ScreenSaver", "GetSessionIdleTime"}};

/// The question comes each second on the one thread: a service that hangs must not be felt, and one
/// that was slow once must not cost the lock.
constexpr int kPatienceMilliseconds = 150;
constexpr std::chrono::milliseconds kShortestPause{500};
constexpr std::chrono::milliseconds kLongestPause{60'000};

}  // namespace

DesktopIdleTime::DesktopIdleTime() {
    const bool isWayland = qEnvironmentVariable("XDG_SESSION_TYPE") == u"wayland" ||
                           qEnvironmentVariableIsSet("WAYLAND_DISPLAY");
    if (!isWayland) {
        m_displayName = qgetenv("DISPLAY");
    }
}

DesktopIdleTime::DesktopIdleTime(const QByteArray& display, const QDBusConnection& sessionBus)
    : m_displayName(display), m_bus(std::make_unique<QDBusConnection>(sessionBus)) {}

DesktopIdleTime::~DesktopIdleTime() {
    if (m_display != nullptr) {
        XCloseDisplay(m_display);
    }
}

std::optional<qint64> DesktopIdleTime::sinceLastInput() {
    auto idle = askServer();
    if (!idle) {
        idle = askDesktop();
    }
    // A desktop that has told before is only slow.
    if (idle || m_hasAnswered) {
        return idle;
    }
    if (!m_ownInput) {
        m_ownInput = std::make_unique<OwnInput>();
    }
    return m_ownInput->elapsed();
}

bool DesktopIdleTime::isDesktopWide() {
    return askServer() || askDesktop() || m_hasAnswered;
}

std::optional<qint64> DesktopIdleTime::askServer() {
    if (!std::exchange(m_isServerTried, true) && !m_displayName.isEmpty()) {
        m_display = XOpenDisplay(m_displayName.constData());
        int event = 0;
        int error = 0;
        if (m_display != nullptr && XScreenSaverQueryExtension(m_display, &event, &error) == 0) {
            XCloseDisplay(std::exchange(m_display, nullptr));
        }
    }
    if (m_display == nullptr) {
        return std::nullopt;
    }
    XScreenSaverInfo info{};
    if (XScreenSaverQueryInfo(m_display, DefaultRootWindow(m_display), &info) == 0) {
        return std::nullopt;
    }
    return static_cast<qint64>(info.idle);
}

std::optional<qint64> DesktopIdleTime::askDesktop() {
    if (m_silence.isValid() && m_silence.elapsed() < m_pause.count()) {
        return std::nullopt;
    }
    if (!m_bus) {
        m_bus = std::make_unique<QDBusConnection>(QDBusConnection::sessionBus());
    }
    bool isSlow = false;
    for (const IdleService& idle : kIdleServices) {
        QDBusMessage question = QDBusMessage::createMethodCall(
            QString::fromLatin1(idle.service), QString::fromLatin1(idle.path),
            QString::fromLatin1(idle.interface), QString::fromLatin1(idle.method));
        question.setAutoStartService(false);
        const QDBusMessage answer = m_bus->call(question, QDBus::Block, kPatienceMilliseconds);
        bool isNumber = false;
        const qint64 milliseconds = answer.arguments().value(0).toLongLong(&isNumber);
        // A desktop that cannot tell, for want of a way to ask its compositor, always says 0.
        if (answer.type() == QDBusMessage::ReplyMessage && isNumber &&
            (milliseconds > 0 || m_hasAnswered)) {
            m_silence.invalidate();
            m_pause = {};
            m_hasAnswered = true;
            return milliseconds;
        }
        isSlow = isSlow || QDBusError(answer).type() == QDBusError::NoReply;
    }
    m_pause = isSlow ? std::clamp(m_pause * 2, kShortestPause, kLongestPause) : kLongestPause;
    m_hasAnswered = m_hasAnswered && isSlow && m_pause < kLongestPause;
    m_silence.start();
    return std::nullopt;
}

}  // namespace keeper
