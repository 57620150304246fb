// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <functional>

#include "platform/linux/linux_network.h"
#include "platform/machine.h"

namespace keeper {

/// Machine identity from what every user of a Linux system can read.
///
/// firmware: maker and model from the DMI tables. processor: the signature of CPUID leaf 1.
/// disk: the serial number of the fixed disk under "/". What a machine does not tell is replaced by
/// a keyed hash of its machine-id (machine-id(5) asks that the id itself be never given away), and
/// a machine without an id gets a random one, kept with mode 0600 in the user's configuration.
///
/// Values that only root reads are never asked for, since the tag would then depend on the user.
class LinuxMachine final : public Machine {
  public:
    struct Sources {
        /// Empty for the running system, or the root of a tree like its own.
        QString root;
        /// Folder of the user's configuration, made with mode 0700 when the random id needs it.
        QString configFolder;
        /// 16 upper-case hexadecimal digits, or empty where the processor has no such signature.
        std::function<QString()> processorSignature;
        InterfaceAddresses interfaceAddresses;
        /// Random bytes for an id, as 32 lower-case hexadecimal digits.
        std::function<QString()> newId;
    };

    /// The sources of the running system.
    [[nodiscard]] static Sources systemSources(const QString& configFolder);

    explicit LinuxMachine(Sources sources);

    [[nodiscard]] QString firmwareTag() override;
    [[nodiscard]] QString processorTag() override;
    [[nodiscard]] QString diskTag() override;
    [[nodiscard]] QString computerName() override;
    [[nodiscard]] NetworkAddress networkAddress() override;
    [[nodiscard]] bool isConnectedToNetwork() override;

  private:
    /// Read once: the id must not change while the program runs.
    [[nodiscard]] const QString& systemId();
    [[nodiscard]] QString storedRandomId() const;
    [[nodiscard]] QString derivedTag(const char* purpose);

    Sources m_sources;
    QString m_systemId;
};

}  // namespace keeper
