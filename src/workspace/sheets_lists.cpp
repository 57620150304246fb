// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <algorithm>

#include "store/numbering.h"
#include "workspace/sheets.h"

namespace keeper {

namespace {

/// Digits in pairs that begin with a big class.
bool looksLikeNumber(const QString& text) {
    const bool isNumeric = std::all_of(text.begin(), text.end(), [](QChar character) {
        return character >= u'0' && character <= u'9';
    });
    return isNumeric && text.size() % 2 == 0 &&
           (text.startsWith(QStringLiteral("01")) || text.startsWith(QStringLiteral("02")) ||
            text.startsWith(QStringLiteral("03")));
}

}  // namespace

void Sheets::ShowListEntry(const QString& number) {
    const EditPane::Showing showing(m_pane);
    switch (m_workspace.m_editState) {
        case EditState::Browse:
            m_pane.DisplayEntry(number);
            m_pane.ShowControls(GetItemKeyType(number));
            m_pane.monitorShownEntry();
            m_lists.state().canDelete = m_workspace.m_entry.has_value();
            break;
        case EditState::Modify:
            if (m_pane.mayReplaceFields()) {
                m_pane.DisplayEntry(number);
                m_pane.ShowControls(GetItemKeyType(number));
            }
            break;
        case EditState::Add: {
            const QString key = ConcatenateNo(number, false);
            if (m_workspace.tvwDirectory.tree().findKey(key) != ItemTree::kRoot) {
                ClickNode(key);
                showInTree(number);
            }
        }
    }
    m_lists.show();
}

void Sheets::showInTree(const QString& number) {
    const QString key = ConcatenateNo(number, false);
    if (m_workspace.tvwDirectory.tree().findKey(key) == ItemTree::kRoot) {
        return;
    }
    goToTab(SheetTab::Directory);
    m_lists.select(key);
    m_lists.show();
    m_workspace.services.view.focusTree();
}

void Sheets::showNothing() {
    m_lists.state().searchRow = ItemListModel::kNoRow;
    // What is being entered is not lost by looking for something else.
    if (!m_pane.isDirty()) {
        m_pane.ClearDetails();
        if (m_workspace.m_editState == EditState::Browse) {
            m_pane.ShowControls(EditPane::kDirectoryType);
            m_lists.state().canDelete = false;
        }
    }
    m_workspace.services.monitor.ActivateMonitor(kFillEnded);
    m_lists.show();
}

void Sheets::searchFor(const QString& text) {
    const EditPane::Showing showing(m_pane);
    const ItemListModel& list = m_workspace.lsbSearch;
    int row = ItemListModel::kNoRow;
    if (!text.isEmpty()) {
        row = looksLikeNumber(text) ? list.findDigits(text) : list.findTitle(text);
    }
    if (row == ItemListModel::kNoRow) {
        showNothing();
        return;
    }
    m_lists.state().searchRow = row;
    if (m_workspace.m_editState == EditState::Modify && m_pane.isDirty()) {
        m_lists.show();
        return;
    }
    ShowListEntry(m_workspace.tvwDirectory.tree().number(list.idAt(row)));
}

void Sheets::AddBookmark() {
    if (m_workspace.m_editState != EditState::Browse) {
        m_workspace.tell(workspacetext::browseOnly());
        return;
    }
    const QString number = m_pane.state().txtNo;
    if (number.isEmpty()) {
        m_workspace.tell(QStringLiteral("请选择要添加书签的条目！"));
        return;
    }
    const ItemId id = m_workspace.tvwDirectory.tree().find(number, false);
    if (m_workspace.lsbBookmark.contains(id)) {
        m_workspace.tell(QStringLiteral("已收藏本条目！"));
        return;
    }
    if (id == ItemTree::kRoot || !m_workspace.services.entries.SetBookmark(number, true)) {
        m_workspace.tell(QStringLiteral("添加书签失败！"));
        return;
    }
    m_workspace.lsbBookmark.append(id);
    m_lists.countLines();
    m_lists.show();
}

void Sheets::RemoveBookmark(int row) {
    if (row < 0 || row >= m_workspace.lsbBookmark.count()) {
        m_workspace.tell(QStringLiteral("请选择要移除的书签！"));
        return;
    }
    const ItemId id = m_workspace.lsbBookmark.idAt(row);
    const auto answer = m_workspace.services.prompt.messageBox(
        QStringLiteral("是否要移除该书签？"), Prompt::Icon::Question, Prompt::Buttons::YesNo);
    if (answer != Prompt::Answer::Yes) {
        return;
    }
    const QString number = m_workspace.tvwDirectory.tree().number(id);
    if (!m_workspace.services.entries.SetBookmark(number, false)) {
        m_workspace.tell(QStringLiteral("移除书签失败！"));
        return;
    }
    m_workspace.lsbBookmark.removeItem(id);
    m_lists.countLines();
    m_lists.show();
}

}  // namespace keeper
