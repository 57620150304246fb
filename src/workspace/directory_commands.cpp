// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "workspace/directory_commands.h"

#include <algorithm>

#include "store/failure.h"
#include "store/numbering.h"

namespace keeper {

namespace {

// Statuses of the system log.
constexpr std::int32_t kDirectoryAdded = 35;
constexpr std::int32_t kDirectoryRenamed = 36;
constexpr std::int32_t kDirectoryRemoved = 37;
constexpr std::int32_t kDeleted = 1;
constexpr std::int32_t kCleared = -1;

bool isBigClass(const QString& number) {
    return number.size() == 2;
}

}  // namespace

QString DirectoryCommands::selectedDirectory() const {
    const QString key = m_sheets.state().selectedKey;
    const bool isDirectory = key.startsWith(QStringLiteral("dir")) &&
                             m_workspace.tvwDirectory.tree().findKey(key) != ItemTree::kRoot;
    return isDirectory ? GetItemKeyNo(key) : QString();
}

bool DirectoryCommands::isTooLong(const QString& title, const QString& what) const {
    if (title.size() <= kMaxTitle) {
        return false;
    }
    m_workspace.tell(what + QStringLiteral("不得多于") + QString::number(kMaxTitle) +
                     QStringLiteral("个字符！"));
    return true;
}

bool DirectoryCommands::isBusyUnder(const QString& number) const {
    const auto isUnder = [&number](const QString& entry) {
        return entry.size() > number.size() && entry.startsWith(number);
    };
    if (isUnder(m_workspace.m_cryptNo)) {
        m_workspace.tell(workspacetext::fileInCipher());
        return true;
    }
    const bool isEdited = m_workspace.m_editState != EditState::Browse &&
                          (isUnder(m_pane.state().txtNo) ||
                           (m_workspace.m_entry && isUnder(m_workspace.m_entry->common.p_No())));
    if (isEdited) {
        m_workspace.tell(workspacetext::browseOnly());
    }
    return isEdited;
}

void DirectoryCommands::mn_dirNewSub() {
    guardedRun(m_workspace.services.prompt, QStringLiteral("frmMain.mn_dirNewSub"), [this] {
        const QString parent = selectedDirectory();
        if (parent.isEmpty()) {
            return;
        }
        Directory directory;
        const QString number = m_lists.FindItemNo(parent, /*asSibling=*/false, /*findUsed=*/false,
                                                  /*isDir=*/true);
        if (number.isEmpty()) {
            m_workspace.tell(
                QStringLiteral("本层子目录数目已达到本层目录的最大容纳值，无法继续创建！"));
            return;
        }
        const auto title = m_workspace.services.prompt.inputBox(
            QStringLiteral("请输入新目录的名字："), QStringLiteral("创建子目录"),
            QStringLiteral("新建目录") + QString::number(m_newDirectories + 1));
        if (!title || title->isEmpty() || isTooLong(*title, QStringLiteral("目录名字"))) {
            return;
        }
        ++m_newDirectories;
        directory.p_dirPath(number);
        directory.m_Title = *title;
        if (!m_workspace.services.directories.Add(directory)) {
            m_workspace.tell(QStringLiteral("添加目录失败！"));
            return;
        }
        m_workspace.tvwDirectory.addItem(number, true, *title);
        m_workspace.services.view.expandNode(ConcatenateNo(parent, true));
        m_workspace.log(kDirectoryAdded, {number, *title});
    });
    m_lists.show();
}

void DirectoryCommands::mn_dirRename() {
    guardedRun(m_workspace.services.prompt, QStringLiteral("frmMain.mn_dirRename"), [this] {
        const QString number = selectedDirectory();
        if (number.isEmpty()) {
            return;
        }
        if (isBigClass(number)) {
            m_workspace.tell(QStringLiteral("不能重命名分类目录。"));
            return;
        }
        const ItemId id = m_workspace.tvwDirectory.tree().find(number, true);
        const QString before = m_workspace.tvwDirectory.tree().title(id);
        const auto title = m_workspace.services.prompt.inputBox(
            QStringLiteral("请输入新的目录标题："), QStringLiteral("重命名目录"), before);
        if (!title || title->isEmpty() || isTooLong(*title, QStringLiteral("目录标题"))) {
            return;
        }
        if (!m_workspace.services.directories.Rename(number, *title)) {
            m_workspace.tell(QStringLiteral("重命名目录失败！"));
            return;
        }
        m_workspace.tvwDirectory.renameItem(id, *title);
        m_workspace.log(kDirectoryRenamed, {number, before, *title});
    });
    m_lists.show();
}

void DirectoryCommands::leaveNodes(const QString& number) {
    m_lists.select(ConcatenateNo(number, true));
    if (m_workspace.m_editState == EditState::Browse) {
        m_sheets.ClickNode(ConcatenateNo(number, true));
    }
}

void DirectoryCommands::mn_dirDelete() {
    guardedRun(m_workspace.services.prompt, QStringLiteral("frmMain.mn_dirDelete"), [this] {
        const QString number = selectedDirectory();
        if (number.isEmpty()) {
            return;
        }
        if (isBigClass(number)) {
            m_workspace.tell(QStringLiteral("禁止删除分类目录！"));
            return;
        }
        if (isBusyUnder(number)) {
            return;
        }
        const ItemTree& tree = m_workspace.tvwDirectory.tree();
        const ItemId id = tree.find(number, true);
        const QString title = tree.title(id);
        const QString question =
            tree.childCount(id) > 0
                ? QStringLiteral("【") + title +
                      QStringLiteral("】非空，删除的话将会把其下的所有子目录和条目删除。")
                : QStringLiteral("确实要删除空目录【") + title + QStringLiteral("】吗？");
        if (m_workspace.services.prompt.messageBox(question, Prompt::Icon::Exclamation,
                                                   Prompt::Buttons::OkCancel) !=
            Prompt::Answer::Ok) {
            return;
        }
        if (!m_workspace.services.directories.Delete(number)) {
            m_workspace.tell(QStringLiteral("删除目录失败！"));
            return;
        }
        m_lists.dropLinesUnder(id);
        m_workspace.tvwDirectory.removeItem(id);
        m_workspace.log(kDirectoryRemoved, {number, title}, kDeleted);
        leaveNodes(GetParent(number));
    });
    m_lists.show();
}

void DirectoryCommands::mn_dirClear() {
    guardedRun(m_workspace.services.prompt, QStringLiteral("frmMain.mn_dirClear"), [this] {
        const QString number = selectedDirectory();
        if (number.isEmpty()) {
            return;
        }
        const ItemTree& tree = m_workspace.tvwDirectory.tree();
        const ItemId id = tree.find(number, true);
        if (tree.childCount(id) == 0) {
            m_workspace.tell(QStringLiteral("该目录已空。"));
            return;
        }
        if (isBusyUnder(number)) {
            return;
        }
        QString question = QStringLiteral("是否真的要清空该目录？");
        if (number.startsWith(QStringLiteral("03"))) {
            question.prepend(QStringLiteral("其下所对应的实际文件必须手动删除。\r\n"));
        }
        const auto& services = m_workspace.services;
        if (services.prompt.messageBox(question, Prompt::Icon::Exclamation,
                                       Prompt::Buttons::YesNo) != Prompt::Answer::Yes) {
            return;
        }
        if (!services.directories.ClearAll(number, services.entries)) {
            return;
        }
        m_lists.dropLinesUnder(id);
        m_workspace.tvwDirectory.removeChildren(id);
        m_workspace.log(kDirectoryRemoved, {number, tree.title(id)}, kCleared);
        leaveNodes(number);
    });
    m_lists.show();
}

void DirectoryCommands::move(const QString& number, const QString& targetNumber) {
    if (isBusyUnder(number)) {
        return;
    }
    const auto& services = m_workspace.services;
    const QString newNumber = m_lists.FindItemNo(targetNumber, /*asSibling=*/false,
                                                 /*findUsed=*/false, /*isDir=*/true);
    if (newNumber.isEmpty()) {
        m_workspace.tell(QStringLiteral("该层目录所能容纳的子目录数量已经达到极限！"));
        return;
    }
    if (!services.directories.MoveTo(number, newNumber)) {
        m_workspace.tell(QStringLiteral("移动目录失败！"));
        return;
    }
    m_sheets.RefreshSheets();
    // The pane may show an entry of the subtree: its number has a new head now.
    const QString shown = m_workspace.m_entry ? m_workspace.m_entry->common.p_No() : QString();
    if (shown.size() > number.size() && shown.startsWith(number)) {
        m_pane.followMove(shown, newNumber + shown.mid(number.size()));
    }
    services.view.focusTree();
}

}  // namespace keeper
