// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <QFileInfo>

#include "crypto/secure_wipe.h"
#include "store/numbering.h"
#include "store/schema.h"
#include "store/time_text.h"
#include "workspace/edit_pane.h"

namespace keeper {

namespace {

QString dayText(const QDate& date) {
    return date.isValid()
               ? date.toString(QStringLiteral("yyyy年MM月dd日，")) + Time::GetWeekDay(date)
               : QString();
}

QString timeText(const QDateTime& time) {
    return time.isValid() ? time.toString(QStringLiteral("yyyy年MM月dd日 HH:mm:ss，")) +
                                Time::GetWeekDay(time.date())
                          : QString();
}

/// A name that the lists do not offer any more still binds the entry on display.
QStringList withName(QStringList names, const QString& name) {
    if (!name.isEmpty() && !names.contains(name)) {
        names << name;
    }
    return names;
}

bool isListed(const QStringList& names, const QString& text) {
    return text != kCustomName && names.contains(text);
}

}  // namespace

void EditPane::DisplayEntry(const QString& number) {
    const Showing showing(*this);
    const auto& services = m_workspace.services;
    const int type = GetItemKeyType(number);
    if (type == 2) {
        const Fil fil = services.fils.Search(number);
        if (fil.p_No().isEmpty()) {
            ClearDetails();
            return;
        }
        showCommon(fil, fil.m_filePath);
        showDigestOf(fil);
    } else {
        const NetEntry net = type == 0 ? NetEntry(services.webs.Search(number))
                                       : NetEntry(services.prgs.Search(number));
        if (net.p_No().isEmpty()) {
            ClearDetails();
            return;
        }
        showCommon(net, net.m_Address);
        showNumberOf(net);
    }
    ColourLocation(type);
}

void EditPane::showCommon(const Entry& entry, const QString& location) {
    ClearDetails();
    m_state.txtNo = entry.p_No();
    m_state.txtTitle = entry.m_Title;
    m_state.lblUsedTimes = QString::number(entry.m_usedTimes);
    m_state.txtLocation = location;
    m_state.chkEffective = entry.m_Effective;
    m_state.txtRemarks = entry.m_Remarks;
    m_state.txtModPwdDays = QString::number(entry.m_modPwdDays);
    m_state.txtRecentUpdate = timeText(entry.m_recentUpdate);
    m_state.txtCreateDate = dayText(entry.m_createDate);
    showPasswordOf(entry);
    ShownEntry shown;
    shown.common = entry;
    shown.location = location;
    shown.password = m_passwordText;
    m_workspace.m_entry = std::move(shown);
}

void EditPane::showNumberOf(const NetEntry& net) {
    m_workspace.m_entry->numName = net.m_numName;
    m_workspace.m_entry->customNum = net.m_customNum;
    if (net.m_numName == kCustomName) {
        SetNumberText(net.m_customNum);
        m_state.ComboBox2 =
            net.m_customNum.isEmpty() ? QStringLiteral("(无号码)") : QString(kCustomName);
        return;
    }
    m_state.numberNames = withName(m_numberNames, net.m_numName);
    m_state.ComboBox2 = net.m_numName;
    ShowAssNum(net.m_numName);
}

void EditPane::showPasswordOf(const Entry& entry) {
    if (entry.m_pwdName == kCustomName) {
        SetPasswordText(entry.m_customPwd);
        m_state.cboPassword =
            entry.m_customPwd.isEmpty() ? QStringLiteral("(无密码)") : QString(kCustomName);
        return;
    }
    m_state.passwordNames = withName(m_passwordNames, entry.m_pwdName);
    m_state.cboPassword = entry.m_pwdName;
    ShowAssPwd(entry.m_pwdName);
}

void EditPane::showDigestOf(const Fil& fil) {
    m_state.numberNames.clear();
    SetDigestText(fil.m_hashCode);
    m_state.chkEncrypted = fil.m_Encrypted;
    m_state.chkEncryptedCaption = QStringLiteral("已加密");
    const QString path = m_workspace.services.files.ResolvePath(fil.m_filePath, false);
    if (QFileInfo(path).isFile()) {
        m_state.chkEncryptedCaption +=
            QStringLiteral(" (") + FileOperator::GetFileLenHuman_Path(path) + QLatin1Char(')');
    }
}

void EditPane::RefreshAssNames() {
    const Showing showing(*this);
    m_numberNames.clear();
    m_passwordNames.clear();
    m_workspace.services.assNums.DisplayNames(m_numberNames);
    m_workspace.services.assPwds.DisplayNames(m_passwordNames);
    const bool isFile = m_type == 2;
    const auto& entry = m_workspace.m_entry;
    m_state.numberNames =
        isFile ? QStringList() : withName(m_numberNames, entry ? entry->numName : QString());
    m_state.passwordNames = withName(m_passwordNames, entry ? entry->common.m_pwdName : QString());
}

bool EditPane::IsAssNumName(const QString& text) const {
    return isListed(m_state.numberNames, text);
}

bool EditPane::IsAssPwdName(const QString& text) const {
    return isListed(m_state.passwordNames, text);
}

void EditPane::ShowAssNum(const QString& name) {
    SetNumberText(name.isEmpty() ? QString() : m_workspace.services.assNums.Search(name).m_Content);
}

void EditPane::ShowAssPwd(const QString& name) {
    SetPasswordText(name.isEmpty() ? QString()
                                   : m_workspace.services.assPwds.Search(name).m_Content);
}

void EditPane::SetNumberText(QString text) {
    secureWipe(m_numberText);
    m_numberText = std::move(text);
}

void EditPane::SetPasswordText(QString text) {
    secureWipe(m_passwordText);
    m_passwordText = std::move(text);
}

void EditPane::SetDigestText(const QString& text) {
    const Showing showing(*this);
    m_state.ComboBox2 = text;
}

void EditPane::typeNumber(const QString& text) {
    const Showing showing(*this);
    if (!m_state.areFieldsEditable) {
        return;
    }
    m_isDirty = true;
    m_state.ComboBox2 = text;
    // Whatever class the controls show: the class of the number decides at the save. A listed name
    // binds the entry, typed or chosen; the slot must then hold what it stands for.
    if (IsAssNumName(text)) {
        ShowAssNum(text);
    } else {
        SetNumberText(text);
    }
}

void EditPane::typePassword(const QString& text) {
    const Showing showing(*this);
    if (!m_state.areFieldsEditable) {
        return;
    }
    m_isDirty = true;
    m_state.cboPassword = text;
    if (IsAssPwdName(text)) {
        ShowAssPwd(text);
    } else {
        SetPasswordText(text);
    }
}

void EditPane::chooseNumberName(const QString& name) {
    const Showing showing(*this);
    if (!m_state.areFieldsEditable || m_type == 2) {
        return;
    }
    const bool isReplaced = IsAssNumName(m_state.ComboBox2) || m_numberText.isEmpty();
    m_isDirty = true;
    m_state.ComboBox2 = name;
    if (name != kCustomName) {
        ShowAssNum(name);
    } else if (isReplaced) {
        // Back to the stored value; one that was typed is not lost by choosing it.
        SetNumberText(m_workspace.m_entry ? m_workspace.m_entry->customNum : QString());
    }
}

void EditPane::choosePasswordName(const QString& name) {
    const Showing showing(*this);
    if (!m_state.areFieldsEditable) {
        return;
    }
    const bool isReplaced = IsAssPwdName(m_state.cboPassword) || m_passwordText.isEmpty();
    m_isDirty = true;
    m_state.cboPassword = name;
    if (name != kCustomName) {
        ShowAssPwd(name);
    } else if (isReplaced) {
        const bool hasOwn =
            m_workspace.m_entry && m_workspace.m_entry->common.m_pwdName == kCustomName;
        SetPasswordText(hasOwn ? m_workspace.m_entry->common.m_customPwd : QString());
    }
}

}  // namespace keeper
