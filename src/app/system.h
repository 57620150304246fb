// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <memory>

#include "app/file_operator.h"
#include "app/open_forms.h"
#include "app/settings.h"
#include "app/user.h"
#include "store/key_holder.h"

namespace keeper {

class SealedDatabase;

/// The session: its user, the settings of the open database, the open dialogs, and the private
/// folder. It is made before anybody has logged in; what asks for the user needs setUser() first.
class System final : public KeyHolder, public PrivateFolderOwner {
  public:
    System(Database& database, Prompt& prompt, const Clock& clock);
    ~System() override;
    System(const System&) = delete;
    System& operator=(const System&) = delete;

    /// The database takes its keys from this object, so it is made after it and joined here, before
    /// the first login.
    void attach(SealedDatabase& sealed) { m_sealed = &sealed; }
    /// Makes `user` the session's user.
    void setUser(std::shared_ptr<User> user);
    [[nodiscard]] bool hasUser() const { return m_user != nullptr; }
    [[nodiscard]] User& user() const { return *m_user; }
    [[nodiscard]] const std::shared_ptr<User>& sharedUser() const { return m_user; }
    [[nodiscard]] Settings& settings() { return m_settings; }
    [[nodiscard]] const Settings& settings() const { return m_settings; }

    // Settings of the open database
    bool ReadDB(QString& message) { return m_settings.ReadDB(message); }
    bool WriteDB(bool isNew) { return m_settings.WriteDB(isNew); }
    bool NewBuild() { return m_settings.NewBuild(p_userName()); }
    [[nodiscard]] int GetAuthority(int index) const { return m_settings.GetAuthority(index); }
    void SetAuthority(int value, int index) { m_settings.SetAuthority(value, index); }
    void SetHashIdpPwd(const QString& password) { m_settings.SetHashIdpPwd(password); }

    // The user, and what is empty or false while there is none
    [[nodiscard]] QString p_userName() const override;
    [[nodiscard]] QString p_privateFolder() const override;
    [[nodiscard]] QString p_kvdbFile() const override;
    [[nodiscard]] QString p_plainLgnKey() const override;
    void p_plainLgnKey(const QString& key) override;
    [[nodiscard]] bool takeLgnKey(const QString& key, const QString& formerCopy,
                                  const QString& copy) override;
    [[nodiscard]] QString p_hashLgnKey() const override;
    [[nodiscard]] QString p_idpPwdHashCode() const override {
        return m_settings.p_idpPwdHashCode();
    }
    [[nodiscard]] QString p_lgnKeyTip() const override { return m_settings.p_lgnKeyTip(); }
    /// The independent password, from its verification on until it is forgotten, which a lock and
    /// the end of the session do; empty otherwise. The caller wipes the copy.
    [[nodiscard]] QString p_plainIdpPwd() const;
    /// The empty text forgets it.
    void p_plainIdpPwd(const QString& password);
    /// The settings' hint and that of the user's record.
    void p_lgnKeyTip(const QString& value) { m_settings.p_lgnKeyTip(value); }
    [[nodiscard]] bool p_fingerprint() const { return m_user && m_user->p_fingerprint(); }
    void p_fingerprint(bool value) { m_user->p_fingerprint(value); }
    [[nodiscard]] bool p_autoLogin() const { return m_user && m_user->p_autoLogin(); }
    void p_autoLogin(bool value) { m_user->p_autoLogin(value); }
    [[nodiscard]] bool p_startupWithOS() const { return m_user && m_user->p_startupWithOS(); }
    void p_startupWithOS(bool value) { m_user->p_startupWithOS(value); }
    [[nodiscard]] bool p_remLgnKey() const { return m_user && m_user->p_remLgnKey(); }
    void p_remLgnKey(bool value) { m_user->p_remLgnKey(value); }

    /// Path of the working copy; empty before a session.
    [[nodiscard]] QString p_tmpFile() const;
    /// The user has logged out rather than exited.
    [[nodiscard]] bool p_isLogouted() const { return m_isLogouted; }
    void p_isLogouted(bool value) { m_isLogouted = value; }

    /// The automatic guard keeps the manager locked.
    [[nodiscard]] bool p_isLocked() const { return m_isLocked; }
    void p_isLocked(bool value) { m_isLocked = value; }

    /// Copies the session into the user's record: it runs from now on, and the failed attempts
    /// before it are settled.
    void RefreshMyUser();
    /// Writes the user's record. False when that failed: a crash of this session could then not be
    /// healed.
    bool WriteUser();

    // The private folder
    [[nodiscard]] QString p_defMyBackup() const;
    [[nodiscard]] QString p_defBGPictures() const;
    [[nodiscard]] QString p_defEncrypted() const;
    /// Makes what is missing in the private folder. A failure is shown.
    bool RepairPrivateFolder();
    /// Closes the database and deletes the working copy, and with `deleteFolder` the private folder
    /// with everything in it. A failure is shown and ends it.
    bool ClearUser(bool deleteFolder);

    // Dialogs that must not stay open while the manager is locked
    void ManageForms(OpenForm& form, bool isOpen) { m_forms.ManageForms(form, isOpen); }
    [[nodiscard]] bool IsAnyFormOn() const { return m_forms.IsAnyFormOn(); }
    void CloseForms() { m_forms.CloseForms(); }
    void ActivateForm() { m_forms.ActivateForm(); }

  private:
    Prompt& m_prompt;
    const Clock& m_clock;
    Settings m_settings;
    OpenForms m_forms;
    std::shared_ptr<User> m_user;
    SealedDatabase* m_sealed = nullptr;
    QString m_plainIdpPwd;
    bool m_isLogouted = false;
    bool m_isLocked = false;
};

}  // namespace keeper
