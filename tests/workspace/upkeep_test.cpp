// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <random>

#include "store/numbering.h"
#include "workspace/workspace_fixture.h"

namespace keeper {
namespace {

/// Thousands of commands in random order, as a person would give them; then tree and lists must
/// stand as a fresh reading of the database fills them.
class UpkeepTest : public WorkspaceTest {
  protected:
    int below(int bound) { return static_cast<int>(m_random() % static_cast<unsigned>(bound)); }
    /// Any node of the kind, by a random walk down the tree; empty when the walk finds none.
    QString anyKey(bool isDir) {
        const ItemTree& tree = m_workspace.tvwDirectory.tree();
        ItemId id = ItemTree::kRoot;
        ItemId found = ItemTree::kRoot;
        while (tree.isDirectory(id) && tree.childCount(id) > 0) {
            id = tree.child(id, below(tree.childCount(id)));
            if (tree.isDirectory(id) == isDir && (isDir ? below(2) == 0 : true)) {
                found = id;
                if (isDir) {
                    break;
                }
            }
        }
        return found == ItemTree::kRoot ? QString() : tree.key(found);
    }
    void touch(const QString& number) {
        m_recent.removeAll(number);
        m_recent.prepend(number);
    }
    void forgetGone() {
        m_recent.removeIf([this](const QString& number) { return !hasNode(u"ent"_s + number); });
    }

    void addEntry() {
        const QString key = anyKey(true);
        m_sheets.clickTree(key);
        m_pane.EnterAdd(true);
        if (m_workspace.m_editState != EditState::Add) {
            return;
        }
        const QString number = m_near.pane.txtNo;
        fill(QString::number(m_step));
        m_pane.mn_save();
        EXPECT_EQ(m_workspace.m_editState, EditState::Browse);
        touch(number);
    }
    void changeEntry() {
        const QString key = anyKey(false);
        if (key.isEmpty()) {
            return;
        }
        m_sheets.clickTree(key);
        m_pane.EnterModify(true);
        QString number = m_near.pane.txtNo;
        m_pane.editField(PaneField::Title, QString::number(m_step));
        const QString target = anyKey(true);
        if (below(2) == 0 && AreSameBigClass(key, target)) {
            m_sheets.ClickNode(target);
            if (m_near.pane.txtNo.isEmpty()) {
                m_pane.mn_cancel();
                return;
            }
        }
        const QString moved = m_near.pane.txtNo;
        m_pane.mn_save();
        EXPECT_EQ(m_workspace.m_editState, EditState::Browse);
        m_recent.removeAll(number);
        touch(moved);
    }
    void deleteEntry() {
        const QString key = anyKey(false);
        if (!key.isEmpty()) {
            m_sheets.clickTree(key);
            m_prompt.answers = {key.startsWith(u"ent03") ? Prompt::Answer::No
                                                         : Prompt::Answer::Yes};
            m_disposal.mn_delete();
        }
    }
    void drag() {
        const QString source = anyKey(below(4) == 0);
        const QString target = anyKey(true);
        if (source.isEmpty() || target.isEmpty() || source == target ||
            target.mid(3).startsWith(source.mid(3))) {
            return;
        }
        m_prompt.answers = {Prompt::Answer::Yes};
        const bool isEntry = TestEntDir(source);
        const QString id = isEntry ? QString() : source;
        m_drag.drop(source, target);
        if (isEntry && !hasNode(source) && m_prompt.answers.empty()) {
            m_recent.removeAll(source.mid(3));
            touch(m_workspace.tvwDirectory.tree().number(m_workspace.lsbRecentUpdate.idAt(0)));
        } else if (!isEntry) {
            m_recent = numbersOf(m_workspace.lsbRecentUpdate);
        }
    }
    void keepDirectories() {
        m_sheets.clickTree(anyKey(true));
        m_prompt.inputs = {QString::number(m_step)};
        m_prompt.answers = {Prompt::Answer::Ok, Prompt::Answer::Ok};
        switch (below(12)) {
            case 0:
                m_commands.mn_dirDelete();
                break;
            case 1:
                m_prompt.answers = {Prompt::Answer::Yes};
                m_commands.mn_dirClear();
                break;
            case 2:
            case 3:
                m_commands.mn_dirRename();
                break;
            default:
                if (m_sheets.state().selectedKey.size() < 11) {
                    m_commands.mn_dirNewSub();
                }
        }
    }
    void mark() {
        const QString key = anyKey(false);
        if (below(3) == 0 && m_workspace.lsbBookmark.count() > 0) {
            m_prompt.answers = {Prompt::Answer::Yes};
            m_sheets.RemoveBookmark(below(m_workspace.lsbBookmark.count()));
        } else if (!key.isEmpty()) {
            m_sheets.clickTree(key);
            m_sheets.AddBookmark();
        }
    }

