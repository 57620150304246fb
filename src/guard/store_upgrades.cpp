// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "guard/store_upgrades.h"

#include <cstdint>

#include "app/settings.h"
#include "store/companions.h"
#include "store/entries.h"

namespace keeper {

bool StoreUpgrades::UpgradeEntries(int revision) {
    return m_entries.UpdateReducedLocation(static_cast<std::uint8_t>(revision));
}

bool StoreUpgrades::UpgradeSettings(int revision) {
    // Written at once, so that they are turned and stamped in one step.
    return m_settings.UpgradeDatabase(static_cast<std::uint8_t>(revision)) &&
           m_settings.WriteDB(false);
}

bool StoreUpgrades::UpgradePrograms() {
    return m_programs.UpgradeData();
}

void StoreUpgrades::Undone() {
    QString message;
    m_settings.ReadDB(message);
}

}  // namespace keeper
