// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/frm_login.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QShowEvent>
#include <QSignalBlocker>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>
#include <utility>

#include "app/program_info.h"
#include "guard/login.h"
#include "ui/theme/colors.h"
#include "ui/theme/icons.h"
#include "ui/theme/theme.h"
#include "ui/widgets/key_box.h"
#include "ui/widgets/key_edit.h"
#include "ui/widgets/named.h"

namespace keeper {
namespace {

constexpr int kLongestLoginKey = 30;
constexpr int kLongestOfEdit = 32'767;
/// What the box holds in the place of a key that nobody typed. It is in no key, and so can be told
/// from what is typed beside it.
constexpr QChar kStandIn{u'\uFDD0'};

}  // namespace

frmLogin::frmLogin(Login& login, const KeyboardState& keyboard, QWidget* parent)
    : QDialog(parent), m_login(login), m_keyboard(keyboard) {
    setObjectName(QStringLiteral("frmLogin"));
    setWindowTitle(QStringLiteral("登录 - %1").arg(programTitle()));
    build();
    connectControls();
    m_login.changed = [this] { updateState(); };
    updateState();
}

frmLogin::~frmLogin() {
    m_login.changed = nullptr;
}

void frmLogin::run() {
    exec();
    if (!m_login.isClosed()) {
        m_login.cmdCancel();
    }
}

void frmLogin::build() {
    auto* layout = new QVBoxLayout(this);
    const int unit = fontMetrics().height();
    layout->setContentsMargins(unit * 2, unit * 2, unit * 2, unit + unit / 2);
    layout->setSpacing(unit);
    layout->addWidget(buildHead());
    layout->addWidget(buildForm());
    layout->addWidget(buildCommands());
    layout->setSizeConstraint(QLayout::SetFixedSize);
}

QWidget* frmLogin::buildHead() {
    auto* head = new QWidget(this);
    auto* row = new QHBoxLayout(head);
    row->setContentsMargins(0, 0, 0, 0);
    const int unit = fontMetrics().height();
    row->setSpacing(unit);

    auto* logo = named(new QLabel(head), "imgLogo");
    logo->setPixmap(programIcon().pixmap(QSize(unit * 3, unit * 3), devicePixelRatioF()));
    auto* title = new QLabel(programTitle(), head);
    title->setFont(titleFont(title->font()));
    auto* subtitle = new QLabel(QStringLiteral("登录密码数据库"), head);
    subtitle->setEnabled(false);

    auto* texts = new QVBoxLayout;
    texts->setSpacing(unit / 6);
    texts->addWidget(title);
    texts->addWidget(subtitle);
    row->addWidget(logo);
    row->addLayout(texts, 1);
    return head;
}

QWidget* frmLogin::buildForm() {
    auto* form = new QWidget(this);
    auto* rows = new QFormLayout(form);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
    rows->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);

    cboUsers = named(new QComboBox(form), "cboUsers");
    cboUsers->setAccessibleName(QStringLiteral("用户"));
    cboUsers->setPlaceholderText(QStringLiteral("还没有用户，请先新建"));
    cboUsers->setMinimumWidth(fontMetrics().averageCharWidth() * 46);
    rows->addRow(QStringLiteral("用户(&U)："), cboUsers);

    txtLgnKey = new KeyBox(m_keyboard, QStringLiteral("登录密钥"), form);
    txtLgnKey->setMaxLength(kLongestLoginKey);
    named(txtLgnKey->edit(), "txtLgnKey");
    auto* keyLabel = new QLabel(QStringLiteral("登录密钥(&K)："), form);
    keyLabel->setBuddy(txtLgnKey->edit());
    // The box has a line of warnings below its edit: the label belongs to the edit.
    keyLabel->setContentsMargins(0, fontMetrics().height() / 2, 0, 0);
    keyLabel->setAlignment(Qt::AlignRight | Qt::AlignTop);
    rows->addRow(keyLabel, txtLgnKey);

    chkRemLgnKey = named(new QCheckBox(QStringLiteral("记住密钥(&M)"), form), "chkRemLgnKey");
    chkAutoLogin = named(new QCheckBox(QStringLiteral("自动登录(&A)"), form), "chkAutoLogin");
    auto* options = new QHBoxLayout;
    chkFingerprint = named(new QCheckBox(QStringLiteral("指纹登录(&F)"), form), "chkFingerprint");
    for (QCheckBox* box : {chkRemLgnKey, chkAutoLogin, chkFingerprint}) {
        box->setToolTip(QStringLiteral("请勿在公用电脑上使用本选项"));
        options->addWidget(box);
    }
    options->addStretch();
    rows->addRow(QString(), options);

