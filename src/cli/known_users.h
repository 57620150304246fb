// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "app/regedit.h"
#include "app/registry_store.h"
#include "app/users.h"
#include "cli/quiet_ports.h"
#include "platform/autostart.h"
#include "platform/clock.h"
#include "platform/random.h"
#include "platform/user_folders.h"

namespace keeper::cli {

/// The users who have logged in on this machine, read once and changed by nobody.
class KnownUsers {
  public:
    /// Throws when there is a registry that cannot be read: it must not pass for an empty one.
    KnownUsers() {
        static_cast<void>(m_store.read());
        m_users.InitUsers();
    }
    [[nodiscard]] const Users& users() const { return m_users; }

  private:
    UserFolders m_folders = UserFolders::ofSystem();
    SystemClock m_clock;
    SystemRandom m_random;
    QuietPrompt m_prompt;
    HookedLoop m_loop;
    XdgAutostart m_autostart{m_folders, QString()};
    RegistryStore m_store{m_folders.registry(), m_clock};
    Regedit m_regedit{m_store, m_folders};
    Users m_users{{m_regedit, m_autostart, m_random, m_prompt}, m_loop};
};

}  // namespace keeper::cli
