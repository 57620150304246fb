// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <QStringList>
#include <cstdint>
#include <functional>
#include <optional>

#include "app/registry_store.h"
#include "platform/user_folders.h"

namespace keeper {

/// Access to the registry through one current key at a time. What is read is the state at the
/// moment when the key was opened, with this object's own changes since, so that values that belong
/// together fit each other. Failures are not told to people: a failed read is a missing value, a
/// failed write is false.
class Regedit {
  public:
    /// The registry's roots. This system keeps one registry for each person.
    enum class Root { LocalMachine };
    enum class Access { Read, ReadWrite };
    enum class Disposition { Failed, Created, Opened };

    Regedit(RegistryStore& store, const UserFolders& folders);

    /// The empty text for a missing value and for one that is no text.
    [[nodiscard]] QString getString(const QString& name) const;
    /// 0 for a missing value and for one that is no number.
    [[nodiscard]] std::uint32_t getDWord(const QString& name) const;
    /// Names of the current key's values, the empty name included, in ascending order.
    [[nodiscard]] QStringList getEnumString() const;
    /// Creates the key when it is missing, makes it the current one and tells which it was.
    Disposition createKeyEx(Root root, const QString& path);
    /// With Access::Read the key can be read only.
    bool openKeyEx(Root root, const QString& path, Access access);
    bool setString(const QString& name, const QString& value);
    bool setDWord(const QString& name, std::uint32_t value);
    /// False, and no current key, when there is no such key.
    bool openKey(Root root, const QString& path);
    bool createKey(Root root, const QString& path);
    void closeKey();
    /// True when it is gone, whether or not it was there.
    bool deleteValue(const QString& name);
    /// Deletes the key with those below it.
    bool deleteKey(Root root, const QString& path);

    /// Parent folder of new private folders; the person's documents folder until one was chosen.
    [[nodiscard]] QString p_defPrivateFolders() const;
    bool p_defPrivateFolders(const QString& folder);

    /// Runs `changes`, which works through this object, so that all of it or nothing reaches the
    /// disk, and in one write. False when that failed or `changes` returned false.
    bool atomically(const std::function<bool()>& changes);

    /// Why the store cannot be read, for a person; empty when it can. The operations above take it
    /// for a failed read without a word.
    [[nodiscard]] QString fault() const;
    [[nodiscard]] QStringList damagedFiles() const { return m_store.damagedFiles(); }
    /// Within atomically(): the file as it is now is kept beside the new one.
    void keepFormer() { m_store.keepFormer(); }

  private:
    [[nodiscard]] std::optional<RegistryImage> load() const;
    [[nodiscard]] std::optional<RegistryValue> value(const QString& name) const;
    bool change(const std::function<void(RegistryImage&)>& operation);
    bool setValue(const QString& name, const RegistryValue& value);

    RegistryStore& m_store;
    const UserFolders& m_folders;
    std::optional<QString> m_key;
    Access m_access = Access::Read;
    RegistryImage m_snapshot;            ///< as of the opening of the current key
    RegistryImage* m_pending = nullptr;  ///< what atomically() is changing
};

/// Where the program keeps its keys.
inline constexpr Regedit::Root kMachineRoot = Regedit::Root::LocalMachine;

}  // namespace keeper
