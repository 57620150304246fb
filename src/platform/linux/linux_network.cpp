// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/linux/linux_network.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>

#include <QFileInfo>
#include <array>
#include <memory>

#include "platform/linux/linux_files.h"

namespace keeper {
namespace {

constexpr int kRouteUp = 1;

QString addressText(const sockaddr* address) {
    std::array<char, INET6_ADDRSTRLEN> text{};
    const void* bytes = nullptr;
    if (address->sa_family == AF_INET) {
        bytes = &reinterpret_cast<const sockaddr_in*>(address)->sin_addr;
    } else if (address->sa_family == AF_INET6) {
        const auto& six = reinterpret_cast<const sockaddr_in6*>(address)->sin6_addr;
        // Every interface has a link-local address; it says nothing about a connection.
        bytes = IN6_IS_ADDR_LINKLOCAL(&six) ? nullptr : &six;
    }
    if (bytes == nullptr ||
        ::inet_ntop(address->sa_family, bytes, text.data(), text.size()) == nullptr) {
        return {};
    }
    return QString::fromLatin1(text.data());
}

/// One table of routes: the interface of the row that `isDefault` accepts with the lowest metric.
template <typename IsDefault>
QString lowestMetric(const QByteArray& table, qsizetype nameColumn, qsizetype metricColumn,
                     int metricBase, IsDefault isDefault) {
    QString best;
    qulonglong bestMetric = 0;
    for (const QByteArray& line : table.split('\n')) {
        const auto fields = line.simplified().split(' ');
        if (fields.size() <= std::max(nameColumn, metricColumn) || !isDefault(fields)) {
            continue;
        }
        bool isNumber = false;
        const auto metric = fields.at(metricColumn).toULongLong(&isNumber, metricBase);
        if (isNumber && (best.isEmpty() || metric < bestMetric)) {
            best = QString::fromUtf8(fields.at(nameColumn));
            bestMetric = metric;
        }
    }
    return best;
}

QString hardwareAddress(const QString& folder) {
    const QByteArray address = readSmallFile(folder + QStringLiteral("/address")).trimmed();
    return address == "00:00:00:00:00:00" ? QString() : QString::fromLatin1(address).toUpper();
}

}  // namespace

QMap<QString, QString> systemInterfaceAddresses() {
    QMap<QString, QString> found;
    ifaddrs* list = nullptr;
    if (::getifaddrs(&list) != 0) {
        return found;
    }
    const std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)> owner(list, &::freeifaddrs);
    for (const ifaddrs* item = list; item != nullptr; item = item->ifa_next) {
        if (item->ifa_addr == nullptr || (item->ifa_flags & IFF_UP) == 0) {
            continue;
        }
        const QString name = QString::fromUtf8(item->ifa_name);
        const QString text = addressText(item->ifa_addr);
        if (!text.isEmpty() && (item->ifa_addr->sa_family == AF_INET || !found.contains(name))) {
            found.insert(name, text);
        }
    }
    return found;
}

QString defaultRouteInterface(const QString& root) {
    QString four = lowestMetric(
        readSmallFile(root + QStringLiteral("/proc/net/route")), 0, 6, 10, [](const auto& fields) {
            return fields.size() > 7 && fields.at(1) == "00000000" && fields.at(7) == "00000000" &&
                   (fields.at(3).toInt(nullptr, 16) & kRouteUp) != 0;
        });
    if (!four.isEmpty()) {
        return four;
    }
    return lowestMetric(readSmallFile(root + QStringLiteral("/proc/net/ipv6_route")), 9, 5, 16,
                        [](const auto& fields) {
                            return fields.at(0).count('0') == fields.at(0).size() &&
                                   fields.at(1) == "00" && fields.at(9) != "lo";
                        });
}

NetworkAddress findNetworkAddress(const QString& root, const InterfaceAddresses& addresses) {
    const QString connected = defaultRouteInterface(root);
    if (!connected.isEmpty()) {
        const QString address = addresses().value(connected);
        if (!address.isEmpty()) {
            return {address, false};
        }
    }
    const QString folder = root + QStringLiteral("/sys/class/net/");
    QString any;
    for (const QString& name : namesIn(folder)) {
        const QString path = folder + name;
        const QString address = name == QLatin1String("lo") ? QString() : hardwareAddress(path);
        if (address.isEmpty()) {
            continue;
        }
        if (QFileInfo::exists(path + QStringLiteral("/device"))) {
            return {address, true};
        }
        if (any.isEmpty()) {
            any = address;
        }
    }
    return {any, true};
}

}  // namespace keeper
