// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "store/directories.h"

#include <map>
#include <random>

#include "store/numbering.h"
#include "store/store_fixture.h"

namespace keeper {
namespace {

using namespace Qt::StringLiterals;

class DirectoriesTest : public StoreTest {
  protected:
    QStringList paths() {
        std::vector<Directory> rows;
        m_directories.Display(rows);
        QStringList found;
        for (const Directory& row : rows) {
            found << row.p_dirPath();
        }
        return found;
    }
    int orphans() {
        return count(
            u"tb_Directory as d where length(d.dirPath) > 2 and not exists (select 1 from"
            " tb_Directory as p where p.dirPath = substr(d.dirPath, 1,"
            " length(d.dirPath) - 2) and d.parentDir = p.dirPath)"_s);
    }
};

TEST_F(DirectoriesTest, BigClassIsItsOwnParent) {
    Directory directory;
    directory.p_dirPath(u"01"_s);
    EXPECT_EQ(directory.p_parantDir(), u"01"_s);
    directory.p_dirPath(u"010502"_s);
    EXPECT_EQ(directory.p_parantDir(), u"0105"_s);
}

TEST_F(DirectoriesTest, DisplaysParentsBeforeChildren) {
    ASSERT_TRUE(addDirectory(u"0203"_s));
    ASSERT_TRUE(addDirectory(u"0102"_s, u"O'Neil %_["_s));
    ASSERT_TRUE(addDirectory(u"010201"_s));
    EXPECT_EQ(paths(), QStringList({u"01"_s, u"0102"_s, u"010201"_s, u"02"_s, u"0203"_s, u"03"_s}));
    EXPECT_EQ(value(u"select Title from tb_Directory where dirPath='0102'"_s), u"O'Neil %_["_s);
    EXPECT_TRUE(m_directories.Rename(u"0102"_s, u"it's"_s));
    EXPECT_EQ(value(u"select Title from tb_Directory where dirPath='0102'"_s), u"it's"_s);
    EXPECT_FALSE(m_directories.Rename(u"0177"_s, u"x"_s));
}

TEST_F(DirectoriesTest, ShowsFailuresUnderTheNameOfTheOperation) {
    ASSERT_TRUE(addDirectory(u"0102"_s));
    EXPECT_FALSE(addDirectory(u"0102"_s));
    const QString taken = onlyMessage();
    EXPECT_TRUE(taken.startsWith(u'[') && taken.contains(u"]Directories.Add:\r\n"_s))
        << taken.toStdString();
    EXPECT_FALSE(addDirectory(u"010507"_s)) << "its parent is missing";
    EXPECT_TRUE(onlyMessage().contains(u"]Directories.Add:\r\n"_s));
}

TEST_F(DirectoriesTest, DeletingTakesEverythingBelowAlong) {
    for (const QString& path : {u"0102"_s, u"010201"_s, u"0103"_s}) {
        ASSERT_TRUE(addDirectory(path));
    }
    ASSERT_TRUE(m_webs.Add(webAt(u"01020105"_s)));
    ASSERT_TRUE(m_webs.Add(webAt(u"010305"_s)));
    EXPECT_TRUE(m_directories.Delete(u"0102"_s));
    EXPECT_FALSE(m_directories.Delete(u"0102"_s));
    EXPECT_EQ(count(u"tb_Directory"_s), 4);
    EXPECT_EQ(count(u"tb_Entry"_s), 1);
    EXPECT_EQ(count(u"tb_Net"_s), 1);
    EXPECT_FALSE(m_directories.Delete(u"01"_s));
    EXPECT_EQ(count(u"tb_Net"_s), 1);
}

TEST_F(DirectoriesTest, ClearingABigClassKeepsTheClassAndItsOwnEntries) {
    ASSERT_TRUE(addDirectory(u"0102"_s));
    ASSERT_TRUE(addDirectory(u"010201"_s));
    ASSERT_TRUE(m_webs.Add(webAt(u"01020105"_s)));
    ASSERT_TRUE(m_webs.Add(webAt(u"0105"_s)));
    const QStringList before = paths();
    m_database.execute(
        "create trigger stop before delete on tb_Entry when old.entNo = '05' and old.dirPath = '01'"
        " begin select raise(abort, 'no'); end");
    EXPECT_FALSE(m_directories.ClearAll(u"01"_s, m_entries));
    EXPECT_TRUE(onlyMessage().contains(u"]Entries.DeleteLike:\r\n"_s));
    EXPECT_EQ(paths(), before) << "all or nothing";
    m_directories.Clear(u"01"_s);
    EXPECT_EQ(paths(), QStringList({u"01"_s, u"02"_s, u"03"_s}));
    EXPECT_EQ(value(u"select group_concat(dirPath || entNo) from tb_Net"_s), u"0105"_s);
}

TEST_F(DirectoriesTest, MovingTakesTheSubtreeAlong) {
    for (const QString& path : {u"0102"_s, u"010201"_s, u"01020199"_s, u"0203"_s, u"0110"_s}) {
        ASSERT_TRUE(addDirectory(path, u"T"_s + path));
    }
    ASSERT_TRUE(m_webs.Add(webAt(u"0102019907"_s)));
    ASSERT_TRUE(m_webs.Add(webAt(u"011001"_s)));
    EXPECT_TRUE(m_directories.MoveTo(u"0102"_s, u"020301"_s));
    EXPECT_EQ(paths(), QStringList({u"01"_s, u"0110"_s, u"02"_s, u"0203"_s, u"020301"_s,
                                    u"02030101"_s, u"0203010199"_s, u"03"_s}));
    EXPECT_EQ(value(u"select Title from tb_Directory where dirPath='0203010199'"_s),
              u"T01020199"_s);
    EXPECT_EQ(m_webs.Search(u"020301019907"_s).m_customNum, u"账号n1"_s);
    EXPECT_EQ(m_webs.Search(u"011001"_s).m_Title, u"邮箱"_s);
    EXPECT_EQ(orphans(), 0);
}

TEST_F(DirectoriesTest, RefusedMovesSayWhyAndChangeNothing) {
    for (const QString& path : {u"0102"_s, u"010201"_s, u"0103"_s, u"0301"_s}) {
        ASSERT_TRUE(addDirectory(path));
    }
    const QStringList before = paths();
    const QString head = u"[5]Directories.MoveTo:\r\n"_s;
    EXPECT_FALSE(m_directories.MoveTo(u"0102"_s, u"01020102"_s));
    EXPECT_EQ(onlyMessage(), head + u"不能把目录移动到它自己的子目录之中。"_s);
    EXPECT_FALSE(m_directories.MoveTo(u"0102"_s, u"0302"_s));
    EXPECT_EQ(onlyMessage(), head + u"网络类和文件类的条目或目录不能互相移动。"_s);
    EXPECT_FALSE(m_directories.MoveTo(u"01"_s, u"0202"_s));
    EXPECT_EQ(onlyMessage(), head + u"禁止移动分类目录！"_s);
    EXPECT_FALSE(m_directories.MoveTo(u"0102"_s, u"0103"_s)) << "taken";
    EXPECT_TRUE(onlyMessage().contains(u"]Directories.MoveTo:\r\n"_s));
    EXPECT_FALSE(m_directories.MoveTo(u"0102"_s, u"020701"_s)) << "no such parent";
    EXPECT_TRUE(onlyMessage().contains(u"]Directories.MoveTo:\r\n"_s));
    EXPECT_FALSE(m_directories.MoveTo(u"0155"_s, u"0156"_s));
    EXPECT_EQ(paths(), before);
}

/// What the user sees of a tree, by titles: where each directory hangs and what it holds.
class TreeModel {
  public:
    std::map<QString, QString> titles;  // number to title

