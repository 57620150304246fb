// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QDateTime>
#include <QString>
#include <cstdint>
#include <functional>
#include <utility>

#include "app/session_flow.h"

namespace keeper {

class Clock;
class ConnectingDisplay;
class Database;
class Destruction;
class OSInfo;
class Prompt;
class SWProtect;
class SealedDatabase;
class SysLogs;
class System;
class Users;

/// From the login decision to an open, judged database; and what becomes of a database that is
/// refused.
///
/// Only a database whose key is wrong under both schemes, whose tables lack what they must hold, or
/// which the guard condemns is destroyed. One that merely cannot be read (disk, rights, memory,
/// another program) is told, and nothing is deleted.
class SessionConnect final : public SessionRoad {
  public:
    struct Ports {
        Prompt& prompt;
        Clock& clock;
        System& system;
        Database& connection;
        SealedDatabase& database;
        SWProtect& guard;
        SysLogs& logs;
        Users& users;
        OSInfo& machine;
        ConnectingDisplay& display;
        Destruction& destruction;
        /// Asks for the independent password that enciphers columns; the session keeps it. False:
        /// nothing of the database may be read.
        std::function<bool()> unlockColumns;
    };

    explicit SessionConnect(Ports ports) : m_ports(std::move(ports)) {}

    /// REQUIRES: the session's user is set and holds the key. `resumed` becomes true when the
    /// working copy of a session that ended abnormally was taken up.
    bool ConnectDatabase(bool& resumed) override;
    void ReportAfterLogin(bool resumed) override;
    void RecordLogin(bool resumed) override;

    /// The key scheme under which the database was opened.
    [[nodiscard]] bool g_keySchemeV2() const { return m_keySchemeV2; }

  private:
    void open(bool& resumed);
    bool resume(const QString& path);
    void unsealAndConnect();
    bool connect(bool scheme, QString& message);
    /// False when the file is not sealed under this scheme.
    bool tryScheme(bool scheme);
    void readSettings();
    void judge();
    void unlockColumns();
    void upgradeVersion();
    void offerAgain(const QString& crashedCopy);
    void handle(std::int32_t number, const QString& source, const QString& description,
                bool resumed);
    void reseal();
    void condemn(bool deletesFolder);
    /// Leaves the login without touching what is stored: the working copy of a crash stays.
    void abandon(bool resumed);
    void report(const QString& text);
    /// Writes a row that describes this machine, and returns its sentence.
    QString writeLog(int statusNo, int count, const QDateTime& time);

    Ports m_ports;
    bool m_keySchemeV2 = false;
};

}  // namespace keeper
