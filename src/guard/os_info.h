// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

#include "guard/hardware_tag.h"
#include "platform/machine.h"

namespace keeper {

class Power;
class Prompt;

/// The machine's fingerprint, name and address, as the guard and the log use them.
class OSInfo {
  public:
    OSInfo(Machine& machine, Prompt& prompt) : m_machine(machine), m_prompt(prompt) {}

    /// Reads the fingerprint; later plugging of drives changes nothing. A source that fails is
    /// told, its tag stays empty and the result is false: without its whole fingerprint a machine
    /// could be taken for a stranger to its own databases, so the program must not go on.
    bool Initialize();

    [[nodiscard]] const QString& p_biosSN() const { return m_tag.bios; }
    [[nodiscard]] const QString& p_cpuSN() const { return m_tag.cpu; }
    [[nodiscard]] const QString& p_diskSN() const { return m_tag.disk; }
    [[nodiscard]] const HardwareTag& tag() const { return m_tag; }

    /// Empty when the system does not tell it (the failure is shown).
    [[nodiscard]] QString p_computerName();
    /// The network address, or the hardware address of a machine that is not connected.
    [[nodiscard]] NetworkAddress GetNetConfig();
    [[nodiscard]] bool DoesConnectNetwork();

    /// Shuts the machine down. A refusal is shown, and false.
    bool ShutdownOS(Power& power);

    /// Name, tab, address: what the log keeps of a machine.
    [[nodiscard]] QString machineText();
    /// The log tells the kind of an address by a count's sign: above 0 network, below 0 hardware.
    [[nodiscard]] int addressSign();

  private:
    Machine& m_machine;
    Prompt& m_prompt;
    HardwareTag m_tag;
};

}  // namespace keeper
