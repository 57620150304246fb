// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/linux/linux_session_watch.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QGuiApplication>
#include <QSessionManager>

namespace keeper {
namespace {

QString logindService() {
    return QStringLiteral("org.freedesktop.login1");
}

QString logindPath() {
    return QStringLiteral("/org/freedesktop/login1");
}

QString managerInterface() {
    return QStringLiteral("org.freedesktop.login1.Manager");
}

}  // namespace

LinuxSessionWatch::LinuxSessionWatch() = default;

LinuxSessionWatch::LinuxSessionWatch(const QDBusConnection& systemBus)
    : m_bus(std::make_unique<QDBusConnection>(systemBus)) {}

LinuxSessionWatch::~LinuxSessionWatch() = default;

void LinuxSessionWatch::start() {
    if (m_isStarted) {
        return;
    }
    m_isStarted = true;
    m_signals = std::make_unique<UnixSignals>();
    connect(m_signals.get(), &UnixSignals::received, this,
            [this] { tellEnding(Ending::Terminated); });
    if (auto* application = qobject_cast<QGuiApplication*>(QCoreApplication::instance())) {
        // Direct: the session manager waits only until the signal's slots have returned.
        connect(
            application, &QGuiApplication::commitDataRequest, this,
            [this] { tellEnding(Ending::Logout); }, Qt::DirectConnection);
    }
    if (!m_bus) {
        m_bus = std::make_unique<QDBusConnection>(QDBusConnection::systemBus());
    }
    if (m_bus->isConnected()) {
        watchLogind();
    }
}

void LinuxSessionWatch::watchLogind() {
    m_bus->connect(logindService(), logindPath(), managerInterface(),
                   QStringLiteral("PrepareForShutdown"), this, SLOT(onPrepareForShutdown(bool)));
    m_bus->connect(logindService(), logindPath(), managerInterface(),
                   QStringLiteral("PrepareForSleep"), this, SLOT(onPrepareForSleep(bool)));
    takeInhibitor();

    QDBusMessage question = QDBusMessage::createMethodCall(
        logindService(), logindPath(), managerInterface(), QStringLiteral("GetSessionByPID"));
    question << static_cast<uint>(QCoreApplication::applicationPid());
    auto* answer = new QDBusPendingCallWatcher(m_bus->asyncCall(question), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        answer->deleteLater();
        const QDBusPendingReply<QDBusObjectPath> session = *answer;
        if (!session.isError()) {
            m_bus->connect(logindService(), session.value().path(),
                           QStringLiteral("org.freedesktop.login1.Session"), QStringLiteral("Lock"),
                           this, SLOT(onSessionLock()));
        }
    });
}

void LinuxSessionWatch::takeInhibitor() {
    m_isInhibitorWanted = true;
    QDBusMessage request = QDBusMessage::createMethodCall(
        logindService(), logindPath(), managerInterface(), QStringLiteral("Inhibit"));
    request << QStringLiteral("shutdown:sleep") << QStringLiteral("Morvane Keeper")
            << QStringLiteral("正在加密密码数据库") << QStringLiteral("delay");
    auto* answer = new QDBusPendingCallWatcher(m_bus->asyncCall(request), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        // The watcher keeps a second copy of the descriptor, and logind waits for both.
        answer->deleteLater();
        const QDBusPendingReply<QDBusUnixFileDescriptor> reply = *answer;
        if (!reply.isError() && m_isInhibitorWanted) {
            m_inhibitor = reply.value();
        }
    });
}

void LinuxSessionWatch::releaseInhibitor() {
    m_isInhibitorWanted = false;
    m_inhibitor = QDBusUnixFileDescriptor();
}

void LinuxSessionWatch::onPrepareForShutdown(bool isBeginning) {
    if (isBeginning) {
        tellEnding(Ending::Shutdown);
        releaseInhibitor();
    } else {
        m_isEnding = false;  // called off
        takeInhibitor();
    }
}

void LinuxSessionWatch::onPrepareForSleep(bool isBeginning) {
    if (isBeginning) {
        Q_EMIT goingToSleep();
        releaseInhibitor();
    } else {
        takeInhibitor();
        Q_EMIT wokeUp();
    }
}

void LinuxSessionWatch::onSessionLock() {
    Q_EMIT lockRequested();
}

void LinuxSessionWatch::tellEnding(Ending how) {
    // A shutdown comes as logind's signal, as the session manager's and as SIGTERM, one on top of
    // the other: sealing must run once.
    if (m_isEnding) {
        return;
    }
    m_isEnding = true;
    Q_EMIT ending(how);
}

}  // namespace keeper
