// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/dlg_modify_secret.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "crypto/secure_wipe.h"
#include "guard/secret_strength.h"
#include "ui/widgets/key_box.h"
#include "ui/widgets/named.h"
#include "ui/widgets/strength_meter.h"

namespace keeper {
namespace {

using Field = SecretModification::Field;

constexpr int kLongestSecretTip = 100;
/// Beyond what any secret may have, so that one that is too long is told of and not cut.
constexpr int kLongestEntry = 128;

QLabel* labelOf(const QString& text, KeyBox* box) {
    auto* label = new QLabel(text, box->parentWidget());
    label->setBuddy(box->edit());
    // The box has a line of warnings below its edit: the label belongs to the edit.
    label->setContentsMargins(0, label->fontMetrics().height() / 2, 0, 0);
    label->setAlignment(Qt::AlignRight | Qt::AlignTop);
    return label;
}

}  // namespace

dlgModifySecret::dlgModifySecret(SecretModification& logic, const KeyboardState& keyboard)
    : SessionDialog("dlgModifySecret"), m_logic(logic), m_keyboard(keyboard) {
    setWindowTitle(m_logic.title());
    QBoxLayout* layout = makeLayout();
    layout->addWidget(buildFields());
    layout->addLayout(buildCommands());
    connect(txtNew1, &KeyBox::textChanged, this, &dlgModifySecret::measure);
    connect(cmdShowExplicitly, &QPushButton::clicked, this, [this] {
        m_logic.cmdShowExplicitly();
        updateState();
    });
    connect(cmdForget, &QPushButton::clicked, this, &dlgModifySecret::takeForget);
    connect(cmdOK, &QPushButton::clicked, this, &dlgModifySecret::takeOK);
    txtSecTip->setText(m_logic.tip());
    measure();
    updateState();
    txtOriginal->edit()->setFocus();
}

KeyBox* dlgModifySecret::makeBox(const char* name, const QString& what) {
    auto* box = new KeyBox(m_keyboard, what, this);
    box->setMaxLength(kLongestEntry);
    named(box->edit(), name);
    return box;
}

QWidget* dlgModifySecret::buildFields() {
    const bool isLoginKey = m_logic.p_KeyType() == SecretModification::KeyType::LoginKey;
    const QString what = isLoginKey ? QStringLiteral("密钥") : QStringLiteral("密码");
    auto* fields = new QWidget(this);
    auto* rows = new QFormLayout(fields);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
    txtOriginal = makeBox("txtOriginal", QStringLiteral("原") + what);
    txtNew1 = makeBox("txtNew1", QStringLiteral("新") + what);
    txtNew2 = makeBox("txtNew2", QStringLiteral("再次输入新") + what);
    txtNew1->setShowButtonVisible(false);
    txtNew2->setShowButtonVisible(false);
    txtOriginal->setMinimumWidth(fontMetrics().averageCharWidth() * 48);
    m_meter = new StrengthMeter(fields);
    txtSecTip = named(new QLineEdit(fields), "txtSecTip");
    txtSecTip->setAccessibleName(what + QStringLiteral("提示"));
    txtSecTip->setMaxLength(kLongestSecretTip);
    txtSecTip->setPlaceholderText(QStringLiteral("只有您自己看得懂的提示，可以不填"));
    auto* lblPwdLength = named(new QLabel(m_logic.lblPwdLength(), fields), "lblPwdLength");

    rows->addRow(labelOf(QStringLiteral("原%1(&R)：").arg(what), txtOriginal), txtOriginal);
    rows->addRow(labelOf(QStringLiteral("新%1(&N)：").arg(what), txtNew1), txtNew1);
    rows->addRow(labelOf(QStringLiteral("再次输入(&A)："), txtNew2), txtNew2);
    rows->addRow(QStringLiteral("强度："), m_meter);
    rows->addRow(QString(), lblPwdLength);
    rows->addRow(QStringLiteral("%1提示(&T)：").arg(what), txtSecTip);
    return fields;
}

QBoxLayout* dlgModifySecret::buildCommands() {
    cmdShowExplicitly = named(new QPushButton(this), "cmdShowExplicitly");
    cmdForget = named(new QPushButton(QStringLiteral("忘记密码..."), this), "cmdForget");
    cmdForget->setVisible(m_logic.p_KeyType() == SecretModification::KeyType::IndependentPassword);
    return makeCommands(QStringLiteral("确定(&O)"), QStringLiteral("取消(&C)"),
                        {cmdShowExplicitly, cmdForget});
}

void dlgModifySecret::updateState() {
    cmdShowExplicitly->setText(m_logic.showCaption());
    txtNew1->setShown(m_logic.isPlain());
    txtNew2->setEnabled(!m_logic.isPlain());
    if (m_logic.isPlain()) {
        txtNew2->wipe();
    }
    txtOriginal->setEnabled(!m_logic.isReset());
    cmdForget->setEnabled(!m_logic.isReset());
}

void dlgModifySecret::measure() {
    const SecretStrength strength = MeasureStrength(txtNew1->text());
    m_meter->setStrength(strength.percent(), strength.text());
}

void dlgModifySecret::takeOK() {
    // The texts share the boxes' own buffers, which the boxes wipe.
    const SecretModification::Verdict verdict =
        m_logic.cmdOK({txtOriginal->text(), txtNew1->text(), txtNew2->text(), txtSecTip->text()});
    if (verdict.isDone) {
        accept();
        return;
    }
    if (verdict.emptiesOriginal) {
        txtOriginal->wipe();
    }
    if (verdict.emptiesNew) {
        txtNew1->wipe();
        txtNew2->wipe();
    }
    focus(verdict.focus);
}

void dlgModifySecret::takeForget() {
    if (m_logic.cmdForget()) {
        wipeSecrets();
        updateState();
        focus(Field::New1);
    }
}

void dlgModifySecret::wipeSecrets() {
    for (KeyBox* box : {txtOriginal, txtNew1, txtNew2}) {
        box->wipe();
    }
}

void dlgModifySecret::focus(Field field) {
    switch (field) {
        case Field::Original:
            txtOriginal->edit()->setFocus();
            break;
        case Field::New1:
            txtNew1->edit()->setFocus();
            break;
        case Field::New2:
            txtNew2->edit()->setFocus();
            break;
        case Field::SecTip:
            txtSecTip->setFocus();
            break;
    }
}

void dlgModifySecret::done(int result) {
    wipeSecrets();
    SessionDialog::done(result);
}

}  // namespace keeper
