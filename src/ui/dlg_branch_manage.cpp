// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/dlg_branch_manage.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSlider>

#include "guard/branch_manage.h"
#include "guard/sw_protect.h"
#include "ui/widgets/named.h"

namespace keeper {
namespace {

QString daysText(int days) {
    return QStringLiteral("%1天").arg(days);
}

}  // namespace

dlgBranchManage::dlgBranchManage(BranchManage& logic)
    : SessionDialog("dlgBranchManage"), m_logic(logic) {
    setWindowTitle(QStringLiteral("分机登录管理"));
    build();
    updateState();
    connect(sldBrchAliveDays, &QSlider::valueChanged, this, [this](int days) {
        m_logic.setDays(days);
        lblDays->setText(daysText(m_logic.state().days));
    });
    connect(chkAutoRenewBrchDeadCount, &QCheckBox::clicked, this,
            [this](bool isOn) { m_logic.setAutoRenew(isOn); });
    connect(cmdOK, &QPushButton::clicked, this, [this] {
        if (m_logic.cmdOK()) {
            accept();
        }
    });
}

void dlgBranchManage::build() {
    const int unit = fontMetrics().height();
    auto* rows = new QFormLayout;
    rows->setVerticalSpacing(unit);
    lblDaysLeft = named(new QLabel(this), "lblDaysLeft");
    rows->addRow(QStringLiteral("当前分机存活期："), lblDaysLeft);

    sldBrchAliveDays = named(new QSlider(Qt::Horizontal, this), "sldBrchAliveDays");
    sldBrchAliveDays->setAccessibleName(QStringLiteral("将分机存活期更新为"));
    sldBrchAliveDays->setRange(0, SWProtect::kMaxLifetime);
    sldBrchAliveDays->setPageStep(10);
    sldBrchAliveDays->setMinimumWidth(fontMetrics().averageCharWidth() * 32);
    lblDays = named(new QLabel(this), "lblDays");
    lblDays->setMinimumWidth(fontMetrics().horizontalAdvance(daysText(SWProtect::kMaxLifetime)));
    auto* lifetime = new QHBoxLayout;
    lifetime->addWidget(sldBrchAliveDays, 1);
    lifetime->addWidget(lblDays);
    rows->addRow(QStringLiteral("将分机存活期更新为："), lifetime);
    if (auto* label = qobject_cast<QLabel*>(rows->labelForField(lifetime))) {
        label->setBuddy(sldBrchAliveDays);
    }

    chkIsOnOrigin =
        named(new QCheckBox(QStringLiteral("当前在原新建机器上登录"), this), "chkIsOnOrigin");
    chkIsOnOrigin->setEnabled(false);
    chkAutoRenewBrchDeadCount =
        named(new QCheckBox(QStringLiteral("原新建机器登录自动更新(&A)"), this),
              "chkAutoRenewBrchDeadCount");
    QBoxLayout* layout = makeLayout();
    layout->addLayout(rows);
    layout->addWidget(chkIsOnOrigin);
    layout->addWidget(chkAutoRenewBrchDeadCount);
    layout->addLayout(makeCommands(QStringLiteral("确定(&O)"), QStringLiteral("取消(&C)")));
}

void dlgBranchManage::updateState() {
    const BranchManage::State& state = m_logic.state();
    lblDaysLeft->setText(daysText(state.daysLeft));
    sldBrchAliveDays->setValue(state.days);
    lblDays->setText(daysText(state.days));
    chkIsOnOrigin->setChecked(state.isOnOrigin);
    chkAutoRenewBrchDeadCount->setChecked(state.autoRenew);
    for (QWidget* control :
         std::initializer_list<QWidget*>{sldBrchAliveDays, chkAutoRenewBrchDeadCount}) {
        control->setEnabled(state.isOnOrigin);
        control->setToolTip(state.isOnOrigin ? QString()
                                             : QStringLiteral("只能在原新建机器上更改"));
    }
}

}  // namespace keeper