    lblChances = named(new QLabel(form), "lblChances");
    lblChances->setAccessibleName(QStringLiteral("登录尝试机会"));
    lblChances->setMinimumHeight(fontMetrics().height());
    rows->addRow(QString(), lblChances);

    lblPath = named(new QToolButton(form), "lblPath");
    lblPath->setAccessibleName(QStringLiteral("密码数据库路径"));
    lblPath->setAutoRaise(true);
    lblPath->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    lblPath->setIcon(glyphIcon(Glyph::FolderOpen));
    rows->addRow(QString(), lblPath);
    return form;
}

QWidget* frmLogin::buildCommands() {
    auto* commands = new QWidget(this);
    auto* row = new QHBoxLayout(commands);
    row->setContentsMargins(0, 0, 0, 0);
    cmdNewBuild =
        named(new QPushButton(QStringLiteral("新建用户(&N)..."), commands), "cmdNewBuild");
    cmdNewBuild->setIcon(glyphIcon(Glyph::Add));
    cmdOpen = named(new QPushButton(QStringLiteral("打开(&O)..."), commands), "cmdOpen");
    cmdOpen->setIcon(glyphIcon(Glyph::FolderOpen));
    cmdOpen->setToolTip(QStringLiteral("打开其它位置的密码数据库"));
    cmdRemove = named(new QPushButton(QStringLiteral("移除(&R)"), commands), "cmdRemove");
    cmdRemove->setIcon(glyphIcon(Glyph::Delete));
    cmdRemove->setToolTip(QStringLiteral("从本机移除此用户"));
    cmdCancel = named(new QPushButton(QStringLiteral("退出(&X)"), commands), "cmdCancel");
    lblOK = named(new QPushButton(commands), "lblOK");
    lblOK->setMinimumWidth(fontMetrics().averageCharWidth() * 16);
    for (QPushButton* button : {cmdNewBuild, cmdOpen, cmdRemove, cmdCancel}) {
        button->setAutoDefault(false);
    }
    lblOK->setDefault(true);
    row->addWidget(cmdNewBuild);
    row->addWidget(cmdOpen);
    row->addWidget(cmdRemove);
    row->addStretch();
    row->addWidget(cmdCancel);
    row->addWidget(lblOK);
    return commands;
}

void frmLogin::connectControls() {
    tmrFlash = new QTimer(this);
    tmrFlash->setInterval(1000);
    connect(tmrFlash, &QTimer::timeout, this, [this] { m_login.tick(); });
    connect(cboUsers, &QComboBox::activated, this, [this](int index) {
        m_login.selectUser(index);
        txtLgnKey->edit()->setFocus();
    });
    connect(txtLgnKey, &KeyBox::textEdited, this, &frmLogin::takeKey);
    connect(chkAutoLogin, &QCheckBox::clicked, this, [this](bool isOn) {
        m_login.setAutoLogin(isOn);
        txtLgnKey->edit()->setFocus();
    });
    connect(chkRemLgnKey, &QCheckBox::clicked, this, [this](bool isOn) {
        m_login.setRemLgnKey(isOn);
        txtLgnKey->edit()->setFocus();
    });
    connect(chkFingerprint, &QCheckBox::clicked, this, [this](bool isOn) {
        m_login.setFingerprint(isOn);
        txtLgnKey->edit()->setFocus();
    });
    connect(lblPath, &QToolButton::clicked, this, [this] { m_login.openPath(); });
    connect(lblOK, &QPushButton::clicked, this, [this] {
        if (!m_isActivated) {
            return;  // a key press that came before the users
        }
        m_login.OnLoginClicked();
        // Whatever was refused, the next thing to do is to type.
        if (!m_login.isClosed()) {
            txtLgnKey->edit()->setFocus();
        }
    });
    auto* about = new QAction(QStringLiteral("关于...(&A)"), this);
    about->setObjectName(QStringLiteral("mn_about"));
    about->setShortcut(Qt::Key_F1);
    connect(about, &QAction::triggered, this, [this] { m_login.mn_about(); });
    addAction(about);
    setContextMenuPolicy(Qt::ActionsContextMenu);
    connect(cmdNewBuild, &QPushButton::clicked, this, [this] { m_login.cmdNewBuild(); });
    connect(cmdOpen, &QPushButton::clicked, this, [this] { m_login.cmdOpen(); });
    connect(cmdRemove, &QPushButton::clicked, this, [this] { m_login.cmdRemove(); });
    connect(cmdCancel, &QPushButton::clicked, this, [this] { m_login.cmdCancel(); });
}

