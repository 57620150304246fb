// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <QStringView>
#include <functional>

namespace keeper {

// Numbers and keys of the tree: pure arithmetic on texts, without a database.
//
// A number is a text of digit pairs "01" .. "99", one pair a level. "01", "02" and "03" are the big
// classes (network objects, applications, user files). The pair "00" is never stored: it is where a
// search starts. A key is a number behind "dir" or "ent". Nothing here checks that a number is well
// formed.

/// A whole number of an entry, split as the tables hold it.
struct EntryNo {
    QString dirPath;
    QString entNo;

    /// The last two characters are the entry's own pair; the rest is its directory.
    [[nodiscard]] static EntryNo split(const QString& wholeNumber);
};

[[nodiscard]] QString ConcatenateNo(const QString& number, bool isDir);
/// Throws KeeperError 5 on a key of fewer than 3 characters.
[[nodiscard]] QString GetItemKeyNo(const QString& key);
[[nodiscard]] bool TestEntDir(const QString& key);

/// The line of a flat list: the title, blanks up to 200 characters, the number. Throws KeeperError
/// 5 on a longer title, because cutting it would hide a title that no form lets in.
[[nodiscard]] QString CatTitleNo(const QString& title, const QString& number);
[[nodiscard]] QString GetLsbNo(const QString& line);
/// The title without trailing blanks, its own included.
[[nodiscard]] QString GetLsbTitle(const QString& line);

/// 0, 1, 2 for an entry and 3, 4, 5 for a directory of the three big classes. A bare number reads
/// as an entry; anything else is 0.
[[nodiscard]] int GetItemKeyType(const QString& keyOrNumber);

/// Empty for a big class.
[[nodiscard]] QString GetParent(const QString& number);
/// Wraps from 99 to 00; empty for a big class.
[[nodiscard]] QString GetNext(const QString& number);
/// The parent before the first number of a level.
[[nodiscard]] QString GetPrevious(const QString& number);
[[nodiscard]] QString GetFirstSibling(const QString& number);
[[nodiscard]] QString GetLastSibling(const QString& number);

/// Network objects and applications count as one class, user files as the other.
[[nodiscard]] bool AreSameBigClass(const QString& key1, const QString& key2);

/// Says whether an item with this key ("dir" or "ent" and the number) exists.
using IsTaken = std::function<bool(const QString& key)>;

/// The lowest free (or, with `findUsed`, taken) number behind the start: among the children of
/// `keyOrNumber`, or with `asSibling` behind it on its own level. Empty when there is none. A walk
/// from a real sibling passes through the reserved pair 00; FindItemNoSkipZero is made for that.
[[nodiscard]] QString FindItemNo(const QString& keyOrNumber, bool asSibling, bool findUsed,
                                 bool isDir, const IsTaken& isTaken);
/// The same walk without 00: the search for a taken number ends there, the search for a free one
/// goes on from 01 up to the start. The start itself is never the result.
[[nodiscard]] QString FindItemNoSkipZero(const QString& keyOrNumber, bool asSibling, bool findUsed,
                                         bool isDir, const IsTaken& isTaken);

}  // namespace keeper
