// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QInputMethodEvent>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QPlainTextEdit>
#include <QSet>
#include <QSignalSpy>
#include <QStackedWidget>
#include <QTest>

#include "ui/main_window_fixture.h"
#include "ui/widgets/directory_tree_view.h"

namespace keeper {
namespace {

class MainWindow : public MainWindowTest {
  protected:
    template <typename Widget>
    Widget* part(const char* name) {
        auto* widget = m_window.findChild<Widget*>(QString::fromLatin1(name));
        EXPECT_NE(widget, nullptr) << name;
        return widget;
    }
    DirectoryTreeView* tree() { return part<DirectoryTreeView>("tvwDirectory"); }
    QLineEdit* title() { return part<QLineEdit>("txtTitle"); }
    QAction* command(const char* name) {
        return m_window.actions().action(QString::fromLatin1(name));
    }
    /// As a person does, with the button of the mouse on the node's text.
    void clickNode(const QString& key, Qt::MouseButton button = Qt::LeftButton) {
        const QModelIndex index =
            m_workspace.tvwDirectory.indexOf(m_workspace.tvwDirectory.tree().findKey(key));
        ASSERT_TRUE(index.isValid()) << key.toStdString();
        tree()->scrollTo(index);
        QTest::mouseClick(tree()->viewport(), button, {}, tree()->visualRect(index).center());
    }
    static QStringList enabled(const QMenu& menu) {
        QStringList names;
        for (const QAction* action : menu.actions()) {
            if (!action->isSeparator() && action->isEnabled() && action->isVisible()) {
                names << action->objectName().mid(6);
            }
        }
        return names;
    }
};

TEST_F(MainWindow, AnEntryIsChosenReadChangedAndSaved) {
    clickNode(u"ent0102"_s);
    EXPECT_EQ(title()->text(), u"论坛"_s);
    EXPECT_TRUE(title()->isReadOnly());
    const auto* password = part<QComboBox>("cboPassword");
    EXPECT_FALSE(password->currentText().contains(u"pass-2"_s));
    EXPECT_FALSE(command("mn_save")->isEnabled());

    command("mn_modifySingle")->trigger();
    EXPECT_FALSE(title()->isReadOnly());
    EXPECT_EQ(QApplication::focusWidget(), title());
    title()->clear();
    // What an input method hands over arrives whole.
    QInputMethodEvent commit;
    commit.setCommitString(u"新论坛"_s);
    QApplication::sendEvent(title(), &commit);
    part<QPlainTextEdit>("txtRemarks")->setPlainText(u"第一行\n第二行"_s);
    ASSERT_TRUE(command("mn_save")->isEnabled());
    QTest::keyClick(&m_window, Qt::Key_S, Qt::ControlModifier);

    EXPECT_EQ(value(u"select Title||'|'||Remarks from tb_Entry where entNo='02'"_s),
              u"新论坛|第一行\n第二行"_s);
    EXPECT_TRUE(title()->isReadOnly());
    EXPECT_EQ(tree()->currentIndex().data().toString(), u"新论坛"_s);
    EXPECT_FALSE(command("mn_save")->isEnabled());
}

TEST_F(MainWindow, WordsThatStandForAValueNeverBecomeThePassword) {
    clickNode(u"ent0102"_s);
    command("mn_modifySingle")->trigger();
    auto* password = part<QComboBox>("cboPassword");
    ASSERT_EQ(password->currentText(), u"自定义"_s);
    password->setFocus();
    password->lineEdit()->setCursorPosition(1);
    // A paste by mouse comes in the middle.
    password->lineEdit()->insert(u"中"_s);
    Q_EMIT password->lineEdit()->textEdited(password->lineEdit()->text());
    EXPECT_EQ(m_pane.GetPasswordText(), u"中"_s);
    QTest::keyClick(password, Qt::Key_Backspace);
    EXPECT_EQ(m_pane.GetPasswordText(), QString());
    m_pane.choosePasswordName(kCustomName);
    EXPECT_EQ(m_pane.GetPasswordText(), u"pass-2"_s) << "back to the stored one";
    QTest::keyClicks(password, u"n"_s);
    EXPECT_EQ(password->lineEdit()->echoMode(), QLineEdit::Password);
    QTest::keyClicks(password, u"ew"_s);
    EXPECT_EQ(m_pane.GetPasswordText(), u"new"_s);
    command("mn_save")->trigger();
    EXPECT_EQ(value(u"select customPwd from tb_Entry where entNo='02'"_s), u"new"_s);
}

TEST_F(MainWindow, ADroppedEditLeavesTheEntryAndThePaneAsTheyWere) {
    clickNode(u"ent0102"_s);
    command("mn_modifySingle")->trigger();
    title()->setText(u"falsch"_s);
    m_prompt.answers = {Prompt::Answer::Yes};
    command("mn_cancel")->trigger();
    m_prompt.boxes.clear();
    EXPECT_EQ(title()->text(), u"论坛"_s);
    EXPECT_EQ(value(u"select Title from tb_Entry where entNo='02'"_s), u"论坛"_s);
}

TEST_F(MainWindow, TheSearchBoxSelectsAsItIsTypedAndTheListShowsTheEntry) {
    QTest::keyClick(&m_window, Qt::Key_F, Qt::ControlModifier);
    auto* search = part<QLineEdit>("txtSearch");
    ASSERT_EQ(QApplication::focusWidget(), search);
    QTest::keyClicks(search, u"010101"_s);
    auto* list = part<QListView>("lsbSearch");
    ASSERT_TRUE(list->currentIndex().isValid());
    EXPECT_EQ(list->currentIndex().data(TitleRole).toString(), u"信箱"_s);
    EXPECT_EQ(title()->text(), u"信箱"_s);

    const QModelIndex other = list->model()->index(1 - list->currentIndex().row(), 0);
    QTest::mouseClick(list->viewport(), Qt::RightButton, {}, list->visualRect(other).center());
    EXPECT_TRUE(tree()->isVisible()) << "the right button shows where the line lies";
    EXPECT_EQ(tree()->currentIndex().data().toString(), u"论坛"_s);
}

TEST_F(MainWindow, TheRightButtonOffersWhatTheNodeAllows) {
    auto* menu = part<QMenu>("mn_DirPopup");
    const QStringList ofRoot{u"NewSub"_s,   u"Clear"_s,    u"Expand"_s,
                             u"Collapse"_s, u"AddEntry"_s, u"ModifyEntry"_s};
    clickNode(u"dir01"_s, Qt::RightButton);
    ASSERT_TRUE(menu->isVisible());
    EXPECT_EQ(enabled(*menu), ofRoot);
    menu->close();
    clickNode(u"ent0102"_s, Qt::RightButton);
    EXPECT_TRUE(enabled(*menu).contains(u"DeleteEntry"_s));
    EXPECT_FALSE(enabled(*menu).contains(u"Rename"_s));
    menu->close();
}

TEST_F(MainWindow, ADropAsksAndMovesTheEntryWithItsRow) {
    m_prompt.answers = {Prompt::Answer::Yes};
    Q_EMIT tree()->nodeDropped(u"ent0102"_s, u"dir0101"_s);
    EXPECT_EQ(m_prompt.boxes.size(), 1U);
    m_prompt.boxes.clear();
    EXPECT_EQ(value(u"select dirPath||entNo from tb_Entry where Title='论坛'"_s), u"010102"_s);
    const ItemTreeModel& model = m_workspace.tvwDirectory;
    const QModelIndex moved = model.indexOf(model.tree().findKey(u"ent010102"_s));
    EXPECT_EQ(moved.parent().data(KeyRole).toString(), u"dir0101"_s);
}

TEST_F(MainWindow, EmptyListsSayWhatToDoAndCommandsOfLaterWorkSayWhyTheyRest) {
    const auto* pages = qobject_cast<QStackedWidget*>(part<QListView>("lsbBookmark")->parent());
    ASSERT_NE(pages, nullptr);
    EXPECT_EQ(pages->currentIndex(), 1);
    clickNode(u"ent0102"_s);
    command("AddBookmark")->trigger();
    EXPECT_EQ(pages->currentIndex(), 0);

    QSet<QString> shortcuts;
    for (const QAction* action : m_window.findChildren<QAction*>()) {
        const QString keys = action->shortcut().toString();
        EXPECT_TRUE(keys.isEmpty() || !shortcuts.contains(keys)) << keys.toStdString();
        shortcuts << keys;
    }
    const QAction* later = command("mn_synchLog");
    EXPECT_TRUE(later->isEnabled() || later->toolTip().contains(u"以后的版本"_s));
    for (const QWidget* widget : m_window.findChildren<QWidget*>()) {
        const bool isField = qobject_cast<const QLineEdit*>(widget) != nullptr ||
                             qobject_cast<const QAbstractItemView*>(widget) != nullptr ||
                             qobject_cast<const QPlainTextEdit*>(widget) != nullptr;
        if (isField && widget->focusPolicy() != Qt::NoFocus && widget->isVisible()) {
            EXPECT_FALSE(widget->accessibleName().isEmpty()) << widget->objectName().toStdString();
        }
    }
}

TEST_F(MainWindow, TheMicroSizeIsNarrowAndTheWayBackKeepsTheSize) {
    m_window.resize(900, 640);
    const QSize original = m_window.size();
    command("mn_formSize")->trigger();
    EXPECT_LT(m_window.width(), original.width());
    EXPECT_FALSE(title()->isVisible());
    command("mn_formSize")->trigger();
    EXPECT_EQ(m_window.size(), original);
    EXPECT_TRUE(m_near.gateAsked.empty() || m_near.gateOpens);
}

}  // namespace
}  // namespace keeper
