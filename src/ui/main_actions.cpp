// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/main_actions.h"

#include <QMenu>
#include <QMenuBar>
#include <QWidget>
#include <utility>

#include "ui/theme/icons.h"
#include "ui/widgets/caption.h"

namespace keeper {
namespace {

constexpr int kNoGlyph = -1;

struct Command {
    const char* name;
    const char16_t* text;
    const char* shortcut;
    int glyph;
};

struct MenuPlan {
    const char* name;
    const char16_t* title;
    std::vector<Command> commands;
};

constexpr int glyphNumber(Glyph glyph) {
    return static_cast<int>(glyph);
}

// Ctrl with E, D, K, U, Delete and Backspace edits a line in text fields, which would swallow it.

/// A command without a name is a separator.
const Command kSeparator{nullptr, u"", "", kNoGlyph};

MenuPlan fileMenu() {
    return {"mnFile",
            u"文件(&F)",
            {{"mn_checkout", u"导出(&X)…", "", kNoGlyph},
             {"mn_dispatch", u"分派数据库(&D)…", "", kNoGlyph},
             {"mn_synchLog", u"同步日志(&S)…", "", kNoGlyph},
             kSeparator,
             {"mn_lockManager", u"锁定管理器(&L)", "Ctrl+L", glyphNumber(Glyph::Lock)},
             {"mn_exit", u"退出(&Q)", "Ctrl+Q", glyphNumber(Glyph::Exit)}}};
}

MenuPlan entryMenu() {
    return {"mnEntry",
            u"条目(&E)",
            {{"mn_addSingle", u"单条添加(&A)", "Ctrl+N", glyphNumber(Glyph::Add)},
             {"mn_addBatch", u"批量添加(&B)", "Ctrl+Shift+N", kNoGlyph},
             {"mn_modifySingle", u"单条修改(&M)", "F2", glyphNumber(Glyph::Edit)},
             {"mn_modifyBatch", u"批量修改(&H)", "Shift+F2", kNoGlyph},
             {"mn_save", u"保存(&S)", "Ctrl+S", glyphNumber(Glyph::Save)},
             {"mn_cancel", u"取消(&C)", "Shift+Esc", glyphNumber(Glyph::Undo)},
             {"mn_delete", u"删除(&D)", "Alt+Del", glyphNumber(Glyph::Delete)},
             kSeparator,
             {"AddBookmark", u"添加书签(&K)", "Ctrl+B", glyphNumber(Glyph::Bookmark)},
             {"RemoveBookmark", u"移除书签(&V)", "Ctrl+Shift+B", kNoGlyph},
             kSeparator,
             {"mn_activate", u"打开(&O)", "Ctrl+O", glyphNumber(Glyph::Link)},
             {"mn_showNumber", u"显示号码(&N)", "", kNoGlyph},
             {"mn_showPassword", u"显示密码(&P)", "", glyphNumber(Glyph::Eye)},
             {"mn_copyNumber", u"复制号码(&U)", "Ctrl+Shift+U", kNoGlyph},
             {"mn_copyPassword", u"复制密码(&W)", "Ctrl+Shift+P", glyphNumber(Glyph::Copy)},
             {"mn_clearBuffer", u"清空剪贴板(&Z)", "", kNoGlyph},
             kSeparator,
             {"mn_safeCryption", u"安全加密/解密文件(&Y)", "", glyphNumber(Glyph::Shield)},
             {"mn_fastCryption", u"快速加密/解密文件(&F)", "", kNoGlyph}}};
}

MenuPlan directoryMenu() {
    return {"mnDirectory",
            u"目录(&D)",
            {{"mn_dirNewSub", u"新建子目录(&N)", "", glyphNumber(Glyph::Folder)},
             {"mn_dirRename", u"重命名目录(&R)", "", kNoGlyph},
             {"mn_dirDelete", u"删除目录(&D)", "", glyphNumber(Glyph::Delete)},
             {"mn_dirClear", u"清空目录(&C)", "", kNoGlyph},
             kSeparator,
             {"mn_dirExpand", u"全部展开(&E)", "", kNoGlyph},
             {"mn_dirCollapse", u"全部折叠(&L)", "", kNoGlyph},
             kSeparator,
             {"mn_dirAddEntry", u"批量添加条目(&A)", "", glyphNumber(Glyph::Add)},
             {"mn_dirModifyEntry", u"批量修改条目(&M)", "", glyphNumber(Glyph::Edit)},
             {"mn_dirDeleteEntry", u"删除条目(&T)", "", glyphNumber(Glyph::Delete)}}};
}

MenuPlan viewMenu() {
    return {"mnView",
            u"查看(&V)",
            {{"mn_refreshMain", u"刷新(&R)", "F5", glyphNumber(Glyph::Refresh)},
             {"mn_find", u"查找条目(&F)", "Ctrl+F", glyphNumber(Glyph::Search)},
             {"mn_showTree", u"目录页(&1)", "Ctrl+1", glyphNumber(Glyph::Folder)},
             {"mn_showSearch", u"查找页(&2)", "Ctrl+2", kNoGlyph},
             {"mn_showFavourites", u"收藏页(&3)", "Ctrl+3", kNoGlyph},
             kSeparator,
             {"mn_formSize", u"微型尺寸(&M)", "Ctrl+M", kNoGlyph},
             {"mn_keepFront", u"保持前置(&K)", "", kNoGlyph},
             kSeparator,
             {"mn_viewSysLog", u"系统日志(&L)…", "", glyphNumber(Glyph::Log)},
             {"mn_viewEntLog", u"密码日志(&P)…", "", kNoGlyph}}};
}

MenuPlan manageMenu() {
    return {"mnManage",
            u"管理(&G)",
            {{"mn_assNum", u"关联号码(&N)…", "", kNoGlyph},
             {"mn_assPwd", u"关联密码(&P)…", "", glyphNumber(Glyph::Key)},
             kSeparator,
             {"mn_modifyLgnKey", u"修改登录密钥(&S)…", "", glyphNumber(Glyph::Key)},
             {"mn_modifyIdpPwd", u"修改独立密码(&I)…", "", kNoGlyph},
             {"mn_manageSecret", u"管理密码与问题(&E)…", "", glyphNumber(Glyph::Hourglass)},
             {"mn_secureQuestion", u"安全问题(&Q)…", "", glyphNumber(Glyph::Question)},
             {"mn_authority", u"权限管理(&A)…", "", glyphNumber(Glyph::Shield)},
             {"mn_columnCryption", u"列加密(&C)…", "", kNoGlyph},
             {"mn_autoGuardSettings", u"自动保护设置(&G)…", "", glyphNumber(Glyph::Settings)},
             kSeparator,
             {"mn_confineBranch", u"限定本机登录(&B)", "", kNoGlyph},
             {"mn_switchMachine", u"主机转移(&T)", "", kNoGlyph},
             {"mn_branchManage", u"分机管理(&F)…", "", kNoGlyph},
             kSeparator,
             {"mn_switchOneKeyMode", u"切换一键填充模式(&O)", "", glyphNumber(Glyph::Keyboard)}}};
}

MenuPlan helpMenu() {
    return {"mnHelp", u"帮助(&H)", {{"mn_about", u"关于(&A)…", "F1", glyphNumber(Glyph::Info)}}};
}

std::vector<MenuPlan> menuPlans() {
    return {fileMenu(), entryMenu(), directoryMenu(), viewMenu(), manageMenu(), helpMenu()};
}

QString later() {
    return QStringLiteral("此功能将在以后的版本中提供");
}

}  // namespace

MainActions::MainActions(QWidget* window) {
    for (const MenuPlan& menu : menuPlans()) {
        for (const Command& command : menu.commands) {
            if (command.name == nullptr) {
                continue;
            }
            auto* action = new QAction(QString::fromUtf16(command.text), window);
            const QString name = QString::fromLatin1(command.name);
            action->setObjectName(name);
            if (command.glyph != kNoGlyph) {
                action->setIcon(glyphIcon(static_cast<Glyph>(command.glyph)));
            }
            if (*command.shortcut != '\0') {
                action->setShortcut(QKeySequence(QString::fromLatin1(command.shortcut)));
            }
            action->setEnabled(false);
            action->setToolTip(plainCaption(action->text()) + u'\n' + later());
            window->addAction(action);
            m_actions.insert(name, action);
        }
    }
}

QAction* MainActions::action(const QString& name) const {
    Q_ASSERT(m_actions.contains(name));
    return m_actions.value(name);
}

void MainActions::carryOut(const QString& name, std::function<void()> work) {
    QAction* command = action(name);
    setCaption(name, command->text());
    command->setEnabled(true);
    connect(command, &QAction::triggered, this, std::move(work));
}

void MainActions::setCaption(const QString& name, const QString& caption) {
    QAction* command = action(name);
    command->setText(caption);
    const QString keys = command->shortcut().toString(QKeySequence::NativeText);
    const QString words = plainCaption(caption);
    command->setToolTip(keys.isEmpty() ? words : words + QStringLiteral("  ") + keys);
}

void MainActions::fillMenuBar(QMenuBar* bar) const {
    for (const MenuPlan& plan : menuPlans()) {
        QMenu* menu = bar->addMenu(QString::fromUtf16(plan.title));
        menu->setObjectName(QString::fromLatin1(plan.name));
        menu->setToolTipsVisible(true);
        for (const Command& command : plan.commands) {
            if (command.name == nullptr) {
                menu->addSeparator();
            } else {
                menu->addAction(action(QString::fromLatin1(command.name)));
            }
        }
    }
}

}  // namespace keeper
