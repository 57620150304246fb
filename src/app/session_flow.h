// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <functional>

#include "app/session_forms.h"
#include "platform/prompt.h"

namespace keeper {

/// What the start asks of the machine, each a single yes or no.
struct StartChecks {
    /// Whether this is the only instance of the desktop user; holds the claim for the process.
    std::function<bool()> claimInstance;
    /// Gathers what the program must know of the operating system and the machine.
    std::function<bool()> initializeSystemInfo;
    /// Known answers of the ciphers and of the encrypting database engine; an empty text means that
    /// all is well, else what is wrong.
    std::function<QString()> selfTest;
    /// Reads the users of this machine. Returns what the person must be told before the login, text
    /// by text.
    std::function<QStringList()> initUsers;
};

/// The road between login and main form, which stands on the guard of the database.
class SessionRoad {
  public:
    virtual ~SessionRoad() = default;
    virtual bool ConnectDatabase(bool& resumed) = 0;
    virtual void ReportAfterLogin(bool resumed) = 0;
    virtual void RecordLogin(bool resumed) = 0;
};

/// The program's entry: prerequisite checks, the command line, and the loop over the results of the
/// login form up to the showing of the main form.
class Main {
  public:
    Main(Prompt& prompt, SessionForms& forms, SessionRoad& road, StartChecks checks);

    /// True when the main form is shown and the message loop has to go on; false ends the process.
    bool run(const QString& commandLine);

    bool RunPrerequisiteChecks();
    /// Whether the linked engine is the encrypting one and works; `reason` tells what is not.
    bool IsDatabaseDriverInstalled(QString& reason);
    /// The command line is one path, blanks included; quotes are dropped. False ends the program.
    bool Prepare4Command(const QString& commandLine, QString& outFolder);
    /// The path that a command line names, as it was given: perhaps relative, of no file even.
    [[nodiscard]] static QString pathOf(QString commandLine);
    /// Whether a database file lies in the private folder of its own name; a misplaced one is told.
    bool CheckDBInPrivateFolder(const QString& path);

  private:
    /// What keeps the program from starting, empty when nothing does.
    [[nodiscard]] QString refusalOfChecks();

    Prompt& m_prompt;
    SessionForms& m_forms;
    SessionRoad& m_road;
    StartChecks m_checks;
};

}  // namespace keeper
