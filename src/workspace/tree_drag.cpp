// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "workspace/tree_drag.h"

#include "store/failure.h"
#include "store/numbering.h"

namespace keeper {

namespace {

constexpr qsizetype kBigClassKeyLength = 5;

}  // namespace

void TreeDrag::drop(const QString& source, const QString& target) {
    const EditPane::Showing showing(m_pane);
    guardedRun(m_workspace.services.prompt, QStringLiteral("frmMain.tvwDirectory_DragDrop"), [&] {
        const ItemTree& tree = m_workspace.tvwDirectory.tree();
        if (source.isEmpty() || tree.findKey(source) == ItemTree::kRoot) {
            return;
        }
        if (target.isEmpty()) {
            DeleteDroppedNode(source);
            return;
        }
        if (source == target || tree.findKey(target) == ItemTree::kRoot) {
            return;
        }
        if (source.size() == kBigClassKeyLength) {
            m_workspace.tell(QStringLiteral("禁止移动分类目录！"));
            return;
        }
        if (!AreSameBigClass(source, target)) {
            m_workspace.tell(QStringLiteral("网络类和文件类的条目或目录不能互相移动。"));
            return;
        }
        if (!TestEntDir(source)) {
            moveDirectory(source, target);
        } else if (TestEntDir(target)) {
            dropOnEntry(GetItemKeyNo(target));
        } else {
            moveEntry(source, target);
        }
    });
    m_lists.show();
}

void TreeDrag::DeleteDroppedNode(const QString& key) {
    if (key.size() <= kBigClassKeyLength) {
        m_workspace.tell(QStringLiteral("禁止删除分类目录！"));
        return;
    }
    const bool isEntry = TestEntDir(key);
    const QString shown = m_workspace.m_entry ? m_workspace.m_entry->common.p_No() : QString();
    // What is deleted is the entry in the pane: it must be the one that was dragged.
    if (key != m_sheets.state().selectedKey || (isEntry && shown != GetItemKeyNo(key))) {
        m_lists.select(key);
        m_sheets.ClickNode(key);
    }
    if (isEntry) {
        m_disposal.DeleteEntry();
    } else {
        m_directories.mn_dirDelete();
    }
}

void TreeDrag::dropOnEntry(const QString& targetNo) const {
    const ItemTree& tree = m_workspace.tvwDirectory.tree();
    const ItemId directory = tree.parent(tree.find(targetNo, /*isDir=*/false));
    // Entries stand behind the directories.
    const ItemId last = tree.child(directory, tree.childCount(directory) - 1);
    const QString next =
        m_lists.FindItemNoSkipZero(tree.number(last), /*asSibling=*/true, /*findUsed=*/false,
                                   /*isDir=*/false);
    if (next.isEmpty()) {
        m_workspace.tell(QStringLiteral("编号为[") + GetParent(targetNo) +
                         QStringLiteral("]的目录所能容纳的条目数量已经达到极限！"));
    } else {
        m_workspace.tell(QStringLiteral("要改变条目之间的顺序，可以通过修改条目的编号来实现。"));
    }
}

QString TreeDrag::textOf(const QString& key) const {
    const ItemTreeModel& tree = m_workspace.tvwDirectory;
    return tree.text(tree.tree().findKey(key));
}

bool TreeDrag::confirm(const QString& source, const QString& target, const QString& ending) const {
    const QString question = QStringLiteral("是否要把【") + textOf(source) +
                             QStringLiteral("】移动到【") + textOf(target) + ending;
    return m_workspace.services.prompt.messageBox(question, Prompt::Icon::Question,
                                                  Prompt::Buttons::YesNo) == Prompt::Answer::Yes;
}

void TreeDrag::moveEntry(const QString& source, const QString& target) {
    const QString oldNo = GetItemKeyNo(source);
    if (m_workspace.isInCipher(oldNo)) {
        m_workspace.tell(workspacetext::fileInCipher());
        return;
    }
    if (!confirm(source, target, QStringLiteral("】之中？"))) {
        return;
    }
    const QString number = m_lists.FindItemNo(GetItemKeyNo(target), /*asSibling=*/false,
                                              /*findUsed=*/false, /*isDir=*/false);
    if (number.isEmpty()) {
        m_workspace.tell(QStringLiteral("该层目录所能容纳的条目数量已经达到极限！"));
        return;
    }
    if (!m_workspace.services.entries.MoveTo(oldNo, number)) {
        m_workspace.tell(QStringLiteral("移动条目失败！"));
        return;
    }
    m_lists.ChangeLsbNo(oldNo, number);
    m_pane.followMove(oldNo, number);
}

void TreeDrag::moveDirectory(const QString& source, const QString& target) {
    const bool isOntoEntry = TestEntDir(target);
    if (!confirm(source, target,
                 isOntoEntry ? QStringLiteral("】所在目录之中？") : QStringLiteral("】之中？"))) {
        return;
    }
    const QString targetNo = GetItemKeyNo(target);
    m_directories.move(GetItemKeyNo(source), isOntoEntry ? GetParent(targetNo) : targetNo);
}

}  // namespace keeper
