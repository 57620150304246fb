// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

// Draws every window and widget of the foundations into pictures, light and dark, to be looked at.
// usage: ui_gallery FOLDER [SCALE-OF-FONT]

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QGridLayout>
#include <QGroupBox>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QTimer>
#include <QToolButton>
#include <QTreeView>

#include "support/fake_desktop.h"
#include "support/session_fixture.h"
#include "ui/dlg_connecting.h"
#include "ui/frm_login.h"
#include "ui/frm_splash.h"
#include "ui/frm_wizard.h"
#include "ui/main_window_fixture.h"
#include "ui/ports/qt_prompt.h"
#include "ui/theme/icons.h"
#include "ui/theme/theme.h"
#include "ui/widgets/key_box.h"
#include "ui/widgets/strength_meter.h"

using namespace keeper;

namespace {

QWidget* controls(const KeyboardState& keyboard) {
    auto* page = new QWidget;
    auto* grid = new QGridLayout(page);
    auto* key = new KeyBox(keyboard, QStringLiteral("登录密钥"));
    key->setText(QStringLiteral("Key１２３"));
    auto* shown = new KeyBox(keyboard, QStringLiteral("登录密钥"));
    shown->setText(QStringLiteral("correct horse"));
    shown->setShown(true);
    grid->addWidget(new QLabel(QStringLiteral("登录密钥(&K)：")), 0, 0, Qt::AlignTop);
    grid->addWidget(key, 0, 1);
    grid->addWidget(new QLabel(QStringLiteral("显示状态：")), 1, 0, Qt::AlignTop);
    grid->addWidget(shown, 1, 1);
    int row = 2;
    for (const int value : {20, 55, 100}) {
        auto* meter = new StrengthMeter;
        meter->setStrength(value, QStringLiteral("%1位：中强").arg(value / 5));
        grid->addWidget(meter, row++, 1);
    }
    auto* combo = new QComboBox;
    combo->addItems({QStringLiteral("张三"), QStringLiteral("Demo")});
    grid->addWidget(combo, row++, 1);
    auto* check = new QCheckBox(QStringLiteral("记住密钥"));
    check->setChecked(true);
    grid->addWidget(check, row, 0);
    grid->addWidget(new QCheckBox(QStringLiteral("自动登录")), row++, 1);
    auto* radio = new QRadioButton(QStringLiteral("通用型"));
    radio->setChecked(true);
    grid->addWidget(radio, row, 0);
    auto* off = new QRadioButton(QStringLiteral("增强型"));
    off->setEnabled(false);
    grid->addWidget(off, row++, 1);
    grid->addWidget(new QSpinBox, row++, 1);
    auto* group = new QGroupBox(QStringLiteral("图标"));
    auto* icons = new QGridLayout(group);
    for (int i = 0; i <= static_cast<int>(Glyph::Website); ++i) {
        auto* picture = new QLabel;
        picture->setPixmap(glyphIcon(static_cast<Glyph>(i)).pixmap(QSize(24, 24)));
        icons->addWidget(picture, i / 13, i % 13);
    }
    grid->addWidget(group, row++, 0, 1, 2);
    auto* buttons = new QDialogButtonBox;
    auto* login = buttons->addButton(QStringLiteral("登 录"), QDialogButtonBox::AcceptRole);
    login->setDefault(true);
    buttons->addButton(QStringLiteral("取消"), QDialogButtonBox::RejectRole);
    auto* disabled = buttons->addButton(QStringLiteral("移除"), QDialogButtonBox::ActionRole);
    disabled->setEnabled(false);
    disabled->setIcon(glyphIcon(Glyph::Delete));
    grid->addWidget(buttons, row, 0, 1, 2);
    key->edit()->setFocus();
    return page;
}

/// The main window over a few entries.
class MainWindowPicture final : public MainWindowTest {
  public:
    MainWindowPicture() {
        SetUp();
        addWeb(u"010102"_s, u"工作邮件"_s, u"secret"_s);
        addFil(u"030101"_s, u"年度报告.odt"_s, u"/home/user/年度报告.odt"_s);
        m_sheets.RefreshSheets();
        m_window.expandSubtree(u"dir01"_s, true);
        m_sheets.clickTree(u"ent010101"_s);
    }
    [[nodiscard]] frmMain& window() { return m_window; }
    [[nodiscard]] EditPane& pane() { return m_pane; }
    [[nodiscard]] Sheets& sheets() { return m_sheets; }

  private:
    void TestBody() override {}
};

void save(QWidget& widget, const QString& path) {
    widget.show();
    QApplication::processEvents();
    widget.activateWindow();
    for (int i = 0; i < 20; ++i) {
        QApplication::processEvents(QEventLoop::AllEvents, 20);
    }
    widget.grab().save(path);
    widget.hide();
}

/// The forms on the way to the main window, over a user who has logged in before.
class SessionPictures final : public SessionTest {
  public:
    SessionPictures() { SetUp(); }

