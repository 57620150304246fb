// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <functional>

#include "guard/auto_exit.h"

namespace keeper {

class Clock;
class FileOperator;
class Prompt;
class SealedDatabase;
class SysLogs;
class System;

/// Why the main form is to close.
enum class CloseReason {
    User,         ///< the window's own button
    Program,      ///< a command of the program, or its automatic exit
    SessionEnds,  ///< the desktop session ends, or the program was asked to terminate
    Killed,       ///< a task manager closes it and waits for nothing
    Other,
};

/// The end of the session: the closing reasons, the exit backup and the sealing.
class SessionEnd {
  public:
    struct Ports {
        Prompt& prompt;
        Clock& clock;
        System& system;
        SealedDatabase& database;
        SysLogs& logs;
        FileOperator& files;
        /// The main window hides itself to the tray; false when there is none, and it is minimised.
        std::function<bool()> hideToTray;
        std::function<void(const QString& title, const QString& text)> showBalloon;
        std::function<bool()> isEditing;
        std::function<void()> stopFill;
        std::function<void()> clearClipboard;
        std::function<void()> unlockFolder;
        std::function<void()> stopRunTime;
        /// The tray icon goes away.
        std::function<void()> removeTray;
    };

    explicit SessionEnd(Ports ports);

    /// The main form wants to close. False when the close is cancelled; after true the database is
    /// sealed, or left for the next login to heal, and the form may go.
    bool requestClose(CloseReason reason, AutoExit autoExit);

    /// Once a second while the session runs.
    void tick() { ++m_runSeconds; }
    [[nodiscard]] qint64 runSeconds() const { return m_runSeconds; }

    /// Whether this exit backs up, and to which path. Moves the start of the period on. A missing
    /// folder is false with a `path` that names it.
    bool IsBackupDue(QString& path);
    void ConfirmLeaveEditing(bool& cancel);

    [[nodiscard]] int m_exitStatus() const { return m_status; }

  private:
    void end();
    void writeLog();
    void seal();
    void copyBackup();
    /// The record of a session that has ended and left no working copy.
    void tellFailedBackup();
    void tell(const QString& title, const QString& text);
    void writeUser();
    [[nodiscard]] bool isPeriodOver() const;
    void startNextPeriod();

    Ports m_ports;
    qint64 m_runSeconds = 0;
    int m_status = 0;
    bool m_hasBackup = false;
    bool m_isDiscarded = false;
    QString m_backupPath;
};

}  // namespace keeper
