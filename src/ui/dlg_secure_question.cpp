// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/dlg_secure_question.h"

#include <QBoxLayout>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>

#include "guard/question_forms.h"
#include "ui/theme/icons.h"
#include "ui/widgets/key_box.h"
#include "ui/widgets/named.h"

namespace keeper {
namespace {

constexpr int kLongestQuestion = 100;
constexpr int kLongestAnswer = 100;

}  // namespace

dlgSecureQuestion::dlgSecureQuestion(QuestionSetting& setting, const KeyboardState& keyboard)
    : SessionDialog("dlgSecureQuestion"), m_setting(&setting), m_keyboard(keyboard) {
    setWindowTitle(QStringLiteral("设置安全问题"));
    buildSetting();
    connectSetting();
    markItems();
    lsbQuestions->setCurrentRow(m_setting->current() - 1);
    txtQuestion->setFocus();
}

dlgSecureQuestion::dlgSecureQuestion(QuestionAnswering& answering, const KeyboardState& keyboard)
    : SessionDialog("dlgSecureQuestion"), m_answering(&answering), m_keyboard(keyboard) {
    setWindowTitle(QStringLiteral("回答安全问题"));
    buildAnswering();
    connect(cmdOK, &QPushButton::clicked, this, &dlgSecureQuestion::takeAnswer);
    txtAnswer->edit()->setFocus();
}

KeyBox* dlgSecureQuestion::makeAnswerBox() {
    auto* box = new KeyBox(m_keyboard, QStringLiteral("答案"), this);
    named(box->edit(), "txtAnswer");
    box->setMaxLength(kLongestAnswer);
    box->setInputMethodAllowed(true);
    box->setMinimumWidth(fontMetrics().averageCharWidth() * 56);
    return box;
}

void dlgSecureQuestion::buildSetting() {
    QBoxLayout* layout = makeLayout();
    auto* halves = new QHBoxLayout;
    lsbQuestions = named(new QListWidget(this), "lsbQuestions");
    lsbQuestions->setAccessibleName(QStringLiteral("安全问题"));
    for (int number = 1; number <= SecureQuestions::kCount; ++number) {
        auto* row = new QListWidgetItem(QStringLiteral("问题%1").arg(number), lsbQuestions);
        row->setSizeHint(QSize(0, fontMetrics().height() * 7 / 4));
    }
    lsbQuestions->setFixedWidth(fontMetrics().averageCharWidth() * 20);
    halves->addWidget(lsbQuestions);
    halves->addWidget(buildItem(), 1);
    layout->addLayout(halves);
    auto* note = new QLabel(QStringLiteral("• 在切换问题时程序会自动缓存当前问题和答案\n"
                                           "• 如果要启用安全问题，那么您必须至少设置三个。\n"
                                           "• 仅当列级加密关闭时，安全问题才可用于重设独立密码。"),
                            this);
    note->setWordWrap(true);
    layout->addWidget(note);
    cmdClear = named(new QPushButton(QStringLiteral("清空当前问题和答案"), this), "cmdClear");
    layout->addLayout(makeCommands(QStringLiteral("全部完成并关闭对话框"),
                                   QStringLiteral("取消(&C)"), {cmdClear}));
}

QWidget* dlgSecureQuestion::buildItem() {
    auto* item = new QWidget(this);
    auto* rows = new QFormLayout(item);
    rows->setRowWrapPolicy(QFormLayout::WrapAllRows);
    txtQuestion = named(new QLineEdit(item), "txtQuestion");
    txtQuestion->setMaxLength(kLongestQuestion);
    txtQuestion->setAccessibleName(QStringLiteral("问题"));
    rows->addRow(QStringLiteral("问题(&Q)："), txtQuestion);
    txtAnswer = makeAnswerBox();
    txtAnswer->setShown(true);
    auto* label = new QLabel(QStringLiteral("答案(&A)："), item);
    label->setBuddy(txtAnswer->edit());
    rows->addRow(label, txtAnswer);
    return item;
}

void dlgSecureQuestion::connectSetting() {
    connect(lsbQuestions, &QListWidget::currentRowChanged, this, [this](int row) {
        m_setting->select(row + 1);
        showItem();
    });
    connect(txtQuestion, &QLineEdit::textEdited, this, [this](const QString& text) {
        m_setting->setQuestion(text);
        showItem();
        markItems();
    });
    connect(txtAnswer, &KeyBox::textEdited, this, [this] {
        m_setting->setAnswer(txtAnswer->text());
        markItems();
    });
    connect(cmdClear, &QPushButton::clicked, this, [this] {
        m_setting->cmdClear();
        showItem();
        markItems();
        txtQuestion->setFocus();
    });
    connect(cmdOK, &QPushButton::clicked, this, [this] {
        if (m_setting->cmdOK()) {
            accept();
        }
    });
}

void dlgSecureQuestion::showItem() {
    const QuestionSetting::Item& item = m_setting->item(m_setting->current());
    if (txtQuestion->text() != item.question) {
        txtQuestion->setText(item.question);
    }
    if (txtAnswer->text() != item.answer) {
        txtAnswer->setText(item.answer);
    }
    txtAnswer->setPlaceholderText(
        item.storedAnswer.isEmpty() ? QString() : QStringLiteral("已有答案；不填则保持不变"));
}

void dlgSecureQuestion::markItems() {
    for (int number = 1; number <= SecureQuestions::kCount; ++number) {
        const bool isEffective = m_setting->item(number).isEffective();
        QListWidgetItem* row = lsbQuestions->item(number - 1);
        row->setIcon(isEffective ? glyphIcon(Glyph::Check, IconTint::Good)
                                 : glyphIcon(Glyph::Question));
        row->setData(Qt::AccessibleDescriptionRole,
                     isEffective ? QStringLiteral("有效") : QStringLiteral("未设置"));
    }
}

void dlgSecureQuestion::buildAnswering() {
    QBoxLayout* layout = makeLayout();
    layout->addWidget(new QLabel(QStringLiteral("以下必答："), this));
    // Without a buddy: that would take "&" in the person's question for the mark of a key.
    lblQuestion = named(new QLabel(this), "lblQuestion");
    lblQuestion->setTextFormat(Qt::PlainText);
    lblQuestion->setWordWrap(true);
    layout->addWidget(lblQuestion);
    txtAnswer = makeAnswerBox();
    showQuestion();
    layout->addWidget(txtAnswer);
    layout->addLayout(
        makeCommands(QStringLiteral("确定并切换到下一个问题"), QStringLiteral("放弃离开")));
}

void dlgSecureQuestion::showQuestion() {
    lblQuestion->setText(m_answering->lblQuestion());
    txtAnswer->edit()->setAccessibleName(QStringLiteral("答案 ") + lblQuestion->text());
}

void dlgSecureQuestion::takeAnswer() {
    const QuestionAnswering::Outcome outcome = m_answering->cmdOK(txtAnswer->text());
    if (outcome == QuestionAnswering::Outcome::Passed) {
        accept();
        return;
    }
    txtAnswer->wipe();
    showQuestion();
    txtAnswer->edit()->setFocus();
}

void dlgSecureQuestion::done(int result) {
    txtAnswer->wipe();
    if (m_setting != nullptr) {
        m_setting->wipe();
    }
    SessionDialog::done(result);
}

}  // namespace keeper
