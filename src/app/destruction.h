// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

namespace keeper {

struct UserFolders;
class Prompt;
class System;
class Users;

/// Emergency destruction of a user: record, working copy, sealed file and, where the case demands
/// it, the private folder with its backups.
///
/// What is to be destroyed is noted durably before the first deletion, so that an interruption (a
/// kill, a power cut) is finished at the next start instead of leaving a database whose attempt
/// counter is gone.
class Destruction {
  public:
    Destruction(const UserFolders& folders, Users& users, Prompt& prompt)
        : m_folders(folders), m_users(users), m_prompt(prompt) {}

    /// Destroys the session's user. What cannot be deleted now is told and tried again at the next
    /// start.
    void destroy(System& system, bool deletesFolder);
    /// Finishes what an earlier run began. REQUIRES: Users::InitUsers() has run.
    void finishInterrupted();

  private:
    struct Note {
        QString userName;
        QString privateFolder;
        QString sealedFile;
        QString workingCopy;
        bool deletesFolder = false;
    };

    [[nodiscard]] QString stateFolder() const;
    [[nodiscard]] QString notePath() const;
    void write(const Note& note) const;
    /// Whether the note names a private folder of its own user, and a working copy of this program;
    /// anything else is not ours to delete.
    [[nodiscard]] bool isSound(const Note& note) const;
    void forgetUser(const Note& note);
    void deleteFiles(const Note& note);
    [[nodiscard]] static bool isDone(const Note& note);

    const UserFolders& m_folders;
    Users& m_users;
    Prompt& m_prompt;
};

}  // namespace keeper
