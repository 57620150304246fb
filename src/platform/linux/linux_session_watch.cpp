// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/linux/linux_session_watch.h"

#include <unistd.h>

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusReply>
#include <QDBusVariant>
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

QDBusMessage toManager(const QString& method) {
    return QDBusMessage::createMethodCall(logindService(), logindPath(), managerInterface(),
                                          method);
}

const QString kSession = QStringLiteral("org.freedesktop.login1.Session");
const QString kProperties = QStringLiteral("org.freedesktop.DBus.Properties");

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
        // Whether it starts with the desktop is the person's own choice, and once is enough.
        const auto stayAway = [](QSessionManager& manager) {
            manager.setRestartHint(QSessionManager::RestartNever);
        };
        connect(application, &QGuiApplication::commitDataRequest, this, stayAway,
                Qt::DirectConnection);
        connect(application, &QGuiApplication::saveStateRequest, this, stayAway,
                Qt::DirectConnection);
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

    // For logind a program that the person's own services have started belongs to no session.
    const QString name = qEnvironmentVariable("XDG_SESSION_ID");
    QDBusMessage question = toManager(name.isEmpty() ? QStringLiteral("GetSessionByPID")
                                                     : QStringLiteral("GetSession"));
    question << (name.isEmpty() ? QVariant(static_cast<uint>(QCoreApplication::applicationPid()))
                                : QVariant(name));
    ask(question, [this](const QDBusMessage& answer) {
        const QDBusReply<QDBusObjectPath> session = answer;
        if (session.isValid()) {
            watchSession(session.value().path());
        } else {
            findDisplaysSession();
        }
    });
}

/// The session of the person's screen.
void LinuxSessionWatch::findDisplaysSession() {
    QDBusMessage question = toManager(QStringLiteral("GetUser"));
    question << static_cast<uint>(::getuid());
    ask(question, [this](const QDBusMessage& answer) {
        const QDBusReply<QDBusObjectPath> user = answer;
        if (!user.isValid()) {
            return;
        }
        QDBusMessage property = QDBusMessage::createMethodCall(logindService(), user.value().path(),
                                                               kProperties, QStringLiteral("Get"));
        property << QStringLiteral("org.freedesktop.login1.User") << QStringLiteral("Display");
        ask(property, [this](const QDBusMessage& display) {
            const auto pair = display.arguments().value(0).value<QDBusVariant>().variant();
            QString name;
            QDBusObjectPath session;
            if (pair.canConvert<QDBusArgument>()) {
                const auto fields = pair.value<QDBusArgument>();
                fields.beginStructure();
                fields >> name >> session;
                fields.endStructure();
            }
            if (!name.isEmpty()) {
                watchSession(session.path());
            }
        });
    });
}

void LinuxSessionWatch::watchSession(const QString& path) {
    m_bus->connect(logindService(), path, kSession, QStringLiteral("Lock"), this,
                   SLOT(onSessionLock()));
    // Some desktops lock by themselves, and only say so here.
    m_bus->connect(logindService(), path, kProperties, QStringLiteral("PropertiesChanged"), this,
                   SLOT(onSessionChanged(QString, QVariantMap)));
}

void LinuxSessionWatch::ask(const QDBusMessage& question,
                            std::function<void(const QDBusMessage&)> answered) {
    auto* answer = new QDBusPendingCallWatcher(m_bus->asyncCall(question), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this,
            [answer, answered = std::move(answered)] {
                // It keeps a second copy of a descriptor, and logind waits for both.
                answer->deleteLater();
                answered(answer->reply());
            });
}

void LinuxSessionWatch::takeInhibitor() {
    m_isInhibitorWanted = true;
    QDBusMessage request = toManager(QStringLiteral("Inhibit"));
    request << QStringLiteral("shutdown:sleep") << QStringLiteral("Morvane Keeper")
            << QStringLiteral("程序仍在运行中，您的新数据还未保存！") << QStringLiteral("delay");
    ask(request, [this](const QDBusMessage& answer) {
        const QDBusReply<QDBusUnixFileDescriptor> reply = answer;
        if (reply.isValid() && m_isInhibitorWanted) {
            m_inhibitor = std::make_shared<const QDBusUnixFileDescriptor>(reply.value());
        }
    });
}

void LinuxSessionWatch::releaseInhibitor() {
    m_isInhibitorWanted = false;
    m_inhibitor.reset();
}

void LinuxSessionWatch::onPrepareForShutdown(bool isBeginning) {
    if (isBeginning) {
        // The inhibitor goes with the process: the sealing may have to wait for what is running.
        tellEnding(Ending::Shutdown);
        return;
    }
    m_isEnding = false;  // called off
    if (!m_inhibitor) {
        takeInhibitor();
    }
}

void LinuxSessionWatch::onPrepareForSleep(bool isBeginning) {
    m_isGoingToSleep = isBeginning;
    if (!isBeginning) {
        takeInhibitor();
        Q_EMIT wokeUp();
        return;
    }
    Q_EMIT goingToSleep();
    // A slot may have waited so long that the machine has slept and is awake again.
    if (m_isGoingToSleep) {
        releaseInhibitor();
    }
}

void LinuxSessionWatch::onSessionLock() {
    Q_EMIT lockRequested();
}

void LinuxSessionWatch::onSessionChanged(const QString& interface, const QVariantMap& changed) {
    if (interface == kSession && changed.value(QStringLiteral("LockedHint")).toBool()) {
        Q_EMIT lockRequested();
    }
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
