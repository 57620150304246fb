// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QDateTime>
#include <QString>
#include <functional>

#include "platform/file_hold.h"
#include "platform/unique_fd.h"
#include "store/connecting_display.h"
#include "store/key_chain.h"

namespace keeper {

class Cryptor3;
class Database;
class DatabaseError;
class KeyHolder;
class Prompt;
class Random;

/// The road between the sealed file of a user and the open database of a session.
///
/// At rest there is one file, sealed. A session works on a copy in the state folder (0700, file
/// 0600), which is a page-enciphered database under its password, held exclusively. Nothing is ever
/// in clear on a disk. The sealed file is only replaced by a whole new one, and only by a working
/// copy that was opened under its password; the working copy is deleted after that.
class SealedDatabase {
  public:
    /// What the last CryptKVDB, ConnAccess or CreateWorkingCopy stumbled on. Whoever destroys data
    /// after a failed login must look here first: only WrongKey may lead there.
    enum class Trouble {
        None,
        WrongKey,  ///< neither the last block nor the first page is under this key
        Damaged,   ///< the key was right and the database inside is unsound, or no key makes such
                   ///< a sealed file
        InUse,     ///< another program holds the working copy
        System,    ///< disk, rights or memory: says nothing about the content
    };

    /// `stateFolder` is made when it is needed. All references must outlive the object.
    SealedDatabase(KeyHolder& keys, Cryptor3& cipher, Database& database, Prompt& prompt,
                   Random& random, ConnectingDisplay& display, QString stateFolder);

    /// The working copy; empty while there is none.
    [[nodiscard]] const QString& p_tmpFile() const { return m_tmpFile; }
    [[nodiscard]] QString p_kvdbFile() const;
    [[nodiscard]] Trouble trouble() const { return m_trouble; }

    [[nodiscard]] QString GetCryptLgnKey(bool scheme, const QString& key) const;
    [[nodiscard]] static QString GetAccessDBSec(bool scheme, const QString& key);
    [[nodiscard]] static QString TransformDBPwd(const QString& text);

    /// Gives a new database its first password. The key of the session does not change.
    bool InitLgnKey(const QString& key);
    /// Re-keys the open database to the current scheme and makes `key` the session's login key;
    /// on failure both stay. The sealed file takes the new key when it is sealed next.
    ///
    /// Once the session is recorded, the database goes on in a new p_tmpFile, so that the user's
    /// record can change key and file in one step: at every moment it names a working copy that
    /// opens under the key that it knows.
    bool SetLgnKey(bool scheme, const QString& key);
    [[nodiscard]] bool CheckLgnKey(const QString& key) const;
    [[nodiscard]] bool CheckIdpPwd(const QString& key) const;
    [[nodiscard]] bool IsIdpPwdNull() const;

    /// Makes the working copy of a new database: schema and fixed rows, under the password of the
    /// empty key. It becomes p_tmpFile. Failures are shown.
    bool CreateWorkingCopy(const QDateTime& now);

    /// Mode 0 unseals p_kvdbFile into a fresh p_tmpFile. The other modes seal: with an empty
    /// `target` over p_kvdbFile, after which the working copy is deleted, else into `target`, which
    /// leaves working copy and sealed file as they are. The database is closed by all modes.
    ///
    /// A working copy that was unsealed but never connected is deleted instead of sealed: the
    /// sealed file has its content already. One that was left by a crash and could not be connected
    /// is neither sealed nor deleted. Sealing reads every page of the working copy first and
    /// refuses a spoilt one. Every failure leaves the sealed file and the working copy.
    bool CryptKVDB(bool scheme, int mode, bool closeDialog, const QString& target);

    /// Opens p_tmpFile. A failure is told in `message` and not shown.
    bool ConnAccess(const QString& password, QString& message);
    /// The same for any file and connection.
    static bool ConnAccess2(const QString& file, const QString& password, Database& connection,
                            QString& message);
    /// Rewrites the working copy without its unused space and opens it again. On failure the old
    /// one stands and is open where that is possible.
    bool CompactDB(bool scheme);

    /// Deletes what a killed program has left of a compaction, a change of the key or a dispatch.
    /// Only for the program that does such work: another one would spoil it while it runs.
    void ClearUnfinished();

    /// Claims p_kvdbFile for this session, so that no other program logs in to it: the one that is
    /// sealed last would undo the other's work. False when another program has it. The claim ends
    /// when the session is sealed into the file.
    bool HoldSealedFile();
    void ReleaseSealedFile() { m_hold.release(); }

    /// Takes up the working copy that a crash left behind.
    void GetResumeTempFile(const QString& path);
    /// Which sealed file the session stands on, as sealedMark() tells it: the one that was unsealed
    /// or sealed last. Empty where that is unknown.
    [[nodiscard]] const QString& p_sealedMark() const { return m_sealedMark; }
    /// For a copy that a crash left behind: the mark that its session had recorded.
    void p_sealedMark(const QString& value) { m_sealedMark = value; }
    /// Where the last sealing has kept a file that had taken the place of the sealed one since;
    /// empty when there was none.
    [[nodiscard]] const QString& p_foreignFile() const { return m_foreignFile; }
    /// The session has begun and will write: from now on the working copy outlives a crash. Before,
    /// a copy that nobody holds any more is deleted when the next one is made, because it has
    /// nothing that the sealed file lacks.
    void KeepWorkingCopy();
    /// Closes the database and deletes the working copy. False when it is still there: another
    /// program holds it or the system refuses.
    bool DiscardWorkingCopy();

  private:
    enum class Origin { None, New, Unsealed, Resumed };

    /// Runs `change` with the old and the new password; a failure is shown.
    bool setAccessDBSec(bool scheme, const QString& newKey, bool initial,
                        const std::function<void(const QString&, const QString&)>& change);
    void rekeyFile(const QString& oldPassword, const QString& newPassword);
    void rekeyInPlace(const QString& oldPassword, const QString& newPassword, const QString& key);
    void moveToNewKey(const QString& oldPassword, const QString& newPassword, const QString& key);
    void removeRelatives();
    bool unseal(bool scheme, const QString& key);
    void keepForeignFile();
    bool firstPageOpens(bool scheme, const QString& key);
    [[nodiscard]] bool isPageUnder(bool scheme);
    bool seal(bool scheme, const QString& key, const QString& target, bool isProved);
    /// False when no connection to the working copy is open.
    [[nodiscard]] bool proveOpenCopy();
    void proveClosedCopy(bool scheme);
    [[noreturn]] void refuseSpoiltCopy(const DatabaseError& error);
    void compactInto(const QString& fresh, const QString& password);
    void startWorkingCopy(Origin origin);
    [[nodiscard]] bool removeWorkingCopy();
    void removeAbandonedCopies();

    KeyHolder& m_keys;
    Cryptor3& m_cipher;
    Database& m_database;
    Prompt& m_prompt;
    Random& m_random;
    ConnectingDisplay& m_display;
    KeyChain m_chain;
    QString m_stateFolder;
    QString m_tmpFile;
    QString m_sealedMark;
    QString m_foreignFile;
    /// Locked file PATH OF THE COPY.fresh, as long as the copy may be deleted without loss.
    UniqueFd m_freshMark;
    FileHold m_hold;
    Origin m_origin = Origin::None;
    bool m_wasConnected = false;
    Trouble m_trouble = Trouble::None;
};

}  // namespace keeper