    void saveLogin(const KeyboardState& keyboard, const QString& path) {
        leaveAndRestart();
        frmLogin form(program->login, keyboard);
        const auto showPath = [&form] { hideHome(*form.findChild<QToolButton*>(u"lblPath"_s)); };
        // The form looks for its user behind its first paint.
        save(form, path + QStringLiteral("/login") + tail);
        showPath();
        save(form, path + QStringLiteral("/login") + tail);
        prompt.answers = {Prompt::Answer::Yes};
        for (int attempt = 0; attempt < 10; ++attempt) {
            program->login.setKeyText(QStringLiteral("wrong key"));
            prompt.answers = {Prompt::Answer::Yes};
            program->login.OnLoginClicked();
        }
        clock.advanceSeconds(1);
        program->login.tick();
        showPath();
        save(form, path + QStringLiteral("/login-banned") + tail);
    }

    void saveWizard(const KeyboardState& keyboard, const QString& path) {
        Wizard& wizard = program->wizard;
        wizard.load();
        frmWizard form(wizard, keyboard);
        wizard.setUserName(QStringLiteral("张三"));
        for (int page = 1; page <= 4; ++page) {
            hideHome(*form.findChild<QLineEdit*>(u"txtPrivateFolder"_s));
            auto* summary = form.findChild<QPlainTextEdit*>(u"txtSummarize"_s);
            summary->setPlainText(homeless(summary->toPlainText()));
            save(form, path + QStringLiteral("/wizard-%1").arg(page) + tail);
            if (page < 4) {
                wizard.cmdNext();
            }
        }
    }

    QString tail;

  private:
    /// The tests' home lies wherever there is room.
    static QString homeless(QString text) {
        return text.replace(QDir::homePath(), QStringLiteral("/home/user"));
    }
    template <typename Control>
    static void hideHome(Control& control) {
        control.setText(homeless(control.text()));
    }

    void TestBody() override {}
};

}  // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    const QString folder = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral(".");
    QDir().mkpath(folder);
    FakeAppearance appearance;
    FakeKeyboardState keyboard;
    keyboard.set(true);
    Theme theme(appearance);
    for (const bool isDark : {false, true}) {
        theme.setChoice(isDark ? Theme::Choice::Dark : Theme::Choice::Light);
        const QString tail = isDark ? QStringLiteral("-dark.png") : QStringLiteral("-light.png");
        frmSplash splash;
        save(splash, folder + QStringLiteral("/splash") + tail);
        dlgConnecting connecting;
        connecting.SetMsg(CryptMode::SealAndBackUp);
        connecting.setProgress(42);
        save(connecting, folder + QStringLiteral("/connecting") + tail);
        connecting.SetMsg(CryptMode::SealAfterFailedBackup);
        save(connecting, folder + QStringLiteral("/connecting-failed") + tail);
        SessionPictures session;
        session.tail = tail;
        session.saveLogin(keyboard, folder);
        session.saveWizard(keyboard, folder);
        const std::unique_ptr<QWidget> page(controls(keyboard));
        save(*page, folder + QStringLiteral("/controls") + tail);
        MainWindowPicture picture;
        frmMain& window = picture.window();
        window.SetCaption(QStringLiteral("张三"));
        window.statusPanels().setPanel(StatusPanel::Message, QStringLiteral("今天将进行定期备份"));
        window.statusPanels().setPanel(StatusPanel::Operation, QStringLiteral("浏览"));
        window.statusPanels().setPanel(StatusPanel::FillState, QStringLiteral("通用型|00:60"));
        window.statusPanels().setPanel(StatusPanel::RunTime, QStringLiteral("1小时12分5秒"));
        save(window, folder + QStringLiteral("/main") + tail);
        picture.pane().SetEditState(EditState::Modify);
        save(window, folder + QStringLiteral("/main-edit") + tail);
        picture.pane().SetEditState(EditState::Browse);
        for (const SheetTab tab : {SheetTab::Search, SheetTab::Favourite}) {
            picture.sheets().selectTab(tab);
            save(window,
                 folder + QStringLiteral("/main-sheet%1").arg(static_cast<int>(tab)) + tail);
        }
        picture.sheets().selectTab(SheetTab::Directory);
        picture.sheets().clickTree(u"dir0101"_s);
        save(window, folder + QStringLiteral("/main-empty") + tail);
        window.mn_formSize();
        save(window, folder + QStringLiteral("/main-micro") + tail);
        for (const auto icon : {Prompt::Icon::Question, Prompt::Icon::Critical}) {
            QTimer::singleShot(300, [&] {
                if (QWidget* box = QApplication::activeModalWidget()) {
                    box->grab().save(folder + QStringLiteral("/box%1").arg(static_cast<int>(icon)) +
                                     tail);
                    box->close();
                }
            });
            QtPrompt prompt;
            prompt.messageBox(QStringLiteral("即将移除此用户。\r\n检测到私人文件夹存在，您需要连带"
                                             "删除它吗？"),
                              icon, Prompt::Buttons::YesNoCancel);
        }
    }
    return 0;
}
