// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "workspace/entry_disposal.h"

#include <QFile>
#include <QFileInfo>

#include "store/failure.h"
#include "store/numbering.h"

namespace keeper {

namespace {

// Statuses of the system log.
constexpr std::int32_t kEntryDeleted = 40;
constexpr std::int32_t kFileEntryDeleted = 41;
constexpr std::int32_t kEffectiveChanged = 50;

}  // namespace

void EntryDisposal::mn_delete() {
    if (m_workspace.m_editState != EditState::Browse) {
        m_workspace.tell(workspacetext::browseOnly());
        return;
    }
    DeleteEntry();
}

EntryDisposal::Choice EntryDisposal::ask(const QString& title, bool isFile) const {
    const auto& services = m_workspace.services;
    services.beeper.MessageBeep(Beeper::Sound::Warning);
    const QString question = QStringLiteral("是否要删除条目【") + title + QStringLiteral("】");
    if (!isFile) {
        const auto answer = services.prompt.messageBox(
            question + QStringLiteral("？"), Prompt::Icon::Exclamation, Prompt::Buttons::YesNo);
        return answer == Prompt::Answer::Yes ? Choice::EntryOnly : Choice::Nothing;
    }
    const auto answer =
        services.prompt.messageBox(question + QStringLiteral("，以及其所对应的文件？\r\n"
                                                             "是：删除条目和文件；\r\n"
                                                             "否：仅删除条目；\r\n"
                                                             "取消：两者都不删除。"),
                                   Prompt::Icon::Exclamation, Prompt::Buttons::YesNoCancel);
    switch (answer) {
        case Prompt::Answer::Yes:
            return Choice::EntryAndFile;
        case Prompt::Answer::No:
            return Choice::EntryOnly;
        default:
            return Choice::Nothing;
    }
}

void EntryDisposal::DeleteEntry() {
    const EditPane::Showing showing(m_pane);
    guardedRun(m_workspace.services.prompt, QStringLiteral("frmMain.DeleteEntry"), [this] {
        const auto& services = m_workspace.services;
        const QString number = m_workspace.m_entry ? m_workspace.m_entry->common.p_No() : QString();
        if (number.isEmpty()) {
            m_workspace.tell(QStringLiteral("请选择要删除的条目。"));
            return;
        }
        const bool isFile = GetItemKeyType(number) == 2;
        if (isFile && m_workspace.isInCipher(number)) {
            m_workspace.tell(workspacetext::fileInCipher());
            return;
        }
        // The stored values count: in modify the fields may hold anything.
        const QString title = m_workspace.m_entry->common.m_Title;
        const QString location = m_workspace.m_entry->location;
        const Choice choice = ask(title, isFile);
        if (choice == Choice::Nothing) {
            return;
        }
        if (isFile && !m_workspace.m_entry->password.isEmpty() &&
            !services.gate.CheckAuthority(services.settings.GetAuthority(kDeleteProtectedFile) !=
                                          0)) {
            return;
        }
        if (!services.entries.Delete(m_workspace.m_entry->common)) {
            m_workspace.tell(QStringLiteral("删除条目失败！"));
            return;
        }
        m_lists.ItemDelete(number);
        m_workspace.m_entry.reset();
        // Before the file: if that cannot go, the entry is gone all the same.
        if (m_workspace.m_editState == EditState::Browse) {
            showNeighbour(number);
        }
        if (choice == Choice::EntryAndFile) {
            deleteFile(number, location);
        } else {
            m_workspace.log(kEntryDeleted, {number, title});
        }
    });
    m_lists.show();
}

void EntryDisposal::deleteFile(const QString& number, const QString& location) const {
    const QString path = m_workspace.services.files.ResolvePath(location, false);
    QFile file(path);
    if (QFileInfo(path).isFile()) {
        if (!file.remove()) {
            // The log must not claim a deletion that did not happen.
            m_workspace.log(kFileEntryDeleted, {number, location}, -1);
            throw KeeperError(75, QStringLiteral("EntryDisposal"), file.errorString());
        }
        m_workspace.services.beeper.MessageBeep(Beeper::Sound::Done);
    }
    m_workspace.log(kFileEntryDeleted, {number, location}, 1);
}

void EntryDisposal::showNeighbour(const QString& number) {
    const ItemTree& tree = m_workspace.tvwDirectory.tree();
    for (QString before = GetPrevious(number); before.size() == number.size();
         before = GetPrevious(before)) {
        const QString key = ConcatenateNo(before, false);
        if (tree.findKey(key) != ItemTree::kRoot) {
            m_sheets.ClickNode(key);
            return;
        }
    }
    m_pane.ClearDetails();
    m_lists.state().canDelete = false;
}

bool EntryDisposal::confirmEffective(bool isActivating) const {
    const auto& services = m_workspace.services;
    services.beeper.MessageBeep(Beeper::Sound::Warning);
    const auto answer =
        services.prompt.messageBox(isActivating ? QStringLiteral("你确定要激活本条目吗？")
                                                : QStringLiteral("你确定要废弃本条目吗？"),
                                   Prompt::Icon::Exclamation, Prompt::Buttons::OkCancel);
    if (answer != Prompt::Answer::Ok) {
        return false;
    }
    return !isActivating ||
           services.gate.CheckAuthority(services.settings.GetAuthority(kActivateDiscarded) != 0);
}

void EntryDisposal::chkEffective_Click() {
    // The view shows the state again at the end: a box that a person has ticked goes back by this.
    const EditPane::Showing showing(m_pane);
    guardedRun(m_workspace.services.prompt, QStringLiteral("frmMain.chkEffective_Click"), [this] {
        if (m_workspace.m_editState != EditState::Browse || !m_workspace.m_entry) {
            return;
        }
        const bool isActivating = !m_pane.state().chkEffective;
        const QString number = m_workspace.m_entry->common.p_No();
        if (!confirmEffective(isActivating) ||
            !m_workspace.services.entries.SetEffective(number, isActivating)) {
            return;
        }
        m_workspace.log(kEffectiveChanged, {number, m_workspace.m_entry->common.m_Title},
                        isActivating ? 2 : 1);
        m_pane.showEffective(isActivating);
        m_workspace.services.monitor.ActivateMonitor(isActivating ? kFillEnded : kFillDiscarded);
    });
}

}  // namespace keeper
