// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/dlg_column_cryption.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>

#include "crypto/secure_wipe.h"
#include "guard/column_switch.h"
#include "ui/widgets/key_box.h"
#include "ui/widgets/named.h"

namespace keeper {
namespace {

constexpr int kLongestColumnPassword = 32;

}  // namespace

dlgColumnCryption::dlgColumnCryption(ColumnSwitch& logic, const KeyboardState& keyboard)
    : SessionDialog("dlgColumnCryption"), m_logic(logic), m_keyboard(keyboard) {
    setWindowTitle(QStringLiteral("设置列级加密"));
    build();
    // Only a person clicks: what the state sets is no click.
    connect(chkCryptionStatus, &QCheckBox::clicked, this, [this] {
        QString entry = txtIdpPwd->text();
        // Shared with the box, which is empty by then: the last owner wipes.
        const WipeGuard wipe(entry);
        m_logic.chkCryptionStatus(entry);
    });
    connect(txtIdpPwd, &KeyBox::returnPressed, chkCryptionStatus, &QCheckBox::click);
    connect(cmdCancel, &QPushButton::clicked, this, [this] { m_logic.cmdCancel(); });
    m_logic.changed = [this] { updateState(); };
    m_logic.emptyEntry = [this] {
        txtIdpPwd->wipe();
        txtIdpPwd->edit()->setFocus();
    };
    updateState();
    txtIdpPwd->edit()->setFocus();
}

dlgColumnCryption::~dlgColumnCryption() {
    m_logic.changed = nullptr;
    m_logic.emptyEntry = nullptr;
}

void dlgColumnCryption::build() {
    const int unit = fontMetrics().height();
    lblIllustration = named(new QLabel(this), "lblIllustration");
    lblIllustration->setText(
        ColumnSwitch::illustration().replace(QStringLiteral("\r\n"), QStringLiteral("\n")));

    txtIdpPwd = new KeyBox(m_keyboard, QStringLiteral("独立密码"), this);
    txtIdpPwd->setMaxLength(kLongestColumnPassword);
    named(txtIdpPwd->edit(), "txtIdpPwd");
    auto* label = new QLabel(QStringLiteral("独立密码(&P)："), this);
    label->setBuddy(txtIdpPwd->edit());
    // The box has a line of warnings below its edit: the label belongs to the edit.
    label->setContentsMargins(0, unit / 2, 0, 0);
    label->setAlignment(Qt::AlignRight | Qt::AlignTop);
    auto* password = new QHBoxLayout;
    password->addWidget(label);
    password->addWidget(txtIdpPwd, 1);

    chkCryptionStatus = named(new QCheckBox(this), "chkCryptionStatus");
    chkCryptionStatus->setAccessibleDescription(lblIllustration->text());
    pgbHandleState = named(new QProgressBar(this), "pgbHandleState");
    pgbHandleState->setAccessibleName(QStringLiteral("进度"));
    pgbHandleState->setRange(0, 100);
    QSizePolicy policy = pgbHandleState->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    pgbHandleState->setSizePolicy(policy);
    cmdCancel = named(new QPushButton(this), "cmdCancel");
    cmdCancel->setAutoDefault(false);
    auto* commands = new QHBoxLayout;
    commands->addWidget(pgbHandleState, 1);
    commands->addWidget(cmdCancel);

    QBoxLayout* layout = makeLayout();
    layout->addWidget(lblIllustration);
    layout->addLayout(password);
    layout->addWidget(chkCryptionStatus);
    layout->addLayout(commands);
}

void dlgColumnCryption::updateState() {
    const ColumnSwitch::State& state = m_logic.state();
    if (m_logic.isClosed()) {
        txtIdpPwd->wipe();
        accept();
        return;
    }
    chkCryptionStatus->setChecked(state.isOn);
    chkCryptionStatus->setText(state.caption);
    chkCryptionStatus->setEnabled(!state.isRunning);
    txtIdpPwd->setEnabled(!state.isRunning);
    pgbHandleState->setVisible(state.isRunning);
    pgbHandleState->setValue(state.percent);
    cmdCancel->setText(state.isRunning ? QStringLiteral("停止(&S)") : QStringLiteral("关闭(&C)"));
    cmdCancel->setEnabled(!state.isStopping);
}

void dlgColumnCryption::closeForm() {
    m_logic.close();
}

void dlgColumnCryption::reject() {
    m_logic.cmdCancel();
}

}  // namespace keeper
