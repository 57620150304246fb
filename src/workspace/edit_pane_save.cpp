// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "store/ent_logs.h"
#include "store/failure.h"
#include "store/numbering.h"
#include "store/schema.h"
#include "workspace/edit_pane.h"

namespace keeper {

namespace {

// Statuses of the system log.
constexpr std::int32_t kEntryAdded = 38;
constexpr std::int32_t kEntryModified = 39;

}  // namespace

void EditPane::mn_save() {
    const Showing showing(*this);
    guardedRun(m_workspace.services.prompt, QStringLiteral("frmMain.mn_save"), [this] {
        if (!CheckValid()) {
            return;
        }
        switch (m_workspace.m_editState) {
            case EditState::Add:
                saveNew();
                break;
            case EditState::Modify:
                saveChange();
                break;
            case EditState::Browse:
                m_workspace.tell(QStringLiteral("请先确定是进行添加还是修改。"));
        }
    });
    m_lists.show();
}

void EditPane::buildCommon(Entry& entry, bool isNew) const {
    if (!isNew && m_workspace.m_entry) {
        entry.Copy(m_workspace.m_entry->common);
    }
    const QDate today = m_workspace.services.clock.today();
    entry.p_No(m_state.txtNo);
    entry.m_Title = m_state.txtTitle;
    entry.m_Remarks = m_state.txtRemarks;
    entry.m_Effective = m_state.chkEffective;
    entry.m_modPwdDays = m_state.txtModPwdDays.trimmed().toShort();
    if (isNew) {
        entry.m_createDate = today;
    }
    if (isNew || isPasswordChanged()) {
        entry.m_recentModPwd = today;
    }
    const bool isBound = IsAssPwdName(m_state.cboPassword);
    entry.m_pwdName = isBound ? m_state.cboPassword : kCustomName;
    entry.m_customPwd = isBound ? QString() : m_passwordText;
}

void EditPane::buildNet(NetEntry& net, bool isNew) const {
    buildCommon(net, isNew);
    net.m_Address = m_state.txtLocation;
    const bool isBound = IsAssNumName(m_state.ComboBox2);
    net.m_numName = isBound ? m_state.ComboBox2 : kCustomName;
    net.m_customNum = isBound ? QString() : m_numberText;
}

Web EditPane::BuildWeb(bool isNew) const {
    Web web;
    buildNet(web, isNew);
    return web;
}

Prg EditPane::BuildPrg(bool isNew) const {
    Prg prg;
    buildNet(prg, isNew);
    prg.m_Address = FileOperator::ReduceProgramPath(prg.m_Address);
    return prg;
}

Fil EditPane::BuildFil(bool isNew) const {
    Fil fil;
    buildCommon(fil, isNew);
    fil.m_filePath = m_workspace.services.files.ReducePath(m_state.txtLocation, false);
    fil.m_hashCode = GetDigestText();
    fil.m_Encrypted = m_state.chkEncrypted;
    return fil;
}

bool EditPane::addObject(const EntLog& history) {
    const auto& services = m_workspace.services;
    switch (GetItemKeyType(m_state.txtNo)) {
        case 1:
            return services.prgs.Add(BuildPrg(/*isNew=*/true), &history);
        case 2:
            return services.fils.Add(BuildFil(/*isNew=*/true), &history);
        default:
            return services.webs.Add(BuildWeb(/*isNew=*/true), &history);
    }
}

bool EditPane::modifyObject(const QString& oldNo, const EntLog* history) {
    const auto& services = m_workspace.services;
    switch (GetItemKeyType(oldNo)) {
        case 1:
            return services.prgs.Modify(oldNo, BuildPrg(/*isNew=*/false), history);
        case 2:
            return services.fils.Modify(oldNo, BuildFil(/*isNew=*/false), history);
        default:
            return services.webs.Modify(oldNo, BuildWeb(/*isNew=*/false), history);
    }
}

void EditPane::saveNew() {
    const auto& services = m_workspace.services;
    const QString number = m_state.txtNo;
    EntLog history;
    history.SetEntry(number, EntLog::kCreateEntry, services.clock.now());
    if (!addObject(history)) {
        m_workspace.tell(QStringLiteral("添加条目失败！"));
        return;
    }
    m_workspace.log(kEntryAdded, {number, m_state.txtTitle});
    m_lists.ItemAdd(number, m_state.txtTitle);
    services.beeper.MessageBeep(Beeper::Sound::Done);
    if (m_workspace.m_isSingle) {
        closePane();
    } else {
        walkToNextFree(number);
    }
}

void EditPane::closePane() {
    SetEditState(EditState::Browse);
    ClearDetails();
    // An empty form would look like a save that was lost.
    ShowControls(kDirectoryType);
}

void EditPane::walkToNextFree(const QString& number) {
    ClearDetails();
    focus(PaneField::Title);
    m_state.txtNo = m_lists.FindItemNoSkipZero(number, /*asSibling=*/true, /*findUsed=*/false,
                                               /*isDir=*/false);
    if (m_state.txtNo.isEmpty()) {
        m_workspace.tell(QStringLiteral("本层目录的条目数量已达到最大容纳值！"));
    }
}

void EditPane::saveChange() {
    if (!AllowModify()) {
        return;
    }
    const auto& services = m_workspace.services;
    const ShownEntry& before = *m_workspace.m_entry;
    const QString oldNo = before.common.p_No();
    const QString number = m_state.txtNo;
    EntLog history;
    history.SetEntry(number, EntLog::kModifyPassword, services.clock.now());
    history.SetOrgPwd(before.common.m_pwdName, before.password);
    if (!modifyObject(oldNo, isPasswordChanged() ? &history : nullptr)) {
        m_workspace.tell(QStringLiteral("修改条目失败！"));
        return;
    }
    m_workspace.log(kEntryModified, {number, m_state.txtTitle});
    m_lists.ItemModify(oldNo, number, m_state.txtTitle);
    services.beeper.MessageBeep(Beeper::Sound::Done);
    if (m_workspace.m_isSingle) {
        closePane();
    } else {
        walkToNextUsed(oldNo);
    }
}

void EditPane::walkToNextUsed(const QString& oldNo) {
    QString next = m_lists.FindItemNoSkipZero(oldNo, /*asSibling=*/true, /*findUsed=*/true,
                                              /*isDir=*/false);
    if (next.isEmpty()) {
        // Behind the last one the walk goes round to the first.
        next = m_lists.FindItemNo(GetParent(oldNo), /*asSibling=*/false, /*findUsed=*/true,
                                  /*isDir=*/false);
    }
    if (next.isEmpty() || next == oldNo) {
        ClearDetails();
        return;
    }
    DisplayEntry(next);
    m_lists.select(ConcatenateNo(next, false));
    focus(PaneField::Title, /*selectAll=*/true);
}

}  // namespace keeper