void frmLogin::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    tmrFlash->start();
    // A window on a workspace out of sight is not painted.
    constexpr std::chrono::milliseconds kPainted{150};
    QTimer::singleShot(kPainted, this, &frmLogin::activate);
}

void frmLogin::paintEvent(QPaintEvent* event) {
    QDialog::paintEvent(event);
    QTimer::singleShot(0, this, &frmLogin::activate);
}

/// Behind the first paint: nobody shall wait for it, and an automatic login must not run inside the
/// event that shows the form.
void frmLogin::activate() {
    if (std::exchange(m_isActivated, true)) {
        return;
    }
    setWindowIcon(programIcon());
    const Login::Focus focus = m_login.activate();
    updateState();
    if (focus == Login::Focus::RememberKey) {
        chkRemLgnKey->setFocus();
    } else if (m_login.state().hasUser) {
        txtLgnKey->edit()->setFocus();
    } else {
        lblOK->setFocus();
    }
}

void frmLogin::changeEvent(QEvent* event) {
    QDialog::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && lblChances != nullptr) {
        showChances(m_login.state());
    }
}

void frmLogin::updateState() {
    const LoginState& state = m_login.state();
    if (m_login.isClosed()) {
        txtLgnKey->wipe();
        accept();
        return;
    }
    showUsers(state);
    for (QWidget* control : std::initializer_list<QWidget*>{
             cboUsers, txtLgnKey, chkAutoLogin, chkRemLgnKey, chkFingerprint, cmdRemove}) {
        control->setEnabled(state.hasUser);
    }
    chkAutoLogin->setChecked(state.autoLogin);
    chkRemLgnKey->setChecked(state.remLgnKey);
    chkFingerprint->setVisible(state.isFingerprintOffered);
    chkFingerprint->setChecked(state.fingerprint);
    txtLgnKey->setHint(state.keyToolTip);
    if (!m_login.hasTypedKey()) {
        showKey();
    }
    lblOK->setText(state.okCaption);
    lblPath->setVisible(state.isPathShown);
    // A button takes a single "&" for the mark of a mnemonic.
    lblPath->setText(
        fontMetrics()
            .elidedText(state.pathText, Qt::ElideMiddle, fontMetrics().averageCharWidth() * 60)
            .replace(u'&', QStringLiteral("&&")));
    lblPath->setToolTip(state.pathText + QLatin1Char('\n') + state.pathToolTip);
    lblPath->setIcon(state.isPathMissing ? glyphIcon(Glyph::Warning, IconTint::Warning)
                                         : glyphIcon(Glyph::FolderOpen));
    showChances(state);
}

void frmLogin::takeKey() {
    const bool hasStandIns = !m_login.state().keyText.isEmpty();
    QString typed = txtLgnKey->text();
    m_login.setKeyText(hasStandIns ? QString() : typed);
    if (hasStandIns) {
        typed.remove(kStandIn);
        showKey();
        txtLgnKey->edit()->insert(typed);
    }
}

void frmLogin::showKey() {
    const qsizetype standIns = m_login.state().keyText.size();
    txtLgnKey->wipe();
    // They take no room from a key that is typed or pasted beside them.
    txtLgnKey->setMaxLength(standIns == 0 ? kLongestLoginKey : kLongestOfEdit);
    txtLgnKey->setText(QString(standIns, kStandIn));
    txtLgnKey->setShowButtonVisible(standIns == 0);
}

void frmLogin::showUsers(const LoginState& state) {
    const QSignalBlocker blocker(cboUsers);
    // A ban tells its time each second, while somebody may choose another user.
    if (std::exchange(m_shownUsers, state.userNames) != state.userNames) {
        cboUsers->clear();
        for (const QString& name : state.userNames) {
            cboUsers->addItem(glyphIcon(Glyph::User), name);
        }
    }
    cboUsers->setCurrentIndex(state.currentUser);
}

void frmLogin::showChances(const LoginState& state) {
    const bool isDark = isDarkPalette(palette());
    QPalette colors = palette();
    switch (state.chancesTone) {
        case LoginState::Tone::Normal:
            break;
        case LoginState::Tone::Warning:
            colors.setColor(QPalette::WindowText, themeColor(ThemeColor::Warning, isDark));
            break;
        case LoginState::Tone::Refused:
            colors.setColor(QPalette::WindowText, themeColor(ThemeColor::Danger, isDark));
            break;
    }
    lblChances->setPalette(colors);
    lblChances->setText(state.chancesText);
}

}  // namespace keeper
