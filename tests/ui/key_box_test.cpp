// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/widgets/key_box.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QInputMethodEvent>
#include <QInputMethodQueryEvent>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPushButton>
#include <QTest>

#include "support/fake_desktop.h"

namespace keeper {
namespace {

class KeyBoxTest : public ::testing::Test {
  protected:
    KeyBoxTest() : box(keyboard, QStringLiteral("登录密钥")) {
        box.show();
        box.activateWindow();
        box.edit()->setFocus();
        EXPECT_TRUE(QTest::qWaitFor([this] { return box.edit()->hasFocus(); }));
    }

    bool isInputMethodOn() {
        QInputMethodQueryEvent query(Qt::ImEnabled);
        QApplication::sendEvent(box.edit(), &query);
        return query.value(Qt::ImEnabled).toBool() &&
               box.edit()->testAttribute(Qt::WA_InputMethodEnabled);
    }
    void commit(const QString& text) {
        QInputMethodEvent event;
        event.setCommitString(text);
        QApplication::sendEvent(box.edit(), &event);
    }
    QToolButton* button(const char* name) {
        return box.findChild<QToolButton*>(QLatin1StringView(name));
    }

    FakeKeyboardState keyboard;
    KeyBox box;
};

TEST_F(KeyBoxTest, RefusesInputMethodsHiddenAndShownUntilTheSwitchAllowsThem) {
    for (const bool isShown : {false, true, false}) {
        box.setShown(isShown);
        EXPECT_FALSE(isInputMethodOn()) << isShown;
        commit(QStringLiteral("密"));
        EXPECT_EQ(box.text(), QString()) << isShown;
    }
    button("cmdChineseKey")->click();
    for (const bool isShown : {false, true}) {
        box.setShown(isShown);
        EXPECT_TRUE(isInputMethodOn()) << isShown;
        commit(QStringLiteral("密"));
    }
    EXPECT_EQ(box.text(), QStringLiteral("密密"));
    button("cmdChineseKey")->click();
    EXPECT_FALSE(isInputMethodOn());
}

TEST_F(KeyBoxTest, TheKeyboardOnTheScreenTypesWithoutTakingTheFocus) {
    int edits = 0;
    QObject::connect(&box, &KeyBox::textEdited, [&] { ++edits; });
    button("cmdKeyboard")->click();
    auto* keyboardOnScreen = box.findChild<QWidget*>(QStringLiteral("dlgKeyboard"));
    ASSERT_TRUE(keyboardOnScreen != nullptr && keyboardOnScreen->isVisible());
    const auto press = [&](const QString& text) {
        for (QPushButton* key : keyboardOnScreen->findChildren<QPushButton*>()) {
            if (key->text() == text) {
                key->click();
                return;
            }
        }
        ADD_FAILURE() << "no key " << text.toStdString();
    };
    box.setMaxLength(4);
    for (const char16_t* key : {u"q", u"大写", u"Q", u"&&", u"退格", u"&&", u"大写", u"\\", u"7"}) {
        press(QString::fromUtf16(key));
    }
    EXPECT_EQ(box.text(), QStringLiteral("qQ&\\"));
    EXPECT_EQ(edits, 6) << "the last one finds no room";
    EXPECT_TRUE(box.warning().contains(QStringLiteral("最多4位")));
    press(QStringLiteral("退格"));
    EXPECT_EQ(box.warning(), QString());
    QApplication::clipboard()->setText(QStringLiteral("longer"));
    box.edit()->selectAll();
    box.edit()->paste();
    EXPECT_EQ(box.text(), QStringLiteral("long"));
    EXPECT_TRUE(box.warning().contains(QStringLiteral("最多4位"))) << "a cut paste is told";
    EXPECT_TRUE(box.edit()->hasFocus());
    box.setEnabled(false);
    EXPECT_FALSE(keyboardOnScreen->isVisible());
}

TEST_F(KeyBoxTest, NothingTypedReachesTheClipboardButPasteWorks) {
    QClipboard* clipboard = QApplication::clipboard();
    clipboard->setText(QStringLiteral("foreign"));
    for (const bool isShown : {false, true}) {
        box.setShown(isShown);
        box.setText(QStringLiteral("secret words"));
        for (const auto& keys :
             {QKeySequence(QKeySequence::Copy), QKeySequence(QKeySequence::Cut),
              QKeySequence(Qt::CTRL | Qt::Key_Insert), QKeySequence(Qt::SHIFT | Qt::Key_Delete),
              QKeySequence(Qt::CTRL | Qt::Key_K)}) {
            box.selectAll();
            if (keys == QKeySequence(Qt::CTRL | Qt::Key_K)) {
                box.edit()->setCursorPosition(0);
            }
            QTest::keySequence(box.edit(), keys);
        }
        QTest::mouseDClick(box.edit(), Qt::LeftButton, {}, QPoint(20, box.edit()->height() / 2));
        EXPECT_EQ(clipboard->text(), QStringLiteral("foreign")) << isShown;
        if (clipboard->supportsSelection()) {
            EXPECT_EQ(clipboard->text(QClipboard::Selection), QString());
        }
    }
    box.wipe();
    QTest::keySequence(box.edit(), QKeySequence(QKeySequence::Paste));
    EXPECT_EQ(box.text(), QStringLiteral("foreign"));
}

TEST_F(KeyBoxTest, WarnsOfCapsLockAsItChangesAndOfFullWidthCharacters) {
    EXPECT_EQ(box.warning(), QString());
    keyboard.set(true);
    EXPECT_EQ(box.warning(), QStringLiteral("大写锁定已打开"));
    box.setText(QStringLiteral("pass１"));
    EXPECT_EQ(box.warning(), QStringLiteral("大写锁定已打开；含有全角字符"));
    EXPECT_EQ(box.edit()->accessibleDescription(), box.warning());
    keyboard.set(false);
    EXPECT_EQ(box.warning(), QStringLiteral("含有全角字符"));
    box.setText(QStringLiteral("密钥pass~"));
    EXPECT_EQ(box.warning(), QString());
    EXPECT_TRUE(hasFullWidth(QStringLiteral("a\u3000b")));
}

TEST_F(KeyBoxTest, WipingEmptiesTheBoxAndSparesTextsThatOthersHold) {
    const QString kept = QStringLiteral("literal in read-only memory");
    box.setText(kept);
    box.edit()->setText(QStringLiteral("another literal"));
    box.wipe();
    EXPECT_EQ(kept, QStringLiteral("literal in read-only memory"));
    QTest::keyClicks(box.edit(), QStringLiteral("typed"));
    const QString taken = box.text();
    box.wipe();
    EXPECT_EQ(box.text(), QString());
    EXPECT_EQ(taken, QStringLiteral("typed"));
    EXPECT_FALSE(box.edit()->isUndoAvailable());
    QTest::keyClicks(box.edit(), QStringLiteral("again"));
    const QChar* buffer = box.edit()->QLineEdit::text().constData();
    EXPECT_EQ(*buffer, u'a');
}

TEST_F(KeyBoxTest, LongestLengthAndEnterAreThoseOfALineEdit) {
    box.setMaxLength(4);
    int edits = 0;
    int returns = 0;
    QObject::connect(&box, &KeyBox::textEdited, [&] { ++edits; });
    QObject::connect(&box, &KeyBox::returnPressed, [&] { ++returns; });
    box.setText(QStringLiteral("ab"));
    EXPECT_EQ(edits, 0);
    box.edit()->end(false);
    QTest::keyClicks(box.edit(), QStringLiteral("cdef"));
    QTest::keyClick(box.edit(), Qt::Key_Return);
    EXPECT_EQ(box.text(), QStringLiteral("abcd"));
    EXPECT_EQ(edits, 2);
    EXPECT_EQ(returns, 1);
}

}  // namespace
}  // namespace keeper
