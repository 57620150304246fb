// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

namespace keeper {

/// The address by which a machine is told apart in the log.
struct NetworkAddress {
    QString text;
    /// True for a hardware (MAC) address, which stands in while the machine is not connected.
    bool isHardware = false;
};

/// What this machine says about itself.
///
/// The tags identify the machine: each is one printable line of at most 255 UTF-16 units, never
/// empty, and the same at every call, after a reboot, for every user of the system and with any
/// removable drive plugged in. They describe the installed hardware where an unprivileged user can
/// read it, and hold no secret. A source that fails throws std::exception; a tag is never guessed
/// from half of its sources.
class Machine {
  public:
    virtual ~Machine() = default;

    [[nodiscard]] virtual QString firmwareTag() = 0;
    [[nodiscard]] virtual QString processorTag() = 0;
    /// The first fixed disk, as a rule the one that the system runs from.
    [[nodiscard]] virtual QString diskTag() = 0;

    [[nodiscard]] virtual QString computerName() = 0;
    /// The address of the interface with the default route, else a hardware address; the text is
    /// empty on a machine without any interface.
    [[nodiscard]] virtual NetworkAddress networkAddress() = 0;
    [[nodiscard]] virtual bool isConnectedToNetwork() = 0;
};

}  // namespace keeper