    static QStringList numbersOf(const ItemListModel& list) {
        QStringList numbers;
        for (int row = 0; row < list.count(); ++row) {
            numbers << list.index(row).data(NumberRole).toString();
        }
        return numbers;
    }
    static void walk(const ItemTree& tree, ItemId id, QStringList& lines) {
        for (int row = 0; row < tree.childCount(id); ++row) {
            const ItemId child = tree.child(id, row);
            lines << tree.key(child) + u' ' + tree.title(child);
            walk(tree, child, lines);
        }
    }
    static QString sorted(QStringList lines) {
        lines.sort();
        return lines.join(u'\n');
    }
    void expectFresh() {
        Workspace workspace(m_workspace.services);
        SheetLists lists(workspace);
        EditPane pane(workspace, lists);
        Sheets sheets(workspace, lists, pane);
        sheets.RefreshSheets();
        QStringList kept;
        QStringList fresh;
        walk(m_workspace.tvwDirectory.tree(), ItemTree::kRoot, kept);
        walk(workspace.tvwDirectory.tree(), ItemTree::kRoot, fresh);
        EXPECT_EQ(kept.join(u'\n'), fresh.join(u'\n'));
        EXPECT_EQ(sorted(linesOf(m_workspace.lsbSearch)), sorted(linesOf(workspace.lsbSearch)));
        EXPECT_EQ(sorted(linesOf(m_workspace.lsbBookmark)), sorted(linesOf(workspace.lsbBookmark)));
        EXPECT_EQ(m_sheets.state().lblTotal, lists.state().lblTotal);
        EXPECT_EQ(m_sheets.state().lblBookmark, lists.state().lblBookmark);
        EXPECT_EQ(numbersOf(m_workspace.lsbRecentUpdate).join(u' '), m_recent.join(u' '));
        EXPECT_TRUE(m_sheets.state().selectedKey.isEmpty() ||
                    hasNode(m_sheets.state().selectedKey));
    }

    std::mt19937 m_random{20260520};
    int m_step = 0;
    QStringList m_recent;
};

TEST_F(UpkeepTest, tenThousandCommandsLeaveTheSheetsAsAFreshReadingFillsThem) {
    Transaction transaction(m_database);
    m_prompt.onShown = nullptr;  // the boxes stand in this one
    m_sheets.RefreshSheets();
    int most = 0;
    for (m_step = 0; m_step < 10'000 && !HasFailure(); ++m_step) {
        m_clock.advanceSeconds(1);
        const int dice = below(100);
        if (dice < 40) {
            addEntry();
        } else if (dice < 60) {
            changeEntry();
        } else if (dice < 70) {
            deleteEntry();
        } else if (dice < 82) {
            drag();
        } else if (dice < 92) {
            keepDirectories();
        } else {
            mark();
        }
        forgetGone();
        m_prompt.answers.clear();
        m_prompt.inputs.clear();
        m_prompt.takeTexts();
        most = std::max(most, m_workspace.lsbSearch.count());
        if (m_step % 500 == 499) {
            SCOPED_TRACE(m_step);
            expectFresh();
        }
    }
    EXPECT_GT(most, 200) << "the tree never grew: the commands did not work";
    transaction.commit();
}

}  // namespace
}  // namespace keeper
