// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/dlg_authority.h"

#include <QBoxLayout>
#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QTimer>

#include "ui/widgets/named.h"

namespace keeper {
namespace {

constexpr int kColumns = 2;

}  // namespace

dlgAuthority::dlgAuthority(Authorities& logic) : SessionDialog("dlgAuthority"), m_logic(logic) {
    setWindowTitle(QStringLiteral("权限管理"));
    QBoxLayout* layout = makeLayout();
    layout->addWidget(buildBoxes());
    auto* cmdAllYes = named(new QPushButton(QStringLiteral("全选(&Y)"), this), "cmdAllYes");
    auto* cmdAllNo = named(new QPushButton(QStringLiteral("全否(&N)"), this), "cmdAllNo");
    layout->addLayout(makeCommands(QStringLiteral("确定(&O)"), QStringLiteral("取消(&C)"),
                                   {cmdAllYes, cmdAllNo}));
    connect(cmdAllYes, &QPushButton::clicked, this, [this] {
        m_logic.cmdAllYes();
        showChecks();
    });
    connect(cmdAllNo, &QPushButton::clicked, this, [this] {
        m_logic.cmdAllNo();
        showChecks();
    });
    connect(cmdOK, &QPushButton::clicked, this, [this] {
        if (m_logic.cmdOK()) {
            accept();
        }
    });
    showChecks();
}

QGroupBox* dlgAuthority::buildBoxes() {
    auto* frame = new QGroupBox(QStringLiteral("以下活动需要验证独立密码"), this);
    auto* grid = new QGridLayout(frame);
    grid->setHorizontalSpacing(fontMetrics().height() * 2);
    constexpr int kRows = Authorities::kNamed / kColumns;
    for (int number = 1; number <= Authorities::kCount; ++number) {
        const QString caption = Authorities::caption(number);
        auto* box = new QCheckBox(frame);
        box->setObjectName(QStringLiteral("chkAuthority%1").arg(number));
        chkAuthority.at(static_cast<std::size_t>(number - 1)) = box;
        connect(box, &QCheckBox::clicked, this,
                [this, number](bool isOn) { m_logic.check(number, isOn); });
        if (caption.isEmpty()) {
            // A spare one, which follows the two buttons and has nothing to tell.
            box->hide();
            continue;
        }
        // The log names the numbers.
        auto* label = new QLabel(QStringLiteral("%1.").arg(number), frame);
        label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        label->setFixedWidth(fontMetrics().horizontalAdvance(QStringLiteral("00.")));
        box->setText(caption);
        box->setToolTip(Authorities::toolTip(number));
        box->setAccessibleDescription(label->text() + box->toolTip());
        auto* cell = new QHBoxLayout;
        cell->addWidget(label);
        cell->addWidget(box, 1);
        grid->addLayout(cell, (number - 1) % kRows, (number - 1) / kRows);
    }
    return frame;
}

void dlgAuthority::showChecks() {
    for (int number = 1; number <= Authorities::kCount; ++number) {
        chkAuthority.at(static_cast<std::size_t>(number - 1))
            ->setChecked(m_logic.isChecked(number));
    }
}

void dlgAuthority::showEvent(QShowEvent* event) {
    SessionDialog::showEvent(event);
    // Behind the first drawing, so that the warning stands over the form.
    QTimer::singleShot(0, this, [this] { m_logic.activate(); });
}

}  // namespace keeper
