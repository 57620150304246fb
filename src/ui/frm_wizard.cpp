// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/frm_wizard.h"

#include <QApplication>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QStackedWidget>
#include <QVBoxLayout>

#include "app/program_info.h"
#include "guard/secret_strength.h"
#include "guard/wizard.h"
#include "ui/theme/icons.h"
#include "ui/widgets/key_box.h"
#include "ui/widgets/key_edit.h"
#include "ui/widgets/named.h"
#include "ui/widgets/strength_meter.h"

namespace keeper {
namespace {

constexpr int kLoginKeyPage = 1;
constexpr int kLastPage = 3;
constexpr int kLongestTip = 100;

QString layersText() {
    return QStringLiteral(
        "请注意管理器的保护机制：\n"
        "• 登录密钥无法找回。请把备份另存到私人文件夹以外的地方。\n"
        "• 登录密钥连续输错达到上限（初始为10次）后，本机24小时内禁止登录。\n"
        "• 数据库被伪造的密钥打开、被非法修改，或在限定之外的机器上登录时，"
        "会连同私人文件夹（包括其中的备份）一起被紧急销毁。\n"
        "• 本机从未打开过的数据库无法预先核对密钥，输错一次就会被销毁，因此登录前会先询问。\n"
        "• 更改登录密钥之前的备份，以及在其它机器上改过密钥的数据库，"
        "在本机核对的是另一个密钥，也可能因此被销毁。打开前请先另存一份。\n"
        "• 数据库的内容已损坏时，加密文件会被删除，只能用另存的备份恢复。\n"
        "• 系统时间早于上次登录时拒绝登录，校准后即可。\n"
        "• 数据库与本机绑定；在其它机器上只能在有效期内使用。");
}

}  // namespace

frmWizard::frmWizard(Wizard& wizard, const KeyboardState& keyboard, QWidget* parent)
    : QDialog(parent), m_wizard(wizard), m_keyboard(keyboard) {
    setObjectName(QStringLiteral("frmWizard"));
    setWindowTitle(QStringLiteral("新建用户 - %1").arg(programTitle()));
    setWindowIcon(programIcon());
    const int unit = fontMetrics().height();

    fraWizard = named(new QGroupBox(this), "fraWizard");
    m_pages = new QStackedWidget(fraWizard);
    m_pages->addWidget(buildNamePage());
    m_pages->addWidget(buildSecretPage(kLoginKeyPage));
    m_pages->addWidget(buildSecretPage(kLoginKeyPage + 1));
    m_pages->addWidget(buildLastPage());
    auto* frame = new QVBoxLayout(fraWizard);
    frame->setContentsMargins(unit, unit, unit, unit);
    frame->addWidget(m_pages);

    lblWait = named(new QLabel(QStringLiteral("请稍候……"), this), "lblWait");
    cmdBack = named(new QPushButton(QStringLiteral("上一步(&B)"), this), "cmdBack");
    cmdNext = named(new QPushButton(this), "cmdNext");
    cmdCancel = named(new QPushButton(QStringLiteral("取消(&C)"), this), "cmdCancel");
    cmdBack->setAutoDefault(false);
    cmdCancel->setAutoDefault(false);
    cmdNext->setDefault(true);
    auto* commands = new QHBoxLayout;
    commands->addWidget(lblWait);
    commands->addStretch();
    commands->addWidget(cmdBack);
    commands->addWidget(cmdNext);
    commands->addWidget(cmdCancel);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(unit, unit, unit, unit);
    layout->setSpacing(unit);
    layout->addWidget(fraWizard, 1);
    layout->addLayout(commands);
    // On a small or much enlarged screen the pages wrap instead of leaving it.
    resize(QSize(fontMetrics().averageCharWidth() * 84, unit * 29)
               .boundedTo(screen()->availableSize() - QSize(unit, unit * 3)));

    connect(cmdNext, &QPushButton::clicked, this, [this] { m_wizard.cmdNext(); });
    connect(cmdBack, &QPushButton::clicked, this, [this] { m_wizard.cmdBack(); });
    connect(cmdCancel, &QPushButton::clicked, this, [this] { m_wizard.cmdCancel(); });
    connectSecretPage(kLoginKeyPage);
    connectSecretPage(kLoginKeyPage + 1);
    m_wizard.changed = [this] { updateState(); };
    updateState();
}

frmWizard::~frmWizard() {
    m_wizard.changed = nullptr;
}

bool frmWizard::run() {
    exec();
    if (!m_wizard.isClosed()) {
        m_wizard.cmdCancel();
    }
    return m_wizard.m_result() == 2;
}

QLabel* frmWizard::textOf(int page) {
    auto* label = new QLabel(Wizard::pageText(page), this);
    label->setWordWrap(true);
    return label;
}

QWidget* frmWizard::buildNamePage() {
    auto* page = new QWidget(this);
    auto* layout = new QVBoxLayout(page);
    layout->addWidget(textOf(0));
    layout->addSpacing(fontMetrics().height() / 2);

    auto* rows = new QFormLayout;
    txtUserName = named(new QLineEdit(page), "txtUserName");
    txtUserName->setAccessibleName(QStringLiteral("用户名"));
    txtUserName->setPlaceholderText(QStringLiteral("至少两个字符"));
    txtPrivateFolder = named(new QLineEdit(page), "txtPrivateFolder");
    txtPrivateFolder->setAccessibleName(QStringLiteral("私人文件夹"));
    txtPrivateFolder->setReadOnly(true);
    txtPrivateFolder->setFocusPolicy(Qt::ClickFocus);
    cmdOpen = named(new QPushButton(QStringLiteral("选择位置(&O)..."), page), "cmdOpen");
    cmdOpen->setIcon(glyphIcon(Glyph::FolderOpen));
    cmdOpen->setAutoDefault(false);
    auto* place = new QHBoxLayout;
    place->addWidget(txtPrivateFolder, 1);
    place->addWidget(cmdOpen);
    rows->addRow(QStringLiteral("用户名(&U)："), txtUserName);
    rows->addRow(QStringLiteral("私人文件夹："), place);
    layout->addLayout(rows);
    layout->addStretch();

    connect(txtUserName, &QLineEdit::textEdited, this,
            [this](const QString& name) { m_wizard.setUserName(name); });
    connect(cmdOpen, &QPushButton::clicked, this, [this] { m_wizard.cmdOpen(); });
    return page;
}

QWidget* frmWizard::buildSecretPage(int page) {
    const bool isLoginKey = page == kLoginKeyPage;
    SecretPage& controls = m_secrets.at(static_cast<std::size_t>(page - kLoginKeyPage));
    auto* widget = new QWidget(this);
    auto* layout = new QVBoxLayout(widget);
    layout->addWidget(textOf(page));
    layout->addSpacing(fontMetrics().height() / 2);

    const QString what = isLoginKey ? QStringLiteral("登录密钥") : QStringLiteral("独立密码");
    controls.txtSec = new KeyBox(m_keyboard, what, widget);
    named(controls.txtSec->edit(), isLoginKey ? "txtSec" : "txtSec2");
    controls.txtSec->setShown(true);
    controls.txtSecTip = named(new QLineEdit(widget), isLoginKey ? "txtSecTip" : "txtSecTip2");
    controls.txtSecTip->setAccessibleName(what + QStringLiteral("提示"));
    controls.txtSecTip->setMaxLength(kLongestTip);
    controls.txtSecTip->setPlaceholderText(QStringLiteral("只有您自己看得懂的提示，可以不填"));
    controls.meter = new StrengthMeter(widget);

    auto* rows = new QFormLayout;
    auto* label = new QLabel(what + QStringLiteral("(&K)："), widget);
    label->setBuddy(controls.txtSec->edit());
    label->setContentsMargins(0, fontMetrics().height() / 2, 0, 0);
    label->setAlignment(Qt::AlignTop);
    rows->addRow(label, controls.txtSec);
    rows->addRow(QStringLiteral("强度："), controls.meter);
    rows->addRow(isLoginKey ? QStringLiteral("密钥提示(&T)：") : QStringLiteral("密码提示(&T)："),
                 controls.txtSecTip);
    layout->addLayout(rows);
    auto* limits = new QLabel(isLoginKey ? QStringLiteral("登录密钥长度为6-30位。")
                                         : QStringLiteral("独立密码长度最长为32位。"),
                              widget);
    limits->setEnabled(false);
    layout->addWidget(limits);
    layout->addStretch();
    return widget;
}

QWidget* frmWizard::buildLastPage() {
    auto* page = new QWidget(this);
    auto* layout = new QVBoxLayout(page);
    layout->addWidget(textOf(kLastPage));
    txtSummarize = named(new QPlainTextEdit(page), "txtSummarize");
    txtSummarize->setAccessibleName(QStringLiteral("设置汇总"));
    txtSummarize->setReadOnly(true);
    txtSummarize->setTabChangesFocus(true);
    txtSummarize->setFixedHeight(fontMetrics().lineSpacing() * 5);
    // Secrets stand in the box: neither clipboard nor selection may carry them away.
    txtSummarize->setTextInteractionFlags(Qt::NoTextInteraction);
    layout->addWidget(txtSummarize);

    auto* row = new QHBoxLayout;
    auto* icon = new QLabel(page);
    const int side = fontMetrics().height() * 2;
    icon->setPixmap(
        glyphIcon(Glyph::Shield, IconTint::Warning).pixmap(QSize(side, side), devicePixelRatioF()));
    icon->setAlignment(Qt::AlignTop);
    auto* layers = new QLabel(layersText(), page);
    layers->setWordWrap(true);
    row->addWidget(icon);
    row->addWidget(layers, 1);
    layout->addLayout(row);
    layout->addStretch();
    // The warnings must be readable on a small or much enlarged screen, too.
    auto* scroll = new QScrollArea(this);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidgetResizable(true);
    scroll->setAccessibleName(QStringLiteral("设置汇总与保护机制"));
    scroll->setWidget(page);
    scroll->viewport()->setAutoFillBackground(false);
    page->setAutoFillBackground(false);
    return scroll;
}

void frmWizard::connectSecretPage(int page) {
    SecretPage& controls = m_secrets.at(static_cast<std::size_t>(page - kLoginKeyPage));
    const bool isLoginKey = page == kLoginKeyPage;
    connect(controls.txtSec, &KeyBox::textEdited, this, [this, &controls, isLoginKey] {
        if (isLoginKey) {
            m_wizard.setLoginKey(controls.txtSec->text());
        } else {
            m_wizard.setIndependentPassword(controls.txtSec->text());
        }
        updateMeter(controls);
    });
    connect(controls.txtSecTip, &QLineEdit::textEdited, this,
            [this, isLoginKey](const QString& tip) {
                if (isLoginKey) {
                    m_wizard.setLoginKeyTip(tip);
                } else {
                    m_wizard.setIndependentPasswordTip(tip);
                }
            });
}

void frmWizard::updateMeter(SecretPage& controls) {
    const SecretStrength strength = MeasureStrength(controls.txtSec->text());
    controls.meter->setStrength(strength.percent(), strength.text());
}

void frmWizard::updateState() {
    const WizardState& state = m_wizard.state();
    if (m_wizard.isClosed()) {
        for (SecretPage& controls : m_secrets) {
            controls.txtSec->wipe();
        }
        txtSummarize->clear();
        accept();
        return;
    }
    fraWizard->setTitle(state.frameCaption);
    if (txtUserName->text() != state.userName) {
        txtUserName->setText(state.userName);
    }
    txtPrivateFolder->setText(state.privateFolder);
    txtPrivateFolder->setToolTip(state.privateFolder);
    txtSummarize->setPlainText(state.summary);
    cmdNext->setText(state.nextCaption);
    cmdBack->setVisible(state.canGoBack);
    lblWait->setVisible(state.isWorking);
    fraWizard->setEnabled(!state.isWorking);
    cmdNext->setEnabled(!state.isWorking);
    cmdBack->setEnabled(!state.isWorking);
    cmdCancel->setEnabled(!state.isWorking);
    if (m_shownPage != state.page) {
        m_shownPage = state.page;
        m_pages->setCurrentIndex(state.page);
        focusPage();
    }
    if (state.isWorking) {
        QApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    }
}

void frmWizard::focusPage() {
    const WizardState& state = m_wizard.state();
    switch (state.page) {
        case 0:
            txtUserName->setFocus();
            break;
        case kLastPage:
            cmdNext->setFocus();
            break;
        default: {
            const auto index = static_cast<std::size_t>(state.page - kLoginKeyPage);
            SecretPage& controls = m_secrets.at(index);
            controls.txtSec->setText(index == 0 ? state.loginKey : state.independentPassword);
            controls.txtSecTip->setText(index == 0 ? state.loginKeyTip
                                                   : state.independentPasswordTip);
            updateMeter(controls);
            controls.txtSec->edit()->setFocus();
            controls.txtSec->selectAll();
            break;
        }
    }
}

}  // namespace keeper
