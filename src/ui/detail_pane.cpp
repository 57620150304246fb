// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/detail_pane.h"

#include <QAction>
#include <QButtonGroup>
#include <QEvent>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QSignalBlocker>
#include <QStyle>

#include "ui/theme/colors.h"
#include "ui/theme/icons.h"
#include "ui/widgets/caption.h"
#include "ui/widgets/name_box.h"
#include "ui/widgets/named.h"
#include "workspace/edit_pane.h"
#include "workspace/entry_disposal.h"

namespace keeper {
namespace {

QLineEdit* lineField(const char* name, const QString& accessibleName) {
    auto* edit = named(new QLineEdit, name);
    edit->setAccessibleName(accessibleName);
    return edit;
}

NameBox* nameBox(QComboBox* box) {
    return static_cast<NameBox*>(box);
}

QComboBox* listField(const char* name, const QString& accessibleName) {
    auto* box = named(new NameBox, name);
    box->setEditable(true);
    box->setInsertPolicy(QComboBox::NoInsert);
    // A completer would turn what is being typed into somebody else's password name.
    box->setCompleter(nullptr);
    box->setAccessibleName(accessibleName);
    box->lineEdit()->setAccessibleName(accessibleName);
    box->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    box->setMinimumContentsLength(12);
    return box;
}

/// Display only: looks like text, and can still be selected and read out.
QLineEdit* displayField(const char* name, const QString& accessibleName) {
    QLineEdit* edit = lineField(name, accessibleName);
    edit->setReadOnly(true);
    edit->setFrame(false);
    edit->setFocusPolicy(Qt::ClickFocus);
    QPalette palette = edit->palette();
    palette.setBrush(QPalette::Base, Qt::transparent);
    edit->setPalette(palette);
    return edit;
}

void setTextKeepingCursor(QLineEdit* edit, const QString& text) {
    if (edit->text() != text) {
        edit->setText(text);
        edit->setCursorPosition(0);
    }
}

Glyph locationGlyph(const QString& picture) {
    if (picture == QLatin1String("copy")) {
        return Glyph::Copy;
    }
    return picture == QLatin1String("paste") ? Glyph::Paste : Glyph::FolderOpen;
}

}  // namespace

DetailPane::DetailPane(EditPane& logic, EntryDisposal& disposal, QWidget* parent)
    : QWidget(parent),
      m_logic(logic),
      m_disposal(disposal),
      txtNo(lineField("txtNo", QStringLiteral("编号"))),
      txtTitle(lineField("txtTitle", QStringLiteral("标题"))),
      lblLocation(named(new QLabel, "lblLocation")),
      txtLocation(lineField("txtLocation", QStringLiteral("位置"))),
      cmdLocation(named(new QToolButton, "cmdLocation")),
      Label2(named(new QLabel, "Label2")),
      ComboBox2(listField("ComboBox2", QStringLiteral("号码"))),
      Command2(named(new QToolButton, "Command2")),
      lblPassword(named(new QLabel, "lblPassword")),
      cboPassword(listField("cboPassword", QStringLiteral("密码"))),
      cmdPassword(named(new QToolButton, "cmdPassword")),
      m_reveal(
          cboPassword->lineEdit()->addAction(glyphIcon(Glyph::Eye), QLineEdit::TrailingPosition)),
      lblRemarks(named(new QLabel, "lblRemarks")),
      txtRemarks(named(new QPlainTextEdit, "txtRemarks")),
      txtModPwdDays(lineField("txtModPwdDays", QStringLiteral("改密提醒周期，天"))),
      txtCreateDate(displayField("txtCreateDate", QStringLiteral("创建日期"))),
      txtRecentUpdate(displayField("txtRecentUpdate", QStringLiteral("最近更新"))),
      lblUsedTimes(named(new QLabel, "lblUsedTimes")),
      chkEffective(named(new QCheckBox(QStringLiteral("有效")), "chkEffective")),
      chkEncrypted(named(new QCheckBox, "chkEncrypted")),
      m_form(new QFormLayout(this)) {
    setObjectName(QStringLiteral("picDetail"));
    buildFields();
    connectFields();
    const std::array<QWidget*, 12> order{txtTitle,      txtNo,      txtLocation,  cmdLocation,
                                         ComboBox2,     Command2,   cboPassword,  cmdPassword,
                                         txtModPwdDays, txtRemarks, chkEffective, chkEncrypted};
    for (std::size_t i = 1; i < order.size(); ++i) {
        setTabOrder(order.at(i - 1), order.at(i));
    }
}

QWidget* DetailPane::buildHead() {
    auto* head = new QWidget;
    auto* row = new QHBoxLayout(head);
    row->setContentsMargins(0, 0, 0, 0);
    const std::array captions{QStringLiteral("网络对象"), QStringLiteral("应用程序"),
                              QStringLiteral("用户文件")};
    constexpr std::array glyphs{Glyph::Website, Glyph::Application, Glyph::File};
    for (std::size_t i = 0; i < optType.size(); ++i) {
        auto* button = named(new QToolButton, "optType");
        button->setText(captions.at(i));
        button->setIcon(glyphIcon(glyphs.at(i)));
        button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
        button->setCheckable(true);
        button->setAutoRaise(true);
        button->setFocusPolicy(Qt::NoFocus);
        button->setToolTip(QStringLiteral("条目的类别由编号决定"));
        // An indicator: a click only shows again what is.
        connect(button, &QToolButton::clicked, this, [this] { show(m_shown); });
        row->addWidget(button);
        optType.at(i) = button;
    }
    row->addStretch();
    chkEffective->setToolTip(QStringLiteral("废弃的条目不能被使用和编辑"));
    row->addWidget(chkEffective);
    return head;
}

QWidget* DetailPane::beside(QWidget* field, QToolButton* button) {
    auto* pair = new QWidget;
    auto* row = new QHBoxLayout(pair);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(field, 1);
    row->addWidget(button);
    button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    return pair;
}

QWidget* DetailPane::buildDates() {
    auto* dates = new QWidget;
    auto* rows = new QFormLayout(dates);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setVerticalSpacing(0);
    rows->addRow(QStringLiteral("创建日期："), txtCreateDate);
    rows->addRow(QStringLiteral("最近更新："), txtRecentUpdate);
    rows->addRow(QStringLiteral("使用次数："), lblUsedTimes);
    lblUsedTimes->setAccessibleName(QStringLiteral("使用次数"));
    return dates;
}

void DetailPane::buildFields() {
    const int margin = style()->pixelMetric(QStyle::PM_LayoutLeftMargin) * 2;
    m_form->setContentsMargins(margin, margin / 2, margin, margin / 2);
    m_form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    m_form->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_form->addRow(buildHead());
    QFont large = txtTitle->font();
    large.setPointSizeF(large.pointSizeF() * 1.25);
    txtTitle->setFont(large);
    txtTitle->setMaxLength(EditPane::kMaxTitle);
    m_form->addRow(QStringLiteral("标题(&T)："), txtTitle);
    m_form->addRow(QStringLiteral("编号："), txtNo);
    lblLocation->setBuddy(txtLocation);
    m_form->addRow(lblLocation, beside(txtLocation, cmdLocation));
    Label2->setBuddy(ComboBox2);
    m_form->addRow(Label2, beside(ComboBox2, Command2));
    lblPassword->setBuddy(cboPassword);
    m_form->addRow(lblPassword, beside(cboPassword, cmdPassword));
    txtModPwdDays->setToolTip(QStringLiteral("取值范围：0~999；0表示不提醒改密"));
    txtModPwdDays->setMaxLength(9);
    m_form->addRow(QStringLiteral("改密提醒(天)："), txtModPwdDays);
    lblRemarks->setBuddy(txtRemarks);
    txtRemarks->setToolTip(QStringLiteral("建议不使用回车换行符和半角逗号、半角双引号"));
    txtRemarks->setTabChangesFocus(true);
    txtRemarks->setAccessibleName(QStringLiteral("备注"));
    m_form->addRow(lblRemarks, txtRemarks);
    m_form->addRow(QString(), chkEncrypted);
    m_form->addRow(buildDates());
    m_reveal->setToolTip(QStringLiteral("显示或隐藏正在输入的密码"));
    m_reveal->setObjectName(QStringLiteral("revealPassword"));
}

void DetailPane::connectFields() {
    const auto edited = [this](QLineEdit* edit, PaneField field) {
        connect(edit, &QLineEdit::textEdited, this,
                [this, field](const QString& text) { m_logic.editField(field, text); });
    };
    edited(txtNo, PaneField::No);
    edited(txtTitle, PaneField::Title);
    edited(txtLocation, PaneField::Location);
    edited(txtModPwdDays, PaneField::ModPwdDays);
    connect(txtRemarks, &QPlainTextEdit::textChanged, this, [this] {
        if (!m_isShowing) {
            m_logic.editField(PaneField::Remarks, txtRemarks->toPlainText());
        }
    });
    connect(ComboBox2->lineEdit(), &QLineEdit::textEdited, this, [this](const QString& text) {
        m_logic.typeNumber(nameBox(ComboBox2)->takeEdit(m_shown.ComboBox2, text));
    });
    connect(ComboBox2, &QComboBox::textActivated, this,
            [this](const QString& text) { m_logic.chooseNumberName(text); });
    connect(cboPassword->lineEdit(), &QLineEdit::textEdited, this, [this](const QString& text) {
        m_logic.typePassword(nameBox(cboPassword)->takeEdit(m_shown.cboPassword, text));
    });
    connect(cboPassword, &QComboBox::textActivated, this,
            [this](const QString& text) { m_logic.choosePasswordName(text); });
    connect(chkEffective, &QCheckBox::clicked, this, [this] { m_disposal.chkEffective_Click(); });
    // It tells what the file is; a click cannot make it so.
    connect(chkEncrypted, &QCheckBox::clicked, this, [this] { show(m_shown); });
    connect(m_reveal, &QAction::triggered, this, [this] {
        m_isPasswordRevealed = !m_isPasswordRevealed;
        maskTypedPassword();
    });
}

void DetailPane::show(const EditPaneState& state) {
    m_isShowing = true;
    m_shown = state;
    for (std::size_t i = 0; i < optType.size(); ++i) {
        optType.at(i)->setChecked(static_cast<int>(i) == state.p_optType);
    }
    setTextKeepingCursor(txtNo, state.txtNo);
    setTextKeepingCursor(txtTitle, state.txtTitle);
    setTextKeepingCursor(txtLocation, state.txtLocation);
    setTextKeepingCursor(txtModPwdDays, state.txtModPwdDays);
    setTextKeepingCursor(txtCreateDate, state.txtCreateDate);
    setTextKeepingCursor(txtRecentUpdate, state.txtRecentUpdate);
    if (txtRemarks->toPlainText() != state.txtRemarks) {
        txtRemarks->setPlainText(state.txtRemarks);
    }
    lblUsedTimes->setText(state.lblUsedTimes);
    chkEffective->setChecked(state.chkEffective);
    chkEncrypted->setChecked(state.chkEncrypted);
    showBoxes(state);
    showControls(state);
    showEditability(state);
    showColours();
    m_isShowing = false;
    if (state.focus.serial != m_focusSerial) {
        m_focusSerial = state.focus.serial;
        moveFocus(state.focus);
    }
}

void DetailPane::showBoxes(const EditPaneState& state) {
    const auto fill = [](QComboBox* box, const QStringList& names, const QString& text) {
        const QSignalBlocker blocker(box);
        if (box->count() != names.size() || box->property("names").toStringList() != names) {
            const QString typed = box->currentText();
            box->clear();
            box->addItems(names);
            box->setProperty("names", names);
            box->setEditText(typed);
        }
        if (box->currentText() != text) {
            box->setCurrentIndex(
                box->findText(text, Qt::MatchFixedString | Qt::MatchCaseSensitive));
            nameBox(box)->present(text);
        }
    };
    // A digest has no name to choose.
    fill(ComboBox2, state.p_optType == 2 ? QStringList() : state.numberNames, state.ComboBox2);
    fill(cboPassword, state.passwordNames, state.cboPassword);
    if (state.cboPassword.isEmpty() || !state.areFieldsEditable) {
        m_isPasswordRevealed = false;
    }
    maskTypedPassword();
}

/// What is typed is a secret; a name that was chosen is none.
void DetailPane::maskTypedPassword() {
    const QString& text = m_shown.cboPassword;
    const bool isSecret = m_shown.areFieldsEditable && !text.isEmpty() &&
                          !nameBox(cboPassword)->isIndicating() &&
                          !m_shown.passwordNames.contains(text);
    QLineEdit* edit = cboPassword->lineEdit();
    edit->setEchoMode(isSecret && !m_isPasswordRevealed ? QLineEdit::Password : QLineEdit::Normal);
    m_reveal->setVisible(isSecret);
    m_reveal->setIcon(glyphIcon(m_isPasswordRevealed ? Glyph::EyeOff : Glyph::Eye));
}

void DetailPane::showControls(const EditPaneState& state) {
    const auto caption = [](QLabel* label, const PaneControl& control) {
        label->setText(control.caption.endsWith(u'：') ? control.caption : control.caption + u'：');
        label->setToolTip(control.toolTip);
    };
    const QString later = QStringLiteral("%1\n此功能将在以后的版本中提供");
    const auto button = [&later](QToolButton* tool, const PaneControl& control) {
        tool->setText(control.caption);
        tool->setAccessibleName(control.caption.isEmpty() ? control.toolTip
                                                          : plainCaption(control.caption));
        // What uses an entry is not carried out yet.
        tool->setToolTip(later.arg(control.toolTip));
        tool->setEnabled(false);
    };
    caption(lblLocation, state.lblLocation);
    caption(Label2, state.Label2);
    caption(lblPassword, state.lblPassword);
    caption(lblRemarks, state.lblRemarks);
    txtLocation->setAccessibleName(plainCaption(state.lblLocation.caption));
    ComboBox2->setAccessibleName(plainCaption(state.Label2.caption));
    button(Command2, state.Command2);
    button(cmdPassword, state.cmdPassword);
    button(cmdLocation, state.cmdLocation);
    cmdLocation->setIcon(glyphIcon(locationGlyph(state.cmdLocationPicture)));
    chkEncrypted->setVisible(state.isChkEncryptedVisible);
    chkEncrypted->setText(state.chkEncryptedCaption.isEmpty() ? QStringLiteral("已加密")
                                                              : state.chkEncryptedCaption);
}

void DetailPane::showEditability(const EditPaneState& state) {
    const bool isReader = !state.areFieldsEditable;
    for (QLineEdit* edit : {txtTitle, txtLocation, txtModPwdDays}) {
        edit->setReadOnly(isReader);
    }
    txtNo->setReadOnly(!state.isTxtNoEditable);
    txtRemarks->setReadOnly(isReader);
    for (QComboBox* box : {ComboBox2, cboPassword}) {
        box->lineEdit()->setReadOnly(isReader);
    }
    chkEffective->setEnabled(state.isChkEffectiveUsable);
    chkEncrypted->setEnabled(!isReader);
}

void DetailPane::showColours() {
    QPalette palette = this->palette();
    if (m_shown.locationColour != LocationColour::Window) {
        const bool isDead = m_shown.locationColour == LocationColour::Dead;
        palette.setColor(QPalette::Base,
                         QColor::fromRgb(isDead ? kDeadLocationRgb : kThemeLocationRgb));
        palette.setColor(QPalette::Text, Qt::black);
    }
    txtLocation->setPalette(palette);
}

void DetailPane::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && m_form != nullptr) {
        showColours();
    }
}

QWidget* DetailPane::fieldWidget(PaneField field) const {
    switch (field) {
        case PaneField::No:
            return txtNo;
        case PaneField::Title:
            return txtTitle;
        case PaneField::Location:
            return txtLocation;
        case PaneField::Number:
            return ComboBox2;
        case PaneField::Password:
            return cboPassword;
        case PaneField::Remarks:
            return txtRemarks;
        case PaneField::ModPwdDays:
            return txtModPwdDays;
        case PaneField::None:
            break;
    }
    return nullptr;
}

void DetailPane::moveFocus(const FocusRequest& request) {
    QWidget* widget = fieldWidget(request.field);
    if (widget == nullptr) {
        return;
    }
    widget->setFocus(Qt::OtherFocusReason);
    if (auto* edit = qobject_cast<QLineEdit*>(widget); edit != nullptr && request.selectAll) {
        edit->selectAll();
    }
}

}  // namespace keeper
