// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QMap>
#include <QString>
#include <functional>

#include "platform/machine.h"

namespace keeper {

/// IPv4 address of each interface, or its IPv6 address where it has no other.
using InterfaceAddresses = std::function<QMap<QString, QString>()>;

/// What the kernel has configured now (getifaddrs).
[[nodiscard]] QMap<QString, QString> systemInterfaceAddresses();

/// Name of the interface with the default route (IPv4 first, the lowest metric); empty without one.
[[nodiscard]] QString defaultRouteInterface(const QString& root);

/// Address of the interface with the default route, else the hardware address of the first
/// interface that is a device of its own (by name), else of any but the loopback.
[[nodiscard]] NetworkAddress findNetworkAddress(const QString& root,
                                                const InterfaceAddresses& addresses);

}  // namespace keeper
