// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

#include "guard/sw_protect.h"
#include "platform/database.h"

namespace keeper {

class ConnectingDisplay;
class Cryptor3;
class KeyHolder;

/// Makes the copy of the open database that goes to another machine: sealed under the session's
/// login key, confined to no machine, with the full lifetime that the user has set.
///
/// The changes are made in the copy. The open database is only read, so that a power cut at any
/// moment leaves its confinement and its lifetime as they were.
class Dispatcher {
  public:
    struct Ports {
        /// The guard's ports; `guard.database` is the open database.
        SWProtect::Ports guard;
        KeyHolder& keys;
        Cryptor3& cipher;
        ConnectingDisplay& display;
    };

    /// The copy lies in `stateFolder` while it is made. `options` are those of the open database.
    Dispatcher(const Ports& ports, QString stateFolder, QString programVersion,
               DatabaseOptions options = {});

    /// False when it failed, which has been told; an older file at `target` is then as it was.
    /// The session's own files are refused as a target.
    bool Dispatch(const QString& target);

  private:
    bool release(Database& copy);

    Ports m_ports;
    QString m_stateFolder;
    QString m_programVersion;
    DatabaseOptions m_options;
};

}  // namespace keeper
