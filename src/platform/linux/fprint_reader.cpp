// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/linux/fprint_reader.h"

#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <utility>

namespace keeper {
namespace {

/// The bus starts the service at the first call, which takes its time; a hanging one must not hold
/// the login form for longer.
constexpr int kPatience = 4000;

QString fprintService() {
    return QStringLiteral("net.reactivated.Fprint");
}

QString fprintDeviceInterface() {
    return QStringLiteral("net.reactivated.Fprint.Device");
}

QString fprintManagerPath() {
    return QStringLiteral("/net/reactivated/Fprint/Manager");
}

QString fprintManagerInterface() {
    return QStringLiteral("net.reactivated.Fprint.Manager");
}

/// The empty name is the caller's own.
QString ownName() {
    return QStringLiteral("");
}

}  // namespace

FprintReader::FprintReader() = default;

FprintReader::FprintReader(const QDBusConnection& systemBus)
    : m_bus(std::make_unique<QDBusConnection>(systemBus)) {}

FprintReader::~FprintReader() {
    stop();
}

bool FprintReader::connectBus() {
    if (!m_bus) {
        m_bus = std::make_unique<QDBusConnection>(QDBusConnection::systemBus());
    }
    return m_bus->isConnected();
}

QString FprintReader::defaultDevice() {
    if (!connectBus()) {
        return {};
    }
    const auto reply =
        ask(fprintManagerPath(), fprintManagerInterface(), QStringLiteral("GetDefaultDevice"));
    return reply ? reply->arguments().value(0).value<QDBusObjectPath>().path() : QString();
}

bool FprintReader::isAvailable() {
    const QString device = defaultDevice();
    if (device.isEmpty()) {
        return false;
    }
    const auto reply =
        ask(device, fprintDeviceInterface(), QStringLiteral("ListEnrolledFingers"), {ownName()});
    return reply && !reply->arguments().value(0).toStringList().isEmpty();
}

void FprintReader::lookFor(std::function<void(bool isAvailable)> tell) {
    if (!connectBus()) {
        return;
    }
    askLater(fprintManagerPath(), fprintManagerInterface(), QStringLiteral("GetDefaultDevice"), {},
             [this, tell](const QVariant& device) {
                 const QString path = device.value<QDBusObjectPath>().path();
                 if (path.isEmpty()) {
                     tell(false);
                     return;
                 }
                 askLater(path, fprintDeviceInterface(), QStringLiteral("ListEnrolledFingers"),
                          {ownName()}, [tell](const QVariant& fingers) {
                              tell(!fingers.toStringList().isEmpty());
                          });
             });
}

void FprintReader::askLater(const QString& path, const QString& interface, const QString& method,
                            const QVariantList& arguments,
                            std::function<void(const QVariant&)> take) {
    QDBusMessage call = QDBusMessage::createMethodCall(fprintService(), path, interface, method);
    call.setArguments(arguments);
    auto* answer = new QDBusPendingCallWatcher(m_bus->asyncCall(call), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [answer, take = std::move(take)] {
        answer->deleteLater();
        take(answer->isError() ? QVariant() : answer->reply().arguments().value(0));
    });
}

bool FprintReader::start(std::function<void(Outcome)> tell) {
    stop();
    m_device = defaultDevice();
    if (m_device.isEmpty()) {
        return false;
    }
    if (!askDevice(QStringLiteral("Claim"), ownName())) {
        m_device.clear();
        return false;
    }
    m_bus->connect(fprintService(), m_device, fprintDeviceInterface(),
                   QStringLiteral("VerifyStatus"), this, SLOT(onVerifyStatus(QString, bool)));
    m_watcher = std::make_unique<QDBusServiceWatcher>(fprintService(), *m_bus,
                                                      QDBusServiceWatcher::WatchForUnregistration);
    connect(m_watcher.get(), &QDBusServiceWatcher::serviceUnregistered, this,
            [this] { finish(Outcome::Disconnected); });
    m_tell = std::move(tell);
    if (!askDevice(QStringLiteral("VerifyStart"), QStringLiteral("any"))) {
        stop();
        return false;
    }
    return true;
}

void FprintReader::stop() {
    if (m_device.isEmpty()) {
        return;
    }
    m_bus->disconnect(fprintService(), m_device, fprintDeviceInterface(),
                      QStringLiteral("VerifyStatus"), this, SLOT(onVerifyStatus(QString, bool)));
    if (m_watcher) {
        // It may be the sender of the signal that leads here.
        m_watcher.release()->deleteLater();
    }
    tellDevice(QStringLiteral("VerifyStop"));
    tellDevice(QStringLiteral("Release"));
    m_device.clear();
    m_tell = nullptr;
}

void FprintReader::onVerifyStatus(const QString& result, bool isDone) {
    if (m_device.isEmpty()) {
        return;
    }
    if (result == QStringLiteral("verify-match")) {
        finish(Outcome::Match);
        return;
    }
    const bool isStrange = result == QStringLiteral("verify-no-match");
    if (isDone) {
        if (!isStrange) {
            finish(Outcome::Disconnected);
            return;
        }
        tellDevice(QStringLiteral("VerifyStop"));
        if (!askDevice(QStringLiteral("VerifyStart"), QStringLiteral("any"))) {
            finish(Outcome::Disconnected);
            return;
        }
    }
    // Its own copy: who is told may stop the reader.
    const auto tell = m_tell;
    tell(isStrange ? Outcome::NoMatch : Outcome::TryAgain);
}

void FprintReader::finish(Outcome outcome) {
    const auto tell = m_tell;
    stop();
    if (tell) {
        tell(outcome);
    }
}

std::optional<QDBusMessage> FprintReader::ask(const QString& path, const QString& interface,
                                              const QString& method,
                                              const QVariantList& arguments) {
    QDBusMessage call = QDBusMessage::createMethodCall(fprintService(), path, interface, method);
    call.setArguments(arguments);
    QDBusMessage reply = m_bus->call(call, QDBus::Block, kPatience);
    if (reply.type() != QDBusMessage::ReplyMessage) {
        return std::nullopt;
    }
    return reply;
}

std::optional<QDBusMessage> FprintReader::askDevice(const QString& method,
                                                    const QString& argument) {
    return ask(m_device, fprintDeviceInterface(), method, {argument});
}

void FprintReader::tellDevice(const QString& method) {
    m_bus->send(
        QDBusMessage::createMethodCall(fprintService(), m_device, fprintDeviceInterface(), method));
}

}  // namespace keeper
