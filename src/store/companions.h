// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

#include "store/entries.h"
#include "store/entry.h"
#include "store/store_context.h"

namespace keeper {

class EntLog;

// The services of the three kinds. Each writes the common half through Entries and its own row
// beside it, and the row of the history that goes with it when one is given, all in one
// transaction: either all are there or none. Failures of the common half are shown as those of
// Entries, of the history as those of EntLogs, of the companion as "[number]Class.Operation:".

/// Network objects and applications share tb_Net and differ in the name that failures carry.
class NetEntries {
  public:
    /// REQUIRES: `entries` outlives this object.
    NetEntries(const StoreContext& context, Entries& entries, QString name)
        : m_context(context), m_entries(entries), m_name(std::move(name)) {}

    bool Add(const NetEntry& object, const EntLog* history = nullptr);
    /// True, and nothing written, when there is no entry `oldNo`.
    bool Modify(const QString& oldNo, const NetEntry& object, const EntLog* history = nullptr);

  protected:
    /// Fills `object`; leaves it empty when there is no such entry.
    void search(const QString& number, NetEntry& object);
    [[nodiscard]] const StoreContext& context() const { return m_context; }
    [[nodiscard]] QString where(const char* operation) const;

  private:
    void writeCompanion(const NetEntry& object);

    StoreContext m_context;
    Entries& m_entries;
    QString m_name;
};

class Webs : public NetEntries {
  public:
    Webs(const StoreContext& context, Entries& entries)
        : NetEntries(context, entries, QStringLiteral("Webs")) {}
    /// The network object with this whole number, secrets in plain; an empty one if there is none.
    [[nodiscard]] Web Search(const QString& number);
};

class Prgs : public NetEntries {
  public:
    Prgs(const StoreContext& context, Entries& entries)
        : NetEntries(context, entries, QStringLiteral("Prgs")) {}
    [[nodiscard]] Prg Search(const QString& number);
    /// Migrates the retired x64 marker of program paths.
    bool UpgradeData();
};

/// User files, with tb_Fil.
class Fils {
  public:
    Fils(const StoreContext& context, Entries& entries) : m_context(context), m_entries(entries) {}

    bool Add(const Fil& object, const EntLog* history = nullptr);
    bool Modify(const QString& oldNo, const Fil& object, const EntLog* history = nullptr);
    [[nodiscard]] Fil Search(const QString& number);
    /// Paths that begin with the private folder of the old user name take the new name, at every
    /// place in the path. Exact case; no character of a name is a pattern.
    bool UpdateFilePathOnUserNameChange(const QString& oldName, const QString& newName);

  private:
    void writeCompanion(const Fil& object);

    StoreContext m_context;
    Entries& m_entries;
};

}  // namespace keeper
