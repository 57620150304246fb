// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "guard/sw_protect.h"

namespace keeper {

class Entries;
class Prgs;
class Settings;

/// Runs the migrations of an older database through the classes that own its tables.
class StoreUpgrades final : public DatabaseUpgrades {
  public:
    StoreUpgrades(Entries& entries, Prgs& programs, Settings& settings)
        : m_entries(entries), m_programs(programs), m_settings(settings) {}

    bool UpgradeEntries(int revision) override;
    bool UpgradeSettings(int revision) override;
    bool UpgradePrograms() override;
    void Undone() override;

  private:
    Entries& m_entries;
    Prgs& m_programs;
    Settings& m_settings;
};

}  // namespace keeper
