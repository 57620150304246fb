// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "workspace/edit_pane.h"

namespace keeper {

// What captions, tool tips and enabled flags follow from: the class on display, the editing state
// and single or batch. All are derived anew at each change, so that no order of calls can mix them.

namespace {

QString operationText(EditState editState, bool isSingle) {
    switch (editState) {
        case EditState::Browse:
            return QStringLiteral("浏览查找");
        case EditState::Modify:
            return isSingle ? QStringLiteral("单条修改") : QStringLiteral("批量修改");
        case EditState::Add:
            return isSingle ? QStringLiteral("单条添加") : QStringLiteral("批量添加");
    }
    return {};
}

}  // namespace

void EditPane::applyControls() {
    applyEditability();
    applyCommon();
    applyNumberControls();
    applyLocationControls();
}

void EditPane::applyEditability() {
    const bool editing = isEditing();
    const bool isEntry = m_type != kDirectoryType;
    m_state.areFieldsEditable = editing;
    m_state.isTxtNoEditable = m_workspace.m_editState == EditState::Modify;
    m_state.isChkEffectiveUsable = !editing;
    m_state.canSave = editing;
    m_state.canUseNumber = !editing && isEntry && m_type != 2;
    m_state.canUsePassword = !editing && isEntry;
    m_state.isPicDetailVisible = isEntry;
    m_state.isChkEncryptedVisible = m_type == 2;
    m_state.p_optType = m_workspace.m_optType;
    m_state.operation = operationText(m_workspace.m_editState, m_workspace.m_isSingle);
}

void EditPane::applyCommon() {
    if (isEditing()) {
        m_state.cmdPassword = {QStringLiteral("自定义(&P)"), QStringLiteral("使用自定义密码")};
        m_state.lblPassword = {QStringLiteral("密码(&W)："), QStringLiteral("点击粘贴密码")};
        m_state.lblRemarks = {QStringLiteral("备注(&K)："), QStringLiteral("点击粘贴备注")};
    } else {
        m_state.cmdPassword = {QStringLiteral("显示密码(&P)"),
                               QStringLiteral("密码长度：密码内容")};
        m_state.lblPassword = {QStringLiteral("密码(&W)："), QStringLiteral("点击复制密码")};
        m_state.lblRemarks = {QStringLiteral("备注(&K)："), QStringLiteral("点击复制备注")};
    }
    if (m_workspace.m_isSingle) {
        m_state.mn_cancel = {QStringLiteral("取消(&C)"),
                             QStringLiteral("取消单条编辑操作并进入浏览查找状态")};
        m_state.toolbarCancel = QStringLiteral("取　消");
    } else {
        m_state.mn_cancel = {QStringLiteral("结束(&C)"),
                             QStringLiteral("结束批量编辑操作并进入浏览查找状态")};
        m_state.toolbarCancel = QStringLiteral("结　束");
    }
    m_state.mn_cancel.isEnabled = isEditing();
}

void EditPane::applyNumberControls() {
    if (m_type == 2) {
        m_state.Label2 = {QStringLiteral("&MD5摘要："),
                          isEditing()
                              ? QStringLiteral("MD5摘要是根据文件生成的能唯一标识该文件的字符串。")
                              : QStringLiteral("点击复制MD5")};
        m_state.Command2 = {QStringLiteral("比对摘要(&N)"),
                            QStringLiteral("获取新摘要并与原摘要比对"), !isEditing()};
        return;
    }
    if (isEditing()) {
        m_state.Label2 = {QStringLiteral("号码(&Q)："), QStringLiteral("点击粘贴号码")};
        m_state.Command2 = {QStringLiteral("自定义(&N)"), QStringLiteral("使用自定义号码")};
    } else {
        m_state.Label2 = {QStringLiteral("号码(&Q)："), QStringLiteral("点击复制号码")};
        m_state.Command2 = {QStringLiteral("显示号码(&M)"), QStringLiteral("号码长度：号码内容")};
    }
}

void EditPane::applyLocationControls() {
    switch (m_type) {
        case 1:
            m_state.lblLocation.caption = QStringLiteral("程序路径");
            m_state.cmdLocationPicture = QStringLiteral("open");
            m_state.cmdLocation.toolTip =
                isEditing() ? QStringLiteral("选择程序路径") : QStringLiteral("打开源目录");
            break;
        case 2:
            m_state.lblLocation.caption = QStringLiteral("文件路径");
            m_state.cmdLocationPicture = QStringLiteral("open");
            m_state.cmdLocation.toolTip =
                isEditing() ? QStringLiteral("选择文件路径") : QStringLiteral("打开源目录");
            break;
        default:
            m_state.lblLocation.caption = QStringLiteral("ＵＲＬ(&R)");
            m_state.cmdLocationPicture =
                isEditing() ? QStringLiteral("paste") : QStringLiteral("copy");
            m_state.cmdLocation.toolTip =
                isEditing() ? QStringLiteral("粘贴URL") : QStringLiteral("复制URL");
    }
}

}  // namespace keeper
