// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <functional>

#include "app/program_info.h"
#include "ui/ports/qt_clipboard.h"
#include "ui/ports/qt_prompt.h"
#include "ui/ports/qt_tray.h"

namespace keeper {
namespace {

/// Runs `act` on the next modal window as soon as it is up.
void whenModal(QTimer& poll, std::function<void(QWidget&)> act) {
    QObject::connect(&poll, &QTimer::timeout, [&poll, act = std::move(act)] {
        if (QWidget* window = QApplication::activeModalWidget()) {
            poll.stop();
            act(*window);
        }
    });
    poll.start(1);
}

using Answer = Prompt::Answer;
using Buttons = Prompt::Buttons;

TEST(QtPrompt, ShowsPlainTextWithBreaksAndTheProgramsNameWhenThereIsNoTitle) {
    QTimer poll;
    whenModal(poll, [](QWidget& window) {
        const auto& box = dynamic_cast<const QMessageBox&>(window);
        EXPECT_EQ(box.text(), QStringLiteral("[5]A.B:\n<b>一行</b>"));
        EXPECT_EQ(box.textFormat(), Qt::PlainText);
        EXPECT_EQ(box.windowTitle(), programTitle());
        EXPECT_FALSE(box.iconPixmap().isNull());
        EXPECT_EQ(box.buttons().constFirst()->text(), QStringLiteral("确定"));
        window.close();
    });
    EXPECT_EQ(
        QtPrompt().messageBox(QStringLiteral("[5]A.B:\r\n<b>一行</b>"), Prompt::Icon::Critical),
        Answer::Ok);
}

TEST(QtPrompt, ABoxThatIsTakenAwayIsNoConsent) {
    for (const auto& [buttons, answer] :
         {std::pair{Buttons::OkCancel, Answer::Cancel}, std::pair{Buttons::YesNo, Answer::No},
          std::pair{Buttons::YesNoCancel, Answer::Cancel}}) {
        QTimer poll;
        whenModal(poll, [](QWidget& window) { dynamic_cast<QDialog&>(window).reject(); });
        EXPECT_EQ(QtPrompt().messageBox(QStringLiteral("?"), Prompt::Icon::Question, buttons),
                  answer);
    }
}

TEST(QtPrompt, EachWayOutOfABoxGivesItsAnswer) {
    struct Row {
        Buttons buttons;
        Qt::Key key;
        Answer answer;
        Prompt::Icon icon = Prompt::Icon::Question;
    };
    for (const Row& row :
         {Row{Buttons::Ok, Qt::Key_Escape, Answer::Ok},
          Row{Buttons::OkCancel, Qt::Key_Return, Answer::Ok},
          Row{Buttons::OkCancel, Qt::Key_Escape, Answer::Cancel},
          Row{Buttons::YesNo, Qt::Key_Return, Answer::Yes},
          Row{Buttons::YesNo, Qt::Key_Escape, Answer::No},
          Row{Buttons::YesNoCancel, Qt::Key_Return, Answer::No},
          Row{Buttons::YesNoCancel, Qt::Key_Escape, Answer::Cancel},
          Row{Buttons::YesNo, Qt::Key_Return, Answer::No, Prompt::Icon::Exclamation},
          Row{Buttons::YesNoCancel, Qt::Key_Return, Answer::Cancel, Prompt::Icon::Exclamation}}) {
        QTimer poll;
        whenModal(poll, [&row](QWidget& window) { QTest::keyClick(&window, row.key); });
        EXPECT_EQ(QtPrompt().messageBox(QStringLiteral("?"), row.icon, row.buttons,
                                        QStringLiteral("标题")),
                  row.answer)
            << static_cast<int>(row.buttons) << ' ' << row.key;
    }
}

TEST(QtPrompt, InputBoxTellsCancelFromAnEmptyAnswer) {
    const auto ask = [](const std::function<void(QLineEdit&, QWidget&)>& act) {
        QTimer poll;
        whenModal(poll, [&act](QWidget& window) { act(*window.findChild<QLineEdit*>(), window); });
        return QtPrompt().inputBox(QStringLiteral("序号\r\n1"), {}, QStringLiteral("old"));
    };
    EXPECT_EQ(ask([](QLineEdit& edit, QWidget&) { QTest::keyClick(&edit, Qt::Key_Return); }),
              QStringLiteral("old"));
    EXPECT_EQ(ask([](QLineEdit& edit, QWidget&) {
                  edit.clear();
                  QTest::keyClick(&edit, Qt::Key_Return);
              }),
              QString());
    EXPECT_EQ(ask([](QLineEdit&, QWidget& window) { QTest::keyClick(&window, Qt::Key_Escape); }),
              std::nullopt);
}

TEST(QtClipboard, MarksSecretsAndClearsOnlyItsOwn) {
    QtClipboard clipboard;
    clipboard.setText(QStringLiteral("plain"), Clipboard::Kind::Plain);
    const auto* data = QApplication::clipboard()->mimeData();
    EXPECT_FALSE(data->hasFormat(QStringLiteral("x-kde-passwordManagerHint")));
    clipboard.setText(QStringLiteral("pw"), Clipboard::Kind::Secret);
    data = QApplication::clipboard()->mimeData();
    EXPECT_EQ(data->data(QStringLiteral("x-kde-passwordManagerHint")), "secret");
    EXPECT_EQ(clipboard.text(), QStringLiteral("pw"));
    EXPECT_EQ(clipboard.clear(), clipboard.isOwned());
    if (clipboard.isOwned()) {
        EXPECT_EQ(clipboard.text(), QString());
    }
}

TEST(QtTray, MenuTellsKeysAndWithoutATrayBalloonsGoToTheDesktop) {
    QStringList notes;
    QtTray tray(
        [&notes](const QString& title, const QString& text) { notes += title + u'|' + text; });
    QStringList chosen;
    QObject::connect(&tray, &Tray::itemChosen, [&chosen](const QString& key) { chosen += key; });
    tray.setMenu({{QStringLiteral("mn_trayLock"), QStringLiteral("锁定")},
                  {},
                  {QStringLiteral("mn_trayExit"), QStringLiteral("退出")}});
    tray.setItemText(QStringLiteral("mn_trayLock"), QStringLiteral("解锁"));
    tray.setItemEnabled(QStringLiteral("mn_trayExit"), false);
    QMenu* menu = nullptr;
    for (QWidget* window : QApplication::topLevelWidgets()) {
        menu = window->objectName() == u"mn_tray" ? qobject_cast<QMenu*>(window) : menu;
    }
    ASSERT_NE(menu, nullptr);
    for (QAction* action : menu->actions()) {
        action->trigger();
    }
    EXPECT_EQ(chosen, QStringList{QStringLiteral("mn_trayLock")});
    EXPECT_EQ(menu->actions().constFirst()->text(), QStringLiteral("解锁"));
    ASSERT_FALSE(tray.isAvailable());
    tray.showBalloon(QStringLiteral("再见，\r\n张三！"));
    EXPECT_EQ(notes, QStringList{programTitle() + QStringLiteral("|再见，\n张三！")});
}

}  // namespace
}  // namespace keeper
