// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/dlg_authentication.h"

#include <QEvent>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "crypto/secure_wipe.h"
#include "guard/authentication.h"
#include "ui/theme/colors.h"
#include "ui/theme/icons.h"
#include "ui/widgets/key_box.h"
#include "ui/widgets/named.h"

namespace keeper {
namespace {

constexpr int kLongestIndependentPassword = 32;

}  // namespace

dlgAuthentication::dlgAuthentication(Authentication& logic, const KeyboardState& keyboard)
    : SessionDialog("dlgAuthentication"), m_logic(logic), m_keyboard(keyboard) {
    build();
    connect(cmdOK, &QPushButton::clicked, this, [this] {
        QString entry = txtSecret->text();
        // Shared with the box, which is empty by then: the last owner wipes.
        const WipeGuard wipe(entry);
        m_logic.cmdOK(entry);
    });
    m_logic.changed = [this] { updateState(); };
    m_logic.entryRefused = [this] {
        txtSecret->wipe();
        txtSecret->edit()->setFocus();
    };
    updateState();
}

dlgAuthentication::~dlgAuthentication() {
    m_logic.changed = nullptr;
    m_logic.entryRefused = nullptr;
}

void dlgAuthentication::run(System& system) {
    if (!m_logic.isClosed()) {
        showModal(system);
    }
    m_logic.cmdCancel();
}

void dlgAuthentication::build() {
    const int unit = fontMetrics().height();
    imgFingerprint = named(new QLabel(this), "imgFingerprint");
    imgFingerprint->setAccessibleName(QStringLiteral("指纹"));
    auto* upper = new QHBoxLayout;
    upper->setSpacing(unit);
    upper->addWidget(imgFingerprint, 0, Qt::AlignTop);
    upper->addWidget(buildFields(), 1);

    QBoxLayout* layout = makeLayout();
    layout->addLayout(upper);
    layout->addLayout(makeCommands(QStringLiteral("确定(&O)"), QStringLiteral("取消(&C)")));
}

QWidget* dlgAuthentication::buildFields() {
    auto* fields = new QWidget(this);
    auto* rows = new QFormLayout(fields);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    txtUserName = named(new QLineEdit(fields), "txtUserName");
    txtUserName->setAccessibleName(QStringLiteral("用户名"));
    txtUserName->setReadOnly(true);
    txtUserName->setFocusPolicy(Qt::ClickFocus);
    txtUserName->setMinimumWidth(fontMetrics().averageCharWidth() * 36);
    rows->addRow(QStringLiteral("用户名："), txtUserName);

    txtSecret = new KeyBox(m_keyboard, m_logic.state().title, fields);
    txtSecret->setMaxLength(kLongestIndependentPassword);
    named(txtSecret->edit(), "txtSecret");
    lblSecret = named(new QLabel(fields), "lblSecret");
    lblSecret->setBuddy(txtSecret->edit());
    // The box has a line of warnings below its edit: the label belongs to the edit.
    lblSecret->setContentsMargins(0, fontMetrics().height() / 2, 0, 0);
    lblSecret->setAlignment(Qt::AlignRight | Qt::AlignTop);
    rows->addRow(lblSecret, txtSecret);

    lblFingerprint = named(new QLabel(fields), "lblFingerprint");
    lblFingerprint->setMinimumWidth(
        fontMetrics().horizontalAdvance(QStringLiteral("没有读清指纹，请把手指放正后再试一次")));
    rows->addRow(lblFingerprint);
    return fields;
}

void dlgAuthentication::updateState() {
    const Authentication::State& state = m_logic.state();
    if (m_logic.isClosed()) {
        txtSecret->wipe();
        accept();
        return;
    }
    setWindowTitle(state.title);
    txtUserName->setText(state.userName);
    lblSecret->setText(state.label);
    txtSecret->setHint(state.hint);
    lblSecret->setVisible(!state.isFingerMode);
    txtSecret->setVisible(!state.isFingerMode);
    cmdOK->setVisible(!state.isFingerMode);
    lblFingerprint->setVisible(state.isFingerMode);
    imgFingerprint->setVisible(state.isFingerShown);
    if (state.isFingerMode) {
        cmdCancel->setFocus();
    } else {
        txtSecret->edit()->setFocus();
    }
    showFinger();
}

void dlgAuthentication::showFinger() {
    const Authentication::State& state = m_logic.state();
    const int side = fontMetrics().height() * 3;
    imgFingerprint->setPixmap(
        glyphIcon(Glyph::Fingerprint, state.isFingerRefused ? IconTint::Danger : IconTint::Accent)
            .pixmap(QSize(side, side), devicePixelRatioF()));
    QPalette colors = palette();
    if (state.isFingerRefused) {
        colors.setColor(QPalette::WindowText,
                        themeColor(ThemeColor::Danger, isDarkPalette(colors)));
    }
    lblFingerprint->setPalette(colors);
    lblFingerprint->setText(state.fingerText);
}

void dlgAuthentication::changeEvent(QEvent* event) {
    QDialog::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && lblFingerprint != nullptr) {
        showFinger();
    }
}

void dlgAuthentication::reject() {
    m_logic.cmdCancel();
}

}  // namespace keeper
