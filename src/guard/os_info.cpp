// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "guard/os_info.h"

#include "platform/power.h"
#include "platform/prompt.h"
#include "store/failure.h"

namespace keeper {

bool OSInfo::Initialize() {
    const auto read = [this](const QString& where, auto&& source) {
        return guarded(m_prompt, where, QString(), source, Prompt::Icon::Exclamation);
    };
    m_tag.bios =
        read(QStringLiteral("OSInfo.GetBIOSSN"), [this] { return m_machine.firmwareTag(); });
    m_tag.cpu =
        read(QStringLiteral("OSInfo.GetCPUSN"), [this] { return m_machine.processorTag(); });
    m_tag.disk = read(QStringLiteral("OSInfo.GetDiskSN"), [this] { return m_machine.diskTag(); });
    return m_tag.isComplete();
}

QString OSInfo::p_computerName() {
    return guarded(m_prompt, QStringLiteral("OSInfo.GetComputerName"), QString(),
                   [this] { return m_machine.computerName(); });
}

NetworkAddress OSInfo::GetNetConfig() {
    return guarded(m_prompt, QStringLiteral("OSInfo.GetNetConfig"), NetworkAddress(),
                   [this] { return m_machine.networkAddress(); });
}

bool OSInfo::DoesConnectNetwork() {
    return guarded(m_prompt, QStringLiteral("OSInfo.DoesConnectNetwork"), false,
                   [this] { return m_machine.isConnectedToNetwork(); });
}

bool OSInfo::ShutdownOS(Power& power) {
    return guardedRun(m_prompt, QStringLiteral("ShutdownOS"), [&power] { power.shutDown(); });
}

QString OSInfo::machineText() {
    return p_computerName() + QLatin1Char('\t') + GetNetConfig().text;
}

int OSInfo::addressSign() {
    const NetworkAddress address = GetNetConfig();
    if (address.text.isEmpty()) {
        return 0;
    }
    return address.isHardware ? -1 : 1;
}

}  // namespace keeper
