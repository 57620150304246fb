// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <QStringList>
#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

#include "store/entry.h"
#include "store/store_context.h"

namespace keeper {

/// What the tree shows of an entry, in UTF-8, good while it is handed out only.
struct EntryLine {
    std::string_view dirPath;
    std::string_view entNo;
    std::string_view title;
    bool isMarked = false;

    [[nodiscard]] QString number() const { return text(dirPath) + text(entNo); }
    [[nodiscard]] static QString text(std::string_view bytes) {
        return QString::fromUtf8(bytes.data(), static_cast<qsizetype>(bytes.size()));
    }
};

/// The common half of all entries (tb_Entry). Failures are shown as "[number]Entries.Operation:"
/// and give the default result; nothing is changed then. Companion rows follow renumbering and
/// deletion by the cascades of the schema.
class Entries {
  public:
    explicit Entries(const StoreContext& context) : m_context(context) {}

    /// A new entry is effective, unmarked, unused and created now, whatever the object says.
    /// m_recentModPwd is the caller's.
    bool Add(const Entry& entry);
    /// Writes the fields that a person edits; may renumber. Use count, effectiveness, bookmark and
    /// creation date stay. True also when there is no such entry: then nothing is written.
    bool Modify(const QString& oldNo, const Entry& entry);

    /// Add() and Modify() inside a transaction of the caller, who shows what they throw when it has
    /// been rolled back: a message box keeps the database waiting.
    void insertRow(const Entry& entry);
    /// False when there is no such entry.
    bool updateRow(const QString& oldNo, const Entry& entry);

    /// A missing entry is a failure and is shown.
    bool Delete(const Entry& entry);
    /// The bulk read that fills the tree: hands out a line of every entry, in ascending order of
    /// directory and own pair, without holding them all. Returns the count. After a failure some
    /// may have been handed out.
    int Display(const std::function<void(const EntryLine&)>& receive);
    /// Counts one use and returns the new count; 0 when there is no such entry.
    std::int32_t AddUsedTimes(const QString& number);
    bool SetBookmark(const QString& number, bool isMarked);
    /// Deletes the entries directly in the directory, and none deeper.
    void DeleteLike(const QString& dirPath);
    /// DeleteLike() inside a transaction of the caller, who shows what it throws after the
    /// rollback.
    void deleteRowsLike(const QString& dirPath);
    /// Discarding an entry also cancels its reminder; activating does not bring that back.
    bool SetEffective(const QString& number, bool isEffective);
    /// Renumbers an entry and leaves everything else, the time of the last change included. True
    /// also when there is no such entry. A move between user files and the other big classes is
    /// refused, since the companion row would be out of reach.
    bool MoveTo(const QString& oldNo, const QString& newNo);
    /// The last changed entries as list-box lines, newest first, of equal times the last
    /// added first.
    int GetRecentUpdates(QStringList& lines, int amount);
    /// Migrates the marker of program folders in tb_Net: step 0 or 1 from the oldest form, step 2
    /// to the x86 form. Any other step has nothing to do.
    bool UpdateReducedLocation(std::uint8_t step);

  private:
    StoreContext m_context;
};

/// Replaces the leading `oldMarker` of every Location of tb_Net; exact case, no pattern.
void replaceLocationMarker(Database& database, const QString& oldMarker, const QString& newMarker);

}  // namespace keeper
