// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <QStringView>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace keeper {

/// Names a node of an ItemTree for as long as it stands; small, and used again after removal.
using ItemId = std::uint32_t;

/// Directories and entries by number, compact enough for hundreds of thousands. A node keeps its
/// own digit pair only: its number is the way down from the root, so a directory that moves takes
/// its whole subtree along. Titles lie in UTF-8 one behind the other: a block for each would cost
/// more than all the rest. Children stand in the order of numbers, directories before entries.
class ItemTree {
  public:
    /// Also the answer "no such item".
    static constexpr ItemId kRoot = 0;

    ItemTree();

    void reserve(std::size_t items) { m_items.reserve(items + 1); }

    /// Adds an item, or renames the one that has this number already. Directories that are missing
    /// on the way are made, without a title, so that no item is ever out of reach. kRoot for a
    /// malformed number.
    ItemId add(QStringView number, bool isDir, const QString& title);
    /// The same for an entry of which the directory is known, in UTF-8: a quicker way to fill a
    /// whole tree. kRoot for a malformed pair. REQUIRES: `directory` is a directory.
    ItemId addEntry(ItemId directory, std::string_view pair, std::string_view title);
    void setTitle(ItemId id, const QString& title) { putTitle(id, title.toStdString()); }
    /// Takes the item and all below it out.
    void remove(ItemId id);
    /// Gives an item a new place. REQUIRES: `parent` is a directory outside the item, and has no
    /// item of this kind and pair.
    void move(ItemId id, ItemId parent, int pair);

    [[nodiscard]] ItemId find(QStringView number, bool isDir) const;
    /// By "dir" or "ent" and number.
    [[nodiscard]] ItemId findKey(QStringView key) const;

    [[nodiscard]] bool isDirectory(ItemId id) const { return m_items[id].branch != kLeaf; }
    [[nodiscard]] QString title(ItemId id) const;
    /// Good until the tree changes.
    [[nodiscard]] std::string_view utf8Title(ItemId id) const {
        return std::string_view(m_titles).substr(m_items[id].titleAt, m_items[id].titleSize);
    }
    [[nodiscard]] ItemId parent(ItemId id) const { return m_items[id].parent; }
    [[nodiscard]] int pair(ItemId id) const { return m_items[id].pair; }
    [[nodiscard]] QString number(ItemId id) const;
    [[nodiscard]] QString key(ItemId id) const;
    /// Writes the digits of the number, two a level, to `digits` and returns their count; 0 when
    /// they do not fit.
    [[nodiscard]] std::size_t digits(ItemId id, char16_t* digits, std::size_t capacity) const;

    [[nodiscard]] int childCount(ItemId id) const;
    [[nodiscard]] ItemId child(ItemId id, int row) const;
    /// Position among the children of the parent. REQUIRES: not the root.
    [[nodiscard]] int row(ItemId id) const;
    /// Where a child of this kind and pair would stand.
    [[nodiscard]] int rowFor(ItemId parent, bool isDir, int pair) const;
    /// The entries in the item and below it, in the order of the tree.
    [[nodiscard]] std::vector<ItemId> entriesUnder(ItemId id) const;

  private:
    static constexpr std::uint32_t kLeaf = 0xFFFF'FFFF;

    struct Item {
        /// Where its title lies, and how many bytes.
        std::uint32_t titleAt = 0;
        std::uint32_t titleSize = 0;
        ItemId parent = kRoot;
        /// Index of its children; kLeaf for an entry.
        std::uint32_t branch = kLeaf;
        std::uint8_t pair = 0;
    };
    struct Branch {
        std::vector<ItemId> directories;
        std::vector<ItemId> entries;
    };

    [[nodiscard]] const std::vector<ItemId>& siblings(ItemId parent, bool isDir) const;
    [[nodiscard]] std::vector<ItemId>& siblings(ItemId parent, bool isDir);
    [[nodiscard]] std::vector<ItemId>::const_iterator position(const std::vector<ItemId>& list,
                                                               int pair) const;
    [[nodiscard]] ItemId childOf(ItemId parent, bool isDir, int pair) const;
    ItemId insert(ItemId parent, bool isDir, int pair, std::string_view title);
    ItemId addOrRename(ItemId parent, bool isDir, int pair, std::string_view title);
    void putTitle(ItemId id, std::string_view title);
    void closeGaps();
    void detach(ItemId id);
    void release(ItemId id);

    std::vector<Item> m_items;
    std::string m_titles;
    /// Bytes of m_titles that belong to no item any more.
    std::size_t m_lostBytes = 0;
    std::vector<Branch> m_branches;
    std::vector<ItemId> m_freeItems;
    std::vector<std::uint32_t> m_freeBranches;
};

}  // namespace keeper
