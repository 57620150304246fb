// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/dlg_manage_secret.h"

#include <QBoxLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "ui/widgets/named.h"
#include "ui/widgets/number_box.h"

namespace keeper {
namespace {

/// Texts and names of a row of the periods, in the order of the fields.
struct PeriodRow {
    const char16_t* since;
    const char16_t* forces;
    const char* box;
    const char* prediction;
};

constexpr std::array kPeriods{
    PeriodRow{u"自最近修改登录密钥之日算起", u"强制修改登录密钥；", "txtLgnKeyModifyDays",
              "txtLgnKeyPredicate"},
    PeriodRow{u"自最近修改独立密码之日算起", u"强制修改独立密码；", "txtIdpPwdModifyDays",
              "txtIdpPwdPredicate"},
    PeriodRow{u"自最近验证或设置安全问题之日算起", u"强制验证安全问题；", "txtSQUpdateDays",
              "txtSQPredicate"},
};

}  // namespace

dlgManageSecret::dlgManageSecret(SecretManagement& logic)
    : SessionDialog("dlgManageSecret"), m_logic(logic) {
    setWindowTitle(QStringLiteral("管理密码与问题"));
    QBoxLayout* layout = makeLayout();
    layout->addWidget(buildPeriods());
    layout->addWidget(buildChances());
    auto* cmdForceUpdate =
        named(new QPushButton(QStringLiteral("强制更新安全问题(&U)..."), this), "cmdForceUpdate");
    cmdForceUpdate->setToolTip(QStringLiteral("现在就验证全部安全问题，并重新计算期限"));
    layout->addLayout(
        makeCommands(QStringLiteral("确定(&O)"), QStringLiteral("取消(&C)"), {cmdForceUpdate}));
    connect(cmdForceUpdate, &QPushButton::clicked, this, [this] {
        if (m_logic.forceUpdate()) {
            showPredictions();
        }
    });
    connect(cmdOK, &QPushButton::clicked, this, [this] {
        if (isFinished() && m_logic.cmdOK()) {
            accept();
        }
    });
    showPredictions();
}

QGroupBox* dlgManageSecret::buildPeriods() {
    auto* frame = new QGroupBox(QStringLiteral("有效期（0天表示不提醒）"), this);
    auto* grid = new QGridLayout(frame);
    for (const Field field :
         {Field::LgnKeyModifyDays, Field::IdpPwdModifyDays, Field::SQUpdateDays}) {
        addPeriod(grid, field);
    }
    return frame;
}

void dlgManageSecret::addPeriod(QGridLayout* grid, Field field) {
    const auto index = static_cast<std::size_t>(field);
    const PeriodRow& texts = kPeriods.at(index);
    const QString since = QString::fromUtf16(texts.since);
    const QString forces = QString::fromUtf16(texts.forces);
    auto* day = named(new QLineEdit(this), texts.prediction);
    day->setAccessibleName(forces.chopped(1) + QStringLiteral("的日期"));
    day->setReadOnly(true);
    day->setFocusPolicy(Qt::ClickFocus);
    day->setMinimumWidth(fontMetrics().horizontalAdvance(QStringLiteral("0000年00月00日，星期三")) +
                         fontMetrics().height() * 2);
    m_predictions.at(index) = day;
    int column = 0;
    const int row = static_cast<int>(index);
    const auto add = [&](QWidget* widget) { grid->addWidget(widget, row, column++); };
    add(new QLabel(since, this));
    add(makeBox(field, texts.box, since + QStringLiteral("的天数")));
    add(new QLabel(QStringLiteral("天后，"), this));
    add(new QLabel(QStringLiteral("将于"), this));
    add(day);
    add(new QLabel(forces, this));
    add(new QLabel(QStringLiteral("宽限期：3天"), this));
}

QGroupBox* dlgManageSecret::buildChances() {
    auto* frame = new QGroupBox(QStringLiteral("允许的尝试次数"), this);
    auto* row = new QHBoxLayout(frame);
    const auto add = [&](Field field, const char* name, const QString& what) {
        auto* label = new QLabel(what + QStringLiteral("："), this);
        row->addWidget(label);
        row->addWidget(makeBox(field, name, what));
        row->addSpacing(fontMetrics().height() * 2);
    };
    add(Field::LgnKeyChances, "txtLgnKeyChances0", QStringLiteral("登录密钥尝试次数"));
    add(Field::IdpPwdChances, "txtIdpPwdChances0", QStringLiteral("独立密码尝试次数"));
    row->addStretch();
    return frame;
}

NumberBox* dlgManageSecret::makeBox(Field field, const char* name, const QString& what) {
    auto* box = named(new NumberBox(this), name);
    const SecretManagement::Range range = SecretManagement::range(field);
    box->setRange(range.least, range.most);
    box->setValue(m_logic.value(field));
    box->setAccessibleName(what);
    m_boxes.at(static_cast<std::size_t>(field)) = box;
    connect(box, &NumberBox::typed, this,
            [this, field](const QString& text) { take(field, text); });
    connect(box, &NumberBox::leftUnfinished, this, [this, field] { m_logic.refuse(field); });
    return box;
}

void dlgManageSecret::take(Field field, const QString& text) {
    if (m_logic.type(field, text) == SecretManagement::Typed::Refused) {
        // First the box, which then has nothing to correct when the message takes the focus.
        m_boxes.at(static_cast<std::size_t>(field))->setValue(m_logic.value(field));
        m_logic.refuse(field);
        return;
    }
    showPredictions();
}

bool dlgManageSecret::isFinished() {
    for (std::size_t i = 0; i < m_boxes.size(); ++i) {
        NumberBox* box = m_boxes.at(i);
        const bool isRefused = !box->hasAcceptableInput() && !box->text().isEmpty();
        box->setValue(m_logic.value(static_cast<Field>(i)));
        if (isRefused) {
            m_logic.refuse(static_cast<Field>(i));
            box->setFocus();
            box->selectAll();
            return false;
        }
    }
    return true;
}

void dlgManageSecret::showPredictions() {
    for (std::size_t i = 0; i < m_predictions.size(); ++i) {
        m_predictions.at(i)->setText(m_logic.prediction(static_cast<Field>(i)));
    }
}

}  // namespace keeper
