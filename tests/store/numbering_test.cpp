// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "store/numbering.h"

#include <gtest/gtest.h>

#include <set>

#include "store/failure.h"

namespace keeper {
namespace {

using namespace Qt::StringLiterals;

IsTaken takenFrom(const std::set<QString>& keys) {
    return [keys](const QString& key) { return keys.count(key) > 0; };
}

std::set<QString> filled(const QString& head, int first, int last,
                         const QString& prefix = u"ent"_s) {
    std::set<QString> keys;
    for (int i = first; i <= last; ++i) {
        keys.insert(prefix + head + u"%1"_s.arg(i, 2, 10, QLatin1Char('0')));
    }
    return keys;
}

TEST(Numbering, NeighboursAtTheEdgesOfALevel) {
    EXPECT_EQ(GetNext(u"01"_s), QString());
    EXPECT_EQ(GetNext(u"0199"_s), u"0100"_s);
    EXPECT_EQ(GetNext(u"010508"_s), u"010509"_s);
    EXPECT_EQ(GetPrevious(u"0101"_s), u"01"_s);
    EXPECT_EQ(GetPrevious(u"01"_s), QString());
    EXPECT_EQ(GetPrevious(u"02"_s), u"01"_s);
    EXPECT_EQ(GetPrevious(u"0110"_s), u"0109"_s);
    EXPECT_EQ(GetPrevious(u"1"_s), QString());
    EXPECT_EQ(GetParent(u"01"_s), QString());
    EXPECT_EQ(GetParent(u"0105"_s), u"01"_s);
    EXPECT_EQ(GetFirstSibling(u"010577"_s), u"010501"_s);
    EXPECT_EQ(GetLastSibling(u"010577"_s), u"010599"_s);
    EXPECT_EQ(GetLastSibling(u"1"_s), QString());
    EXPECT_EQ(EntryNo::split(u"010503"_s).dirPath, u"0105"_s);
    EXPECT_EQ(EntryNo::split(u"010503"_s).entNo, u"03"_s);
    EXPECT_EQ(EntryNo::split(u"3"_s).dirPath, QString());
}

TEST(Numbering, ItemTypesAndBigClasses) {
    EXPECT_EQ(GetItemKeyType(u"ent0201"_s), 1);
    EXPECT_EQ(GetItemKeyType(u"dir0201"_s), 4);
    EXPECT_EQ(GetItemKeyType(u"0201"_s), 1);
    EXPECT_EQ(GetItemKeyType(u"dir03"_s), 5);
    EXPECT_EQ(GetItemKeyType(u"dir04"_s), 0);
    EXPECT_EQ(GetItemKeyType(u"99"_s), 0);
    EXPECT_EQ(GetItemKeyType(QString()), 0);
    EXPECT_TRUE(AreSameBigClass(u"ent0101"_s, u"dir02"_s));
    EXPECT_FALSE(AreSameBigClass(u"ent0101"_s, u"dir03"_s));
    EXPECT_TRUE(AreSameBigClass(u"ent0301"_s, u"dir0301"_s));
    EXPECT_TRUE(TestEntDir(u"ent01"_s));
    EXPECT_FALSE(TestEntDir(u"01"_s));
    EXPECT_EQ(GetItemKeyNo(ConcatenateNo(u"0105"_s, true)), u"0105"_s);
    EXPECT_THROW(static_cast<void>(GetItemKeyNo(u"de"_s)), KeeperError);
}

TEST(Numbering, ListLinesCarryTheirNumberBehindTwoHundredCharacters) {
    const QString line = CatTitleNo(u"标题  "_s, u"010503"_s);
    EXPECT_EQ(line.indexOf(u"010503"_s), 200);
    EXPECT_EQ(GetLsbNo(line), u"010503"_s);
    EXPECT_EQ(GetLsbTitle(line), u"标题"_s);
    const QString full(200, QLatin1Char('x'));
    EXPECT_EQ(GetLsbTitle(CatTitleNo(full, u"0101"_s)), full);
    EXPECT_THROW(static_cast<void>(CatTitleNo(full + u"x"_s, u"0101"_s)), KeeperError);
}

TEST(NumberSearch, FindsTheLowestGapAmongChildren) {
    EXPECT_EQ(FindItemNo(u"dir0105"_s, false, false, false, takenFrom({})), u"010501"_s);
    EXPECT_EQ(
        FindItemNo(u"0105"_s, false, false, false, takenFrom({u"ent010501"_s, u"ent010503"_s})),
        u"010502"_s);
    EXPECT_EQ(FindItemNo(u"0105"_s, false, false, false, takenFrom(filled(u"0105"_s, 1, 98))),
              u"010599"_s);
    EXPECT_EQ(FindItemNo(u"0105"_s, false, false, false, takenFrom(filled(u"0105"_s, 1, 99))),
              QString());
    // Entries and directories are counted apart.
    EXPECT_EQ(FindItemNo(u"0105"_s, false, false, true, takenFrom(filled(u"0105"_s, 1, 99))),
              u"010501"_s);
    EXPECT_EQ(FindItemNo(u"0105"_s, false, true, false, takenFrom({u"ent010507"_s})), u"010507"_s);
    EXPECT_EQ(FindItemNo(QString(), false, false, false, takenFrom({})), QString());
    // From a real sibling with taken successors the walk hands back the reserved pair.
    EXPECT_EQ(FindItemNo(u"010598"_s, true, false, false, takenFrom(filled(u"0105"_s, 99, 99))),
              u"010500"_s);
    EXPECT_EQ(FindItemNo(u"01"_s, true, true, true, takenFrom({})), QString());
}

TEST(NumberSearch, SkipZeroWrapsOnlyForFreeNumbers) {
    const auto full = takenFrom(filled(u"0105"_s, 1, 99));
    EXPECT_EQ(FindItemNoSkipZero(u"010599"_s, true, false, false, takenFrom({})), u"010501"_s);
    EXPECT_EQ(FindItemNoSkipZero(u"ent010598"_s, true, false, false, takenFrom({})), u"010599"_s);
    EXPECT_EQ(FindItemNoSkipZero(u"010550"_s, true, false, false, full), QString());
    EXPECT_EQ(FindItemNoSkipZero(u"0105"_s, false, false, false, full), QString());
    EXPECT_EQ(FindItemNoSkipZero(u"010550"_s, true, true, false,
                                 takenFrom({u"ent010503"_s, u"ent010570"_s})),
              u"010570"_s);
    EXPECT_EQ(FindItemNoSkipZero(u"010570"_s, true, true, false, takenFrom({u"ent010503"_s})),
              QString());
    // The start itself is never the result, although it is free.
    EXPECT_EQ(FindItemNoSkipZero(u"010550"_s, true, false, false,
                                 [](const QString& key) { return key != u"ent010550"_s; }),
              QString());
}

}  // namespace
}  // namespace keeper
