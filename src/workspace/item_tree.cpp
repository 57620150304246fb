// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "workspace/item_tree.h"

#include <algorithm>
#include <array>

namespace keeper {

namespace {

constexpr qsizetype kPairLength = 2;
/// Lost bytes worth a pass over all titles.
constexpr std::size_t kMostLostBytes = 1U << 16U;

/// 1 .. 99, or 0 for what is no pair.
int pairAt(QStringView number, qsizetype index) {
    const char16_t tens = number[index].unicode();
    const char16_t ones = number[index + 1].unicode();
    if (tens < u'0' || tens > u'9' || ones < u'0' || ones > u'9') {
        return 0;
    }
    return (tens - u'0') * 10 + (ones - u'0');
}

bool isWellFormed(QStringView number, bool isDir) {
    if (number.size() % kPairLength != 0 || number.size() < (isDir ? 1 : 2) * kPairLength) {
        return false;
    }
    for (qsizetype i = 0; i < number.size(); i += kPairLength) {
        if (pairAt(number, i) == 0) {
            return false;
        }
    }
    return true;
}

}  // namespace

ItemTree::ItemTree() {
    m_branches.emplace_back();
    m_items.push_back({0, 0, kRoot, 0, 0});
}

const std::vector<ItemId>& ItemTree::siblings(ItemId parent, bool isDir) const {
    const Branch& branch = m_branches[m_items[parent].branch];
    return isDir ? branch.directories : branch.entries;
}

std::vector<ItemId>& ItemTree::siblings(ItemId parent, bool isDir) {
    Branch& branch = m_branches[m_items[parent].branch];
    return isDir ? branch.directories : branch.entries;
}

std::vector<ItemId>::const_iterator ItemTree::position(const std::vector<ItemId>& list,
                                                       int pair) const {
    // A tree is filled in the order of its numbers.
    if (list.empty() || m_items[list.back()].pair < pair) {
        return list.end();
    }
    return std::lower_bound(list.begin(), list.end(), pair,
                            [this](ItemId id, int wanted) { return m_items[id].pair < wanted; });
}

ItemId ItemTree::childOf(ItemId parent, bool isDir, int pair) const {
    const std::vector<ItemId>& list = siblings(parent, isDir);
    const auto at = position(list, pair);
    return at != list.end() && m_items[*at].pair == pair ? *at : kRoot;
}

ItemId ItemTree::insert(ItemId parent, bool isDir, int pair, std::string_view title) {
    ItemId id = static_cast<ItemId>(m_items.size());
    if (m_freeItems.empty()) {
        m_items.emplace_back();
    } else {
        id = m_freeItems.back();
        m_freeItems.pop_back();
    }
    std::uint32_t branch = kLeaf;
    if (isDir && m_freeBranches.empty()) {
        branch = static_cast<std::uint32_t>(m_branches.size());
        m_branches.emplace_back();
    } else if (isDir) {
        branch = m_freeBranches.back();
        m_freeBranches.pop_back();
    }
    m_items[id] = {0, 0, parent, branch, static_cast<std::uint8_t>(pair)};
    putTitle(id, title);
    std::vector<ItemId>& list = siblings(parent, isDir);
    list.insert(position(list, pair), id);
    return id;
}

ItemId ItemTree::add(QStringView number, bool isDir, const QString& title) {
    if (!isWellFormed(number, isDir)) {
        return kRoot;
    }
    ItemId parent = kRoot;
    const qsizetype last = number.size() - kPairLength;
    for (qsizetype i = 0; i < last; i += kPairLength) {
        const int pair = pairAt(number, i);
        const ItemId next = childOf(parent, true, pair);
        parent = next != kRoot ? next : insert(parent, true, pair, {});
    }
    return addOrRename(parent, isDir, pairAt(number, last), title.toStdString());
}

ItemId ItemTree::addEntry(ItemId directory, std::string_view pair, std::string_view title) {
    std::array<char16_t, 2> digits{};
    int number = 0;
    if (pair.size() == digits.size()) {
        std::copy(pair.begin(), pair.end(), digits.begin());
        number = pairAt({digits.data(), kPairLength}, 0);
    }
    return number == 0 ? kRoot : addOrRename(directory, false, number, title);
}

ItemId ItemTree::addOrRename(ItemId parent, bool isDir, int pair, std::string_view title) {
    if (const ItemId known = childOf(parent, isDir, pair); known != kRoot) {
        putTitle(known, title);
        return known;
    }
    return insert(parent, isDir, pair, title);
}

QString ItemTree::title(ItemId id) const {
    const std::string_view bytes = utf8Title(id);
    return QString::fromUtf8(bytes.data(), static_cast<qsizetype>(bytes.size()));
}

void ItemTree::putTitle(ItemId id, std::string_view title) {
    Item& item = m_items[id];
    if (title.size() > item.titleSize) {
        m_lostBytes += item.titleSize;
        item.titleAt = static_cast<std::uint32_t>(m_titles.size());
        m_titles.append(title);
    } else {
        m_lostBytes += item.titleSize - title.size();
        std::copy(title.begin(), title.end(), m_titles.begin() + item.titleAt);
    }
    item.titleSize = static_cast<std::uint32_t>(title.size());
    if (m_lostBytes > kMostLostBytes && m_lostBytes > m_titles.size() / 2) {
        closeGaps();
    }
}

void ItemTree::closeGaps() {
    std::string titles;
    titles.reserve(m_titles.size() - m_lostBytes);
    for (Item& item : m_items) {
        const auto at = static_cast<std::uint32_t>(titles.size());
        titles.append(m_titles, item.titleAt, item.titleSize);
        item.titleAt = at;
    }
    m_titles = std::move(titles);
    m_lostBytes = 0;
}

void ItemTree::detach(ItemId id) {
    std::vector<ItemId>& list = siblings(parent(id), isDirectory(id));
    list.erase(position(list, pair(id)));
}

void ItemTree::release(ItemId id) {
    if (isDirectory(id)) {
        const std::uint32_t branch = m_items[id].branch;
        const Branch children = std::exchange(m_branches[branch], {});
        for (const ItemId directory : children.directories) {
            release(directory);
        }
        for (const ItemId entry : children.entries) {
            release(entry);
        }
        m_freeBranches.push_back(branch);
    }
    m_lostBytes += m_items[id].titleSize;
    m_items[id] = {};
    m_freeItems.push_back(id);
}

void ItemTree::remove(ItemId id) {
    detach(id);
    release(id);
}

void ItemTree::move(ItemId id, ItemId parent, int pair) {
    detach(id);
    m_items[id].parent = parent;
    m_items[id].pair = static_cast<std::uint8_t>(pair);
    std::vector<ItemId>& list = siblings(parent, isDirectory(id));
    list.insert(position(list, pair), id);
}

ItemId ItemTree::find(QStringView number, bool isDir) const {
    if (!isWellFormed(number, isDir)) {
        return kRoot;
    }
    ItemId id = kRoot;
    const qsizetype last = number.size() - kPairLength;
    for (qsizetype i = 0; i <= last; i += kPairLength) {
        id = childOf(id, i < last || isDir, pairAt(number, i));
        if (id == kRoot) {
            return kRoot;
        }
    }
    return id;
}

ItemId ItemTree::findKey(QStringView key) const {
    const bool isDir = key.startsWith(u"dir");
    if (!isDir && !key.startsWith(u"ent")) {
        return kRoot;
    }
    return find(key.mid(3), isDir);
}

std::size_t ItemTree::digits(ItemId id, char16_t* digits, std::size_t capacity) const {
    std::size_t length = 0;
    for (ItemId step = id; step != kRoot; step = parent(step)) {
        length += kPairLength;
    }
    if (length > capacity) {
        return 0;
    }
    std::size_t end = length;
    for (ItemId step = id; step != kRoot; step = parent(step)) {
        digits[--end] = static_cast<char16_t>(u'0' + pair(step) % 10);
        digits[--end] = static_cast<char16_t>(u'0' + pair(step) / 10);
    }
    return length;
}

QString ItemTree::number(ItemId id) const {
    std::array<char16_t, 64> buffer{};
    if (const std::size_t length = digits(id, buffer.data(), buffer.size()); length > 0) {
        return QString::fromUtf16(buffer.data(), static_cast<qsizetype>(length));
    }
    QString text;
    for (ItemId step = id; step != kRoot; step = parent(step)) {
        text.prepend(QStringLiteral("%1").arg(pair(step), 2, 10, QLatin1Char('0')));
    }
    return text;
}

QString ItemTree::key(ItemId id) const {
    return (isDirectory(id) ? QStringLiteral("dir") : QStringLiteral("ent")) + number(id);
}

int ItemTree::childCount(ItemId id) const {
    if (!isDirectory(id)) {
        return 0;
    }
    const Branch& branch = m_branches[m_items[id].branch];
    return static_cast<int>(branch.directories.size() + branch.entries.size());
}

ItemId ItemTree::child(ItemId id, int row) const {
    const Branch& branch = m_branches[m_items[id].branch];
    const auto index = static_cast<std::size_t>(row);
    return index < branch.directories.size() ? branch.directories[index]
                                             : branch.entries[index - branch.directories.size()];
}

int ItemTree::rowFor(ItemId parent, bool isDir, int pair) const {
    const std::vector<ItemId>& list = siblings(parent, isDir);
    const auto index = static_cast<int>(position(list, pair) - list.begin());
    return isDir ? index : index + static_cast<int>(siblings(parent, true).size());
}

int ItemTree::row(ItemId id) const {
    return rowFor(parent(id), isDirectory(id), pair(id));
}

std::vector<ItemId> ItemTree::entriesUnder(ItemId id) const {
    if (!isDirectory(id)) {
        return {id};
    }
    std::vector<ItemId> entries;
    for (const ItemId directory : siblings(id, true)) {
        const std::vector<ItemId> below = entriesUnder(directory);
        entries.insert(entries.end(), below.begin(), below.end());
    }
    const std::vector<ItemId>& own = siblings(id, false);
    entries.insert(entries.end(), own.begin(), own.end());
    return entries;
}

}  // namespace keeper