    void move(const QString& from, const QString& to) {
        std::map<QString, QString> moved;
        for (const auto& [number, title] : titles) {
            moved[number.startsWith(from) ? to + number.sliced(from.size()) : number] = title;
        }
        titles = moved;
    }
    void remove(const QString& head) {
        std::erase_if(titles, [&](const auto& item) { return item.first.startsWith(head); });
    }
};

TEST_F(DirectoriesTest, RandomMovesLeaveNoUnreachableRow) {
    std::mt19937 random(20261122);
    TreeModel model;
    for (const auto& [number, title] :
         {std::pair{u"01"_s, u"网络对象"_s}, {u"02"_s, u"应用程序"_s}, {u"03"_s, u"用户文件"_s}}) {
        model.titles[number] = title;
    }
    const auto pick = [&] {
        auto item = model.titles.begin();
        std::advance(item, random() % model.titles.size());
        return item->first;
    };
    const IsTaken isTaken = [&](const QString& key) { return model.titles.contains(key.mid(3)); };
    int moves = 0;
    for (int step = 0; step < 600; ++step) {
        const QString source = pick();
        const QString place = FindItemNo(pick(), false, false, true, isTaken);
        switch (random() % 4) {
            case 0:
            case 1:
                if (place.size() <= 12) {
                    ASSERT_TRUE(addDirectory(place, u"T%1"_s.arg(step)));
                    ASSERT_TRUE(m_entries.Add(webAt(place + u"01"_s)));
                    model.titles[place] = u"T%1"_s.arg(step);
                }
                break;
            case 2:
                if (m_directories.MoveTo(source, place)) {
                    model.move(source, place);
                    ++moves;
                } else {
                    EXPECT_EQ(m_prompt.takeTexts().size(), 1);
                }
                break;
            default:
                if (random() % 8 == 0 && m_directories.Delete(source)) {
                    model.remove(source);
                }
        }
        std::vector<Directory> rows;
        m_directories.Display(rows);
        std::map<QString, QString> stored;
        for (const Directory& row : rows) {
            stored[row.p_dirPath()] = row.m_Title;
        }
        ASSERT_EQ(stored, model.titles) << "step " << step;
        ASSERT_EQ(orphans(), 0) << "step " << step;
        ASSERT_EQ(count(u"tb_Entry"_s) + 3, static_cast<int>(rows.size())) << "step " << step;
    }
    EXPECT_GT(moves, 30);
}

}  // namespace
}  // namespace keeper
