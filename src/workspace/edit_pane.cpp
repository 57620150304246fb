// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "workspace/edit_pane.h"

#include <QFileInfo>

#include "crypto/secure_wipe.h"
#include "store/failure.h"
#include "store/numbering.h"

namespace keeper {

EditPane::EditPane(Workspace& workspace, SheetLists& lists)
    : m_workspace(workspace), m_lists(lists) {
    applyControls();
}

EditPane::~EditPane() {
    secureWipe(m_numberText);
    secureWipe(m_passwordText);
}

void EditPane::focus(PaneField field, bool selectAll) {
    m_state.focus = {field, selectAll, m_state.focus.serial + 1};
}

bool EditPane::refuse(const QString& message, PaneField field, bool selectAll) {
    m_workspace.tell(message);
    focus(field, selectAll);
    return false;
}

void EditPane::EnterAdd(bool isSingle, const QString& title) {
    const Showing showing(*this);
    guardedRun(m_workspace.services.prompt, QStringLiteral("frmMain.EnterAdd"), [&] {
        if (m_workspace.m_editState == EditState::Modify) {
            m_workspace.tell(QStringLiteral("请先结束当前的修改状态，再切换到添加状态。"));
            return;
        }
        const QString key = m_lists.state().selectedKey;
        QString no = GetItemKeyNo(key);
        if (TestEntDir(key)) {
            no = GetParent(no);
        }
        no = m_lists.FindItemNo(no, /*asSibling=*/false, /*findUsed=*/false, /*isDir=*/false);
        if (no.isEmpty()) {
            m_workspace.tell(
                QStringLiteral("本层目录的条目数量已达到最大容纳值，请选择其它目录新增条目！"));
            return;
        }
        if (!mayReplaceFields()) {
            return;
        }
        m_workspace.m_isSingle = isSingle;
        SetEditState(EditState::Add);
        const int type = GetItemKeyType(key) % 3;
        ShowControls(type);
        ColourLocation(type);
        ClearDetails();
        m_state.txtNo = no;
        m_state.txtTitle = title;
        focus(PaneField::Title);
    });
}

void EditPane::EnterModify(bool isSingle) {
    const Showing showing(*this);
    guardedRun(m_workspace.services.prompt, QStringLiteral("frmMain.EnterModify"), [&] {
        if (m_workspace.m_editState == EditState::Add) {
            m_workspace.tell(QStringLiteral("请先结束当前的添加状态，再切换到修改状态。"));
            return;
        }
        const QString key = m_lists.state().selectedKey;
        if (!m_workspace.m_entry && TestEntDir(key)) {
            // What is selected is meant, shown or not.
            DisplayEntry(GetItemKeyNo(key));
        }
        m_workspace.m_isSingle = isSingle;
        SetEditState(EditState::Modify);
        const QString number = m_workspace.m_entry ? m_workspace.m_entry->common.p_No() : QString();
        const int type = GetItemKeyType(number);
        ShowControls(type);
        ColourLocation(type);
        m_state.txtNo = number;
        focus(PaneField::Title, /*selectAll=*/true);
    });
}

void EditPane::mn_cancel() {
    const Showing showing(*this);
    if (m_workspace.services.digest.isComputing()) {
        m_workspace.services.digest.StopDigest(/*withBeep=*/true);
    }
    SetEditState(EditState::Browse);
    const QString key = m_lists.state().selectedKey;
    ShowControls(TestEntDir(key) ? GetItemKeyType(key) : kDirectoryType);
    if (TestEntDir(key)) {
        DisplayEntry(GetItemKeyNo(key));
    } else {
        ClearDetails();
    }
    m_lists.state().canDelete = m_workspace.m_entry.has_value();
    m_lists.show();
}

bool EditPane::mayReplaceFields() {
    if (!isDirty()) {
        return true;
    }
    const bool isGivenUp =
        m_workspace.services.prompt.messageBox(QStringLiteral("当前的编辑尚未保存，是否放弃？"),
                                               Prompt::Icon::Exclamation, Prompt::Buttons::YesNo,
                                               {}, Prompt::Answer::No) == Prompt::Answer::Yes;
    m_isDirty = !isGivenUp;
    return isGivenUp;
}

void EditPane::SetEditState(EditState editState) {
    const Showing showing(*this);
    // Whoever watches the end of a fill still sees the old state.
    m_workspace.services.monitor.ActivateMonitor(kFillEnded);
    m_workspace.m_editState = editState;
    applyControls();
}

void EditPane::ShowControls(int type) {
    const Showing showing(*this);
    m_type = type >= 0 && type < kDirectoryType ? type : kDirectoryType;
    m_workspace.m_optType = type >= 0 ? type % 3 : 0;
    applyControls();
}

void EditPane::ColourLocation(int type) {
    const Showing showing(*this);
    const auto& services = m_workspace.services;
    const auto isDead = [&] {
        const QString& text = m_state.txtLocation;
        if (type == 2) {
            return text.isEmpty() || !QFileInfo::exists(services.files.ResolvePath(text, false));
        }
        const bool isUrl = text.contains(QStringLiteral("http://")) ||
                           text.contains(QStringLiteral("https://")) ||
                           text.contains(QStringLiteral("ftp://"));
        return !isUrl && !QFileInfo(services.files.ResolveProgramPath(text)).isFile();
    };
    if (!isEditing() && type >= 0 && type <= 2 && isDead()) {
        m_state.locationColour = LocationColour::Dead;
        return;
    }
    m_state.locationColour =
        services.settings.p_themeBackground() ? LocationColour::Theme : LocationColour::Window;
}

void EditPane::ClearDetails() {
    const Showing showing(*this);
    m_isDirty = false;
    m_workspace.m_entry.reset();
    SetNumberText({});
    SetPasswordText({});
    for (QString* text : {&m_state.txtNo, &m_state.txtTitle, &m_state.txtLocation,
                          &m_state.txtRemarks, &m_state.txtCreateDate, &m_state.txtRecentUpdate,
                          &m_state.lblUsedTimes, &m_state.chkEncryptedCaption}) {
        text->clear();
    }
    // What was typed into the boxes may be a secret.
    secureWipe(m_state.ComboBox2);
    secureWipe(m_state.cboPassword);
    m_state.txtModPwdDays = isEditing() ? QStringLiteral("0") : QString();
    m_state.chkEffective = true;
    m_state.chkEncrypted = false;
    m_state.numberNames = m_numberNames;
    m_state.passwordNames = m_passwordNames;
    m_state.locationColour = m_workspace.services.settings.p_themeBackground()
                                 ? LocationColour::Theme
                                 : LocationColour::Window;
}

void EditPane::showNo(const QString& number) {
    const Showing showing(*this);
    m_state.txtNo = number;
}

void EditPane::followMove(const QString& oldNo, const QString& number) {
    const Showing showing(*this);
    if (m_workspace.m_entry && m_workspace.m_entry->common.p_No() == oldNo) {
        m_workspace.m_entry->common.p_No(number);
        m_state.txtNo = number;
        ShowControls(GetItemKeyType(number));
    }
}

void EditPane::showEffective(bool isEffective) {
    const Showing showing(*this);
    m_state.chkEffective = isEffective;
    if (!m_workspace.m_entry) {
        return;
    }
    m_workspace.m_entry->common.m_Effective = isEffective;
    if (!isEffective) {
        m_workspace.m_entry->common.m_modPwdDays = 0;
        m_state.txtModPwdDays = QStringLiteral("0");
    }
}

void EditPane::monitorShownEntry() {
    FillMonitorPort& monitor = m_workspace.services.monitor;
    if (!m_workspace.m_entry) {
        monitor.ActivateMonitor(kFillEnded);
    } else {
        monitor.ActivateMonitor(m_workspace.m_entry->common.m_Effective ? kArmFill
                                                                        : kFillDiscarded);
    }
}

void EditPane::editField(PaneField field, const QString& text) {
    const Showing showing(*this);
    const bool isLocked =
        field == PaneField::No ? !m_state.isTxtNoEditable : !m_state.areFieldsEditable;
    if (isLocked) {
        return;
    }
    m_isDirty = true;
    switch (field) {
        case PaneField::No:
            m_state.txtNo = text;
            break;
        case PaneField::Title:
            m_state.txtTitle = text;
            break;
        case PaneField::Location:
            m_state.txtLocation = text;
            break;
        case PaneField::Remarks:
            m_state.txtRemarks = text;
            break;
        case PaneField::ModPwdDays:
            m_state.txtModPwdDays = text;
            break;
        case PaneField::Number:
            typeNumber(text);
            break;
        case PaneField::Password:
            typePassword(text);
            break;
        case PaneField::None:
            break;
    }
}

void EditPane::setEncrypted(bool isEncrypted, const QString& caption) {
    const Showing showing(*this);
    m_state.chkEncrypted = isEncrypted;
    m_state.chkEncryptedCaption = caption;
}

}  // namespace keeper
