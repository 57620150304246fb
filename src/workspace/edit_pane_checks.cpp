// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <algorithm>

#include "store/failure.h"
#include "store/numbering.h"
#include "workspace/edit_pane.h"

namespace keeper {

namespace {

constexpr qsizetype kDigestLength = 32;

bool isDigits(const QString& text) {
    return !text.isEmpty() && std::all_of(text.begin(), text.end(), [](QChar character) {
        return character >= u'0' && character <= u'9';
    });
}

bool isAlphaNumeric(QChar character) {
    return (character >= u'0' && character <= u'9') || (character >= u'A' && character <= u'Z') ||
           (character >= u'a' && character <= u'z');
}

}  // namespace

bool EditPane::CheckValid() {
    const Showing showing(*this);
    return guarded(
        m_workspace.services.prompt, QStringLiteral("frmMain.CheckValid"), false, [this] {
            if (!m_state.chkEffective) {
                return refuse(workspacetext::discarded(), PaneField::None);
            }
            if (!checkNo()) {
                return false;
            }
            if (m_state.txtTitle.isEmpty()) {
                return refuse(QStringLiteral("请填写条目标题！"), PaneField::Title);
            }
            if (!(GetItemKeyType(m_state.txtNo) == 2 ? checkFile() : checkNet())) {
                return false;
            }
            if (!IsAssPwdName(m_state.cboPassword) && m_passwordText.size() == 1) {
                return refuse(QStringLiteral("密码非空时不能为一个字符！"), PaneField::Password);
            }
            return checkModPwdDays();
        });
}

bool EditPane::checkNo() {
    const QString& number = m_state.txtNo;
    if (number.isEmpty()) {
        return refuse(QStringLiteral("条目编号不能为空！"), PaneField::No);
    }
    if (number.size() == 2) {
        return refuse(QStringLiteral("禁止在分类目录之外创建条目！"), PaneField::No, true);
    }
    if (number.size() % 2 != 0 || !isDigits(number)) {
        return refuse(QStringLiteral("条目编号格式有误！"), PaneField::No, true);
    }
    if (number.endsWith(QStringLiteral("00"))) {
        return refuse(QStringLiteral("条目编号无效，每层目录最大只能容纳99条条目。"), PaneField::No,
                      true);
    }
    return true;
}

bool EditPane::checkNet() {
    if (m_state.txtLocation.size() > kMaxLocation) {
        return refuse(QStringLiteral("网络类条目的“URL/程序路径”长度不能超过200个字符！"),
                      PaneField::Location);
    }
    if (!IsAssNumName(m_state.ComboBox2) && m_state.ComboBox2.size() == 1) {
        return refuse(QStringLiteral("号码非空时不能为一个字符！"), PaneField::Number);
    }
    return true;
}

bool EditPane::checkFile() {
    if (m_workspace.services.digest.isComputing()) {
        m_workspace.services.digest.StopDigest(/*withBeep=*/false);
    }
    const QString digest = GetDigestText();
    if (digest.size() != kDigestLength) {
        // A note such as "failed" stands where the digest would; it is not worth a question.
        SetDigestText({});
        return true;
    }
    if (!std::all_of(digest.begin(), digest.end(), isAlphaNumeric)) {
        return refuse(QStringLiteral("MD5摘要格式有误！"), PaneField::Number);
    }
    return true;
}

bool EditPane::checkModPwdDays() {
    const QString text = m_state.txtModPwdDays.trimmed();
    const bool isSigned = text.startsWith(QLatin1Char('-')) || text.startsWith(QLatin1Char('+'));
    if (!isDigits(isSigned ? text.mid(1) : text)) {
        return refuse(QStringLiteral("改密提醒周期必须输入数字！"), PaneField::ModPwdDays);
    }
    bool fits = false;
    const int days = text.toInt(&fits);
    if (!fits || days < 0 || days > kMaxModPwdDays) {
        return refuse(QStringLiteral("改密提醒周期天数的取值范围为 0~999！"),
                      PaneField::ModPwdDays);
    }
    return true;
}

bool EditPane::isPasswordChanged() const {
    return m_workspace.m_entry && m_workspace.m_entry->password != m_passwordText;
}

bool EditPane::AllowModify() {
    const Showing showing(*this);
    return guarded(
        m_workspace.services.prompt, QStringLiteral("frmMain.AllowModify"), false, [this] {
            const QString number =
                m_workspace.m_entry ? m_workspace.m_entry->common.p_No() : QString();
            // An entry that went away meanwhile (its directory was deleted) cannot take a change.
            if (number.isEmpty() ||
                m_workspace.tvwDirectory.tree().find(number, false) == ItemTree::kRoot) {
                m_workspace.tell(QStringLiteral("请选择要修改的条目。"));
                return false;
            }
            const int oldType = GetItemKeyType(number);
            const int newType = GetItemKeyType(m_state.txtNo);
            if (oldType != newType && (oldType == 2 || newType == 2)) {
                return refuse(QStringLiteral("网络类和文件类条目不能互相转换！"), PaneField::No,
                              true);
            }
            if (oldType != 2) {
                return true;
            }
            if (m_state.chkEncrypted) {
                if (isPasswordChanged()) {
                    m_workspace.tell(QStringLiteral("本条目的文件已经加密，不可以修改密码！"));
                    return false;
                }
                return true;
            }
            if (m_workspace.isInCipher(number)) {
                m_workspace.tell(workspacetext::fileInCipher());
                return false;
            }
            return true;
        });
}

}  // namespace keeper
