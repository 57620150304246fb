// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QPersistentModelIndex>
#include <QSignalSpy>
#include <map>
#include <random>

#include "store/numbering.h"
#include "workspace/item_list_model.h"
#include "workspace/item_tree_model.h"

namespace keeper {
namespace {

using namespace Qt::StringLiterals;

/// Keys and titles in the order of the tree, the way a view would walk it.
void walk(const QAbstractItemModel& model, const QModelIndex& parent, QStringList& lines) {
    for (int row = 0; row < model.rowCount(parent); ++row) {
        const QModelIndex index = model.index(row, 0, parent);
        EXPECT_EQ(index.parent(), parent);
        lines << index.data(KeyRole).toString() + u' ' + index.data(TitleRole).toString();
        walk(model, index, lines);
    }
}

QStringList linesOf(const QAbstractItemModel& model) {
    QStringList lines;
    walk(model, {}, lines);
    return lines;
}

TEST(ItemTreeModel, showsNumbersInOrderAndMakesMissingParents) {
    ItemTreeModel model;
    ItemTree tree;
    EXPECT_EQ(tree.add(u"010", true, u"x"_s), ItemTree::kRoot);
    EXPECT_EQ(tree.add(u"0100", false, u"x"_s), ItemTree::kRoot);
    EXPECT_EQ(tree.add(u"01", false, u"an entry needs a directory"_s), ItemTree::kRoot);
    tree.add(u"010305", false, u"孤儿"_s);
    tree.add(u"01", true, u"网络"_s);
    tree.add(u"0102", false, u"乙"_s);
    tree.add(u"0101", false, u"甲"_s);
    tree.add(u"0102", true, u"目录"_s);
    model.assign(std::move(tree));
    EXPECT_EQ(linesOf(model), QStringList({u"dir01 网络"_s, u"dir0102 目录"_s, u"dir0103 "_s,
                                           u"ent010305 孤儿"_s, u"ent0101 甲"_s, u"ent0102 乙"_s}));
    const QModelIndex directory = model.indexOf(model.tree().findKey(u"dir0102"));
    EXPECT_EQ(directory.data().toString(), u"目录(0102)");
    EXPECT_EQ(directory.data(IconRole).toString(), u"closedFolder");
    const QModelIndex entry = model.indexOf(model.tree().findKey(u"ent0102"));
    EXPECT_EQ(entry.data().toString(), u"乙");
    EXPECT_EQ(entry.data(IconRole).toString(), u"webEntry");
    EXPECT_TRUE(entry.flags() & Qt::ItemNeverHasChildren);
    EXPECT_EQ(model.tree().findKey(u"0102"), ItemTree::kRoot);
}

TEST(ItemTreeModel, aChangeTouchesOneRowAndKeepsTheOthers) {
    ItemTreeModel model;
    model.addItem(u"01"_s, true, u"网络"_s);
    for (const QString& number : {u"0101"_s, u"0102"_s, u"0105"_s}) {
        model.addItem(number, false, number);
    }
    model.addItem(u"0101"_s, true, u"目录"_s);
    const ItemId moved = model.tree().findKey(u"ent0102");
    const QPersistentModelIndex held(model.indexOf(moved));
    QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
    QSignalSpy inserts(&model, &QAbstractItemModel::rowsInserted);
    QSignalSpy changes(&model, &QAbstractItemModel::dataChanged);
    QSignalSpy moves(&model, &QAbstractItemModel::rowsMoved);

    EXPECT_TRUE(model.renumberItem(moved, u"0103"_s));  // the same row
    EXPECT_TRUE(model.renumberItem(moved, u"0109"_s));
    EXPECT_EQ(held.data(KeyRole).toString(), u"ent0109");
    EXPECT_TRUE(model.renumberItem(moved, u"010144"_s));
    EXPECT_EQ(held.parent().data(KeyRole).toString(), u"dir0101");
    EXPECT_FALSE(model.renumberItem(moved, u"0105"_s)) << "in use";
    EXPECT_FALSE(model.renumberItem(moved, u"0909"_s)) << "no such directory";
    EXPECT_FALSE(model.renumberItem(model.tree().findKey(u"dir01"), u"010102"_s)) << "below itself";
    EXPECT_EQ(moves.size(), 2);
    EXPECT_EQ(changes.size(), 3);
    EXPECT_EQ(resets.size() + inserts.size(), 0);
}

TEST(ItemListModel, findsTheFirstLineAsTheTextOfLinesStands) {
    ItemTreeModel tree;
    ItemListModel list(tree);
    tree.addItem(u"01"_s, true, u"网络"_s);
    list.append(tree.addItem(u"0101"_s, false, u"旧机 020199"_s));
    list.append(tree.addItem(u"0102"_s, false, u"邮箱  "_s));
    list.append(tree.addItem(u"02"_s + u"0199"_s, false, u"邮箱"_s));
    EXPECT_EQ(list.findDigits(u"0102"_s), 1);
    EXPECT_EQ(list.findDigits(u"020199"_s), 0) << "a title may hold the digits";
    EXPECT_EQ(list.findDigits(u"0303"_s), ItemListModel::kNoRow);
    EXPECT_EQ(list.findTitle(u"邮箱"_s), 1) << "blanks at the end do not count";
    EXPECT_EQ(list.findTitle(u"邮"_s), ItemListModel::kNoRow);
    EXPECT_EQ(GetLsbNo(list.line(2)), u"020199");
    EXPECT_EQ(GetLsbTitle(list.line(2)), u"邮箱");
}

/// Thousands of random changes, each checked by Qt's model tester and against a sorted map.
TEST(Models, followTenThousandRandomChanges) {
    ItemTreeModel model;
    ItemListModel list(model);
    const QAbstractItemModelTester treeTester(
        &model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    const QAbstractItemModelTester listTester(
        &list, QAbstractItemModelTester::FailureReportingMode::Fatal);
    std::map<QString, QString> oracle;  // key, title
    std::mt19937 random(7);
    const auto below = [&random](unsigned bound) { return static_cast<int>(random() % bound); };
    const auto pair = [&] {
        return QStringLiteral("%1").arg(1 + below(6), 2, 10, QLatin1Char('0'));
    };
    const auto directory = [&] {
        QString number = QStringLiteral("0%1").arg(1 + below(3));
        for (int depth = below(3); depth > 0; --depth) {
            number += pair();
        }
        return number;
    };
    for (int big = 1; big <= 3; ++big) {
        const QString number = QStringLiteral("0%1").arg(big);
        model.addItem(number, true, number);
        oracle[u"dir"_s + number] = number;
    }
    for (int step = 0; step < 10'000; ++step) {
        const QString dir = directory();
        const ItemId dirId = model.tree().find(dir, true);
        const QString entry = dir + pair();
        const ItemId entryId = model.tree().find(entry, false);
        // Long enough that the room of lost titles is taken back many times.
        const QString title = QString::number(step).repeated(1 + below(12));
        switch (below(8)) {
            case 0:
            case 1:
                if (dir.size() > 2 && model.tree().find(GetParent(dir), true) != ItemTree::kRoot) {
                    model.addItem(dir, true, title);
                    oracle[u"dir"_s + dir] = title;
                }
                break;
            case 2:
            case 3:
            case 4:
                if (dirId != ItemTree::kRoot && entryId == ItemTree::kRoot) {
                    list.append(model.addItem(entry, false, title));
                    oracle[u"ent"_s + entry] = title;
                }
                break;
            case 5:
                if (entryId != ItemTree::kRoot) {
                    const QString number = directory() + pair();
                    if (model.renumberItem(entryId, number)) {
                        oracle[u"ent"_s + number] = oracle.at(u"ent"_s + entry);
                        oracle.erase(u"ent"_s + entry);
                        list.itemChanged(entryId);
                    }
                }
                break;
            case 6:
                if (entryId != ItemTree::kRoot) {
                    list.removeItem(entryId);
                    model.removeItem(entryId);
                    oracle.erase(u"ent"_s + entry);
                }
                break;
            default:
                if (dirId != ItemTree::kRoot && dir.size() > 4) {
                    list.removeItems(model.tree().entriesUnder(dirId));
                    model.removeItem(dirId);
                    std::erase_if(oracle, [&dir](const auto& item) {
                        return item.first.mid(3).startsWith(dir) &&
                               (item.first.startsWith(u"dir"_s) ||
                                item.first.size() > dir.size() + 3);
                    });
                }
        }
    }
    QStringList expected;
    QStringList entries;
    for (const auto& [key, title] : oracle) {
        expected << key + u' ' + title;
        if (!key.startsWith(u"dir")) {
            entries << key + u' ' + title;
        }
    }
    QStringList shown = linesOf(model);
    shown.sort();
    EXPECT_EQ(shown, expected);
    QStringList listed = linesOf(list);
    listed.sort();
    EXPECT_EQ(listed, entries);
    EXPECT_GT(entries.size(), 20);
}

}  // namespace
}  // namespace keeper
