// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <QStringList>

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
/// counter is gone. A sealed file that somebody has put in its place since, such as a backup, is
/// not destroyed.
class Destruction {
  public:
    Destruction(const UserFolders& folders, Users& users, Prompt& prompt)
        : m_folders(folders), m_users(users), m_prompt(prompt) {}

    /// Destroys the session's user. What cannot be deleted now is told and tried again at the next
    /// start.
    void destroy(System& system, bool deletesFolder);
    /// Finishes what earlier runs began. Returns what the person must be told, text by text.
    /// REQUIRES: Users::InitUsers() has run.
    [[nodiscard]] QStringList finishInterrupted();

  private:
    struct Note {
        QString path;  ///< of the note itself
        QString userName;
        QString privateFolder;
        QString sealedFile;
        /// Which file it was; empty where that could not be told.
        QString sealedIdentity;
        /// Names in the state folder: of the session's copy, and of a crashed one before it.
        QStringList workingCopies;
        bool deletesFolder = false;
    };

    [[nodiscard]] QString stateFolder() const;
    [[nodiscard]] QString notePath(const QString& privateFolder) const;
    void write(const Note& note) const;
    [[nodiscard]] static Note read(const QString& path);
    /// Empty while the place of the private folder is missing.
    [[nodiscard]] QString finish(const Note& note);
    /// Whether the note names a private folder of its own user, and working copies of this program;
    /// anything else is not ours to delete.
    [[nodiscard]] static bool isSound(const Note& note);
    void forgetUser(const Note& note);
    /// Goes on behind a failure. Throws the first one at the end; the note stays then.
    void deleteFiles(const Note& note) const;
    void deleteCopies(const Note& note) const;

    const UserFolders& m_folders;
    Users& m_users;
    Prompt& m_prompt;
};

}  // namespace keeper
