// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/widgets/session_dialog.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/system.h"
#include "ui/theme/icons.h"
#include "ui/widgets/named.h"

namespace keeper {

SessionDialog::SessionDialog(const char* name) : QDialog(QApplication::activeWindow()) {
    setObjectName(QString::fromLatin1(name));
    setWindowIcon(programIcon());
}

bool SessionDialog::run(System& system) {
    // What waited behind a box that the locking has closed still goes on, and may come to a form.
    return !system.p_isLocked() && showModal(system);
}

bool SessionDialog::showModal(System& system) {
    system.ManageForms(*this, true);
    const bool isAccepted = exec() == QDialog::Accepted;
    system.ManageForms(*this, false);
    return isAccepted;
}

void SessionDialog::activateForm() {
    raise();
    activateWindow();
}

QBoxLayout* SessionDialog::makeLayout() {
    const int unit = fontMetrics().height();
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(unit, unit, unit, unit);
    layout->setSpacing(unit * 2 / 3);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    return layout;
}

QBoxLayout* SessionDialog::makeCommands(const QString& okText, const QString& cancelText,
                                        std::initializer_list<QPushButton*> others) {
    auto* row = new QHBoxLayout;
    for (QPushButton* other : others) {
        other->setAutoDefault(false);
        row->addWidget(other);
    }
    cmdOK = named(new QPushButton(okText, this), "cmdOK");
    cmdOK->setDefault(true);
    cmdCancel = named(new QPushButton(cancelText, this), "cmdCancel");
    cmdCancel->setAutoDefault(false);
    connect(cmdCancel, &QPushButton::clicked, this, &QDialog::reject);
    row->addStretch();
    row->addWidget(cmdOK);
    row->addWidget(cmdCancel);
    return row;
}

}  // namespace keeper
