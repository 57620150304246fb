// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/linux/linux_machine.h"

#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>
#endif

#include <QCryptographicHash>
#include <QMessageAuthenticationCode>
#include <QSet>
#include <QStringList>
#include <array>
#include <stdexcept>
#include <utility>

#include "platform/durable_file.h"
#include "platform/linux/linux_disk.h"
#include "platform/linux/linux_files.h"
#include "platform/random.h"

namespace keeper {
namespace {

constexpr auto kIdFile = "/machine-id";

QString cpuSignature() {
#if defined(__x86_64__) || defined(__i386__)
    unsigned eax = 0;
    unsigned ebx = 0;
    unsigned ecx = 0;
    unsigned edx = 0;
    if (__get_cpuid(1, &eax, &ebx, &ecx, &edx) != 0) {
        // EBX stays out: it holds the number of the core that happened to run this.
        return QStringLiteral("%1%2")
            .arg(edx, 8, 16, QLatin1Char('0'))
            .arg(eax, 8, 16, QLatin1Char('0'))
            .toUpper();
    }
#endif
    return {};
}

QString randomId() {
    std::array<std::uint8_t, 16> bytes{};
    SystemRandom().fill(bytes);
    return QString::fromLatin1(
        QByteArray(reinterpret_cast<const char*>(bytes.data()), bytes.size()).toHex());
}

/// An id is 32 hexadecimal digits; "uninitialized" and an empty file are states of a first boot.
QString validId(const QByteArray& content) {
    const QByteArray id = content.trimmed().toLower();
    const bool isHex = QByteArray::fromHex(id).toHex() == id;
    const bool isZero = id.count('0') == id.size();
    return id.size() == 32 && isHex && !isZero ? QString::fromLatin1(id) : QString();
}

bool isPlaceholder(const QString& value) {
    static const QSet<QString> kPlaceholders{QStringLiteral("to be filled by o.e.m."),
                                             QStringLiteral("default string"),
                                             QStringLiteral("system manufacturer"),
                                             QStringLiteral("system product name"),
                                             QStringLiteral("system version"),
                                             QStringLiteral("not specified"),
                                             QStringLiteral("not applicable"),
                                             QStringLiteral("none"),
                                             QStringLiteral("unknown"),
                                             QStringLiteral("invalid"),
                                             QStringLiteral("oem"),
                                             QStringLiteral("o.e.m."),
                                             QStringLiteral("sku"),
                                             QStringLiteral("n/a"),
                                             QStringLiteral("0"),
                                             QString()};
    return kPlaceholders.contains(value.toLower());
}

}  // namespace

LinuxMachine::Sources LinuxMachine::systemSources(const QString& configFolder) {
    return {.root = {},
            .configFolder = configFolder,
            .processorSignature = cpuSignature,
            .interfaceAddresses = systemInterfaceAddresses,
            .newId = randomId};
}

LinuxMachine::LinuxMachine(Sources sources) : m_sources(std::move(sources)) {}

QString LinuxMachine::firmwareTag() {
    // Versions of board and firmware stay out: an update changes them.
    QStringList parts;
    for (const char* field : {"sys_vendor", "product_name", "product_family", "product_sku",
                              "board_vendor", "board_name", "chassis_type"}) {
        const QString value = oneLine(readSmallFile(
            m_sources.root + QStringLiteral("/sys/class/dmi/id/") + QLatin1String(field)));
        if (!isPlaceholder(value)) {
            parts.append(value);
        }
    }
    constexpr qsizetype kMost = 255;
    const QString tag = parts.join(QLatin1Char(',')).left(kMost).trimmed();
    return tag.isEmpty() ? derivedTag("firmware") : tag;
}

QString LinuxMachine::processorTag() {
    QString signature = m_sources.processorSignature();
    if (!signature.isEmpty()) {
        return signature;
    }
    QStringList parts;
    const QByteArray info = readSmallFile(m_sources.root + QStringLiteral("/proc/cpuinfo"));
    for (const char* key : {"CPU implementer", "CPU architecture", "CPU variant", "CPU part"}) {
        for (const QByteArray& line : info.split('\n')) {
            if (line.startsWith(key)) {
                parts.append(oneLine(line.mid(line.indexOf(':') + 1)));
                break;
            }
        }
    }
    return parts.isEmpty() ? derivedTag("processor") : parts.join(QLatin1Char(','));
}

QString LinuxMachine::diskTag() {
    QString serial = fixedDiskSerial(m_sources.root);
    return serial.isEmpty() ? derivedTag("disk") : serial;
}

QString LinuxMachine::computerName() {
    QString name =
        oneLine(readSmallFile(m_sources.root + QStringLiteral("/proc/sys/kernel/hostname")));
    return name.isEmpty() ? QStringLiteral("localhost") : name;
}

NetworkAddress LinuxMachine::networkAddress() {
    return findNetworkAddress(m_sources.root, m_sources.interfaceAddresses);
}

bool LinuxMachine::isConnectedToNetwork() {
    return !defaultRouteInterface(m_sources.root).isEmpty();
}

const QString& LinuxMachine::systemId() {
    if (m_systemId.isEmpty()) {
        for (const char* file : {"/etc/machine-id", "/var/lib/dbus/machine-id"}) {
            // A disk that fails at this moment must not make this machine a stranger to its own
            // databases: only an id that is not there, or not for us, gives way to the next.
            m_systemId = validId(readIdFile(m_sources.root + QLatin1String(file)));
            if (!m_systemId.isEmpty()) {
                return m_systemId;
            }
        }
        m_systemId = storedRandomId();
    }
    return m_systemId;
}

QString LinuxMachine::storedRandomId() const {
    constexpr qint64 kMost = 4096;
    const QString path = m_sources.configFolder + QLatin1String(kIdFile);
    ensurePrivateFolder(m_sources.configFolder);
    if (const auto content = readWholeFile(path, kMost)) {
        // A damaged id must not be replaced: that would make this machine a stranger to its own
        // databases.
        QString id = validId(*content);
        if (id.isEmpty()) {
            throw std::runtime_error("machine id: the stored id is damaged: " + path.toStdString());
        }
        return id;
    }
    QString id = m_sources.newId();
    replaceFile(path, id.toLatin1() + '\n');
    return id;
}

QString LinuxMachine::derivedTag(const char* purpose) {
    const QByteArray mac =
        QMessageAuthenticationCode::hash(QByteArray("morvane-keeper machine tag: ") + purpose,
                                         systemId().toLatin1(), QCryptographicHash::Sha256);
    return QString::fromLatin1(mac.toHex().left(32)).toUpper();
}

}  // namespace keeper
