// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/frm_main.h"

#include <QCloseEvent>
#include <QMenuBar>
#include <QScreen>
#include <QSplitter>
#include <QStackedWidget>
#include <QToolBar>
#include <QToolButton>

#include "app/program_info.h"
#include "ui/detail_pane.h"
#include "ui/empty_pane.h"
#include "ui/widgets/named.h"
#include "workspace/directory_commands.h"
#include "workspace/edit_pane.h"
#include "workspace/entry_disposal.h"
#include "workspace/form_size.h"
#include "workspace/sheets.h"

namespace keeper {

frmMain::frmMain(QWidget* parent) : QMainWindow(parent), m_panels(new StatusPanelBar(this)) {
    setObjectName(QStringLiteral("frmMain"));
    setStatusBar(m_panels);
    SetCaption({});
    resize(fontMetrics().averageCharWidth() * 140, fontMetrics().height() * 38);
}

void frmMain::SetCaption(const QString& userName) {
    setWindowTitle(userName.isEmpty() ? programTitle()
                                      : programTitle() + QStringLiteral(" - ") + userName);
}

void frmMain::bringToFront() {
    setWindowState((windowState() & ~Qt::WindowMinimized) | Qt::WindowActive);
    show();
    raise();
    activateWindow();
}

void frmMain::attach(const MainWindowLogic& logic) {
    m_logic.emplace(logic);
    // Not before: the window is there long before a person can see it.
    m_actions = new MainActions(this);
    m_actions->fillMenuBar(menuBar());
    buildToolbar();
    stSheets = new SheetsPanel(logic.sheets, *m_actions);
    picDetail = new DetailPane(logic.pane, logic.disposal);
    imgBG = new EmptyPane;
    m_right = new QStackedWidget;
    m_right->addWidget(imgBG);
    m_right->addWidget(picDetail);
    m_halves = named(new QSplitter, "picSeparator");
    m_halves->addWidget(stSheets);
    m_halves->addWidget(m_right);
    m_halves->setStretchFactor(0, 0);
    m_halves->setStretchFactor(1, 1);
    m_halves->setChildrenCollapsible(false);
    setCentralWidget(m_halves);
    connectEntryCommands();
    connectDirectoryCommands();
    connectViewCommands();
    connect(imgBG, &EmptyPane::doubleClicked, this,
            [this] { m_logic->sheets.sheets.doubleClickBackground(); });
}

void frmMain::buildToolbar() {
    m_toolbar = addToolBar(QStringLiteral("工具栏"));
    m_toolbar->setObjectName(QStringLiteral("toolbar"));
    m_toolbar->setMovable(false);
    m_toolbar->setContextMenuPolicy(Qt::PreventContextMenu);
    m_toolbar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    const auto add = [this](const char* command, const QString& text,
                            const std::vector<const char*>& choices = {}) {
        QAction* action = m_actions->action(QString::fromLatin1(command));
        action->setIconText(text);
        m_toolbar->addAction(action);
        auto* button = qobject_cast<QToolButton*>(m_toolbar->widgetForAction(action));
        if (choices.empty() || button == nullptr) {
            return;
        }
        auto* menu = new QMenu(button);
        for (const char* choice : choices) {
            menu->addAction(m_actions->action(QString::fromLatin1(choice)));
        }
        button->setMenu(menu);
        button->setPopupMode(QToolButton::MenuButtonPopup);
    };
    add("mn_addSingle", QStringLiteral("添　加"), {"mn_addSingle", "mn_addBatch"});
    add("mn_modifySingle", QStringLiteral("修　改"), {"mn_modifySingle", "mn_modifyBatch"});
    add("mn_save", QStringLiteral("保　存"));
    add("mn_cancel", QStringLiteral("取　消"));
    add("mn_delete", QStringLiteral("删　除"));
    m_toolbar->addSeparator();
    add("mn_find", QStringLiteral("查　找"));
    add("mn_refreshMain", QStringLiteral("刷　新"));
    m_toolbar->addSeparator();
    add("mn_activate", QStringLiteral("打　开"));
    add("AddBookmark", QStringLiteral("书　签"), {"AddBookmark", "RemoveBookmark"});
    add("mn_safeCryption", QStringLiteral("加　密"), {"mn_fastCryption", "mn_safeCryption"});
    m_toolbar->addSeparator();
    add("mn_clearBuffer", QStringLiteral("清　空"));
    add("mn_switchOneKeyMode", QStringLiteral("一　键"));
}

void frmMain::connectEntryCommands() {
    EditPane& pane = m_logic->pane;
    Sheets& sheets = m_logic->sheets.sheets;
    EntryDisposal& disposal = m_logic->disposal;
    const auto command = [this](const char* name, std::function<void()> work) {
        m_actions->carryOut(QString::fromLatin1(name), std::move(work));
    };
    // The micro form has no pane to type into.
    const auto editing = [this, &command](const char* name, const std::function<void()>& work) {
        command(name, [this, work] {
            if (m_isMicro) {
                mn_formSize();
            }
            if (!m_isMicro) {
                work();
            }
        });
    };
    editing("mn_addSingle", [&pane] { pane.EnterAdd(true); });
    editing("mn_addBatch", [&pane] { pane.EnterAdd(false); });
    editing("mn_dirAddEntry", [&pane] { pane.EnterAdd(false); });
    editing("mn_modifySingle", [&pane] { pane.EnterModify(true); });
    editing("mn_modifyBatch", [&pane] { pane.EnterModify(false); });
    editing("mn_dirModifyEntry", [&pane] { pane.EnterModify(false); });
    command("mn_save", [&pane] { pane.mn_save(); });
    command("mn_cancel", [&pane] { pane.mn_cancel(); });
    command("mn_delete", [&disposal] { disposal.mn_delete(); });
    command("mn_dirDeleteEntry", [&disposal] { disposal.mn_delete(); });
    command("AddBookmark", [&sheets] { sheets.AddBookmark(); });
    command("RemoveBookmark", [this, &sheets] { sheets.RemoveBookmark(stSheets->bookmarkRow()); });
}

void frmMain::connectDirectoryCommands() {
    DirectoryCommands& directories = m_logic->sheets.directories;
    Sheets& sheets = m_logic->sheets.sheets;
    const auto command = [this](const char* name, std::function<void()> work) {
        m_actions->carryOut(QString::fromLatin1(name), std::move(work));
    };
    command("mn_dirNewSub", [&directories] { directories.mn_dirNewSub(); });
    command("mn_dirRename", [&directories] { directories.mn_dirRename(); });
    command("mn_dirDelete", [&directories] { directories.mn_dirDelete(); });
    command("mn_dirClear", [&directories] { directories.mn_dirClear(); });
    command("mn_dirExpand", [&sheets] { sheets.mn_dirExpand(); });
    command("mn_dirCollapse", [&sheets] { sheets.mn_dirCollapse(); });
    auto* menu = menuBar()->findChild<QMenu*>(QStringLiteral("mnDirectory"));
    connect(menu, &QMenu::aboutToShow, this, [this, &sheets] {
        const QString key = sheets.state().selectedKey;
        stSheets->fitDirectoryCommands(key);
        // The command deletes what the pane shows; the arrow keys may have selected another node.
        QAction* remove = m_actions->action(QStringLiteral("mn_dirDeleteEntry"));
        remove->setEnabled(remove->isEnabled() && sheets.isShown(key));
    });
}

void frmMain::connectViewCommands() {
    Sheets& sheets = m_logic->sheets.sheets;
    m_actions->carryOut(QStringLiteral("mn_refreshMain"), [&sheets] { sheets.mn_refreshMain(); });
    const auto goTo = [this, &sheets](const char* name, SheetTab tab) {
        m_actions->carryOut(QString::fromLatin1(name), [this, &sheets, tab] {
            sheets.selectTab(tab);
            stSheets->focusSheet(tab);
        });
    };
    goTo("mn_find", SheetTab::Search);
    goTo("mn_showTree", SheetTab::Directory);
    goTo("mn_showSearch", SheetTab::Search);
    goTo("mn_showFavourites", SheetTab::Favourite);
    m_actions->carryOut(QStringLiteral("mn_formSize"), [this] { mn_formSize(); });
    QAction* front = m_actions->action(QStringLiteral("mn_keepFront"));
    front->setCheckable(true);
    m_actions->carryOut(QStringLiteral("mn_keepFront"), [this, front] {
        if (m_logic->size.keepInFront(front->isChecked())) {
            setKeepFront(m_logic->size.isKeptInFront());
        }
        front->setChecked(m_logic->size.isKeptInFront());
    });
    m_actions->carryOut(QStringLiteral("mn_exit"), [this] { close(); });
}

void frmMain::start() {
    const FormSize& size = m_logic->size;
    m_originalSize = size.originalSize().isEmpty() ? this->size() : size.originalSize();
    resize(m_originalSize);
    const int width = std::clamp(size.sheetsWidth(), stSheets->minimumSizeHint().width(),
                                 std::max(m_originalSize.width() / 2, 1));
    m_halves->setSizes({width, m_originalSize.width() - width});
    const auto& services = m_logic->sheets.workspace.services;
    imgBG->setPicture(services.settings.p_themeBackground()
                          ? services.files.ResolvePath(services.settings.p_backImagePath(), false)
                          : QString());
    setMicroSize(size.isMicro());
    setKeepFront(size.isKeptInFront());
    healPlace();
}

/// A size kept on a larger screen must not put the window's frame out of reach on this one.
void frmMain::healPlace() {
    const QRect room = screen()->availableGeometry();
    resize(this->size().boundedTo(room.size()));
    if (m_isMicro) {
        const int left = m_logic->size.minLeft();
        move(left >= 0 && left < room.width() ? room.left() + left : room.left() + 13, room.top());
    }
}

void frmMain::keepGeometry() {
    if (!m_logic) {
        return;
    }
    FormSize& size = m_logic->size;
    if (m_isMicro) {
        size.minLeft(std::max(0, x() - screen()->availableGeometry().left()));
        size.originalSize(m_originalSize);
        return;
    }
    // A maximised window comes back at the size that it had before.
    size.originalSize(isMaximized() ? normalGeometry().size() : this->size());
    if (const int width = m_halves->sizes().value(0); width > 0) {
        size.sheetsWidth(width);
    }
}

void frmMain::mn_formSize() {
    if (!m_isMicro) {
        keepGeometry();
        m_originalSize = isMaximized() ? normalGeometry().size() : this->size();
    } else {
        m_logic->size.minLeft(std::max(0, x() - screen()->availableGeometry().left()));
    }
    if (!m_logic->size.mn_formSize()) {
        return;
    }
    setMicroSize(m_logic->size.isMicro());
    setKeepFront(m_logic->size.isKeptInFront());
}

void frmMain::setMicroSize(bool isMicro) {
    m_isMicro = isMicro;
    m_right->setVisible(!isMicro);
    m_toolbar->setVisible(!isMicro);
    m_actions->setCaption(QStringLiteral("mn_formSize"),
                          m_logic->size.caption() + QStringLiteral("(&M)"));
    if (isMaximized()) {
        showNormal();
    }
    if (isMicro) {
        resize(std::max(m_logic->size.sheetsWidth(), menuBar()->sizeHint().width()),
               m_originalSize.height());
    } else {
        resize(m_originalSize);
    }
}

void frmMain::setKeepFront(bool isFront) {
    m_actions->action(QStringLiteral("mn_keepFront"))->setChecked(isFront);
    if (windowFlags().testFlag(Qt::WindowStaysOnTopHint) == isFront) {
        return;
    }
    // Changing the flag makes a new native window, which starts hidden.
    const bool wasVisible = isVisible();
    setWindowFlag(Qt::WindowStaysOnTopHint, isFront);
    if (wasVisible) {
        show();
    }
}

void frmMain::showPane(const EditPaneState& state) {
    picDetail->show(state);
    m_right->setCurrentWidget(state.isPicDetailVisible ? static_cast<QWidget*>(picDetail) : imgBG);
    for (const char* name : {"mn_save", "mn_cancel"}) {
        m_actions->action(QString::fromLatin1(name))->setEnabled(state.canSave);
    }
    QAction* cancel = m_actions->action(QStringLiteral("mn_cancel"));
    cancel->setText(state.mn_cancel.caption);
    cancel->setIconText(state.toolbarCancel);
    cancel->setToolTip(state.mn_cancel.toolTip);
    m_panels->setPanel(StatusPanel::Operation, state.operation);
}

void frmMain::showSheets(const SheetsState& state) {
    stSheets->showSheets(state);
    m_toolbar->setEnabled(state.isToolbarEnabled);
    m_actions->action(QStringLiteral("mn_delete"))->setEnabled(state.canDelete);
}

void frmMain::expandNode(const QString& key) {
    stSheets->expandNode(key);
}

void frmMain::expandSubtree(const QString& key, bool isOpen) {
    stSheets->expandSubtree(key, isOpen);
}

void frmMain::focusTree() {
    stSheets->focusTree();
}

void frmMain::focusSearch() {
    stSheets->focusSearch();
}

void frmMain::closeEvent(QCloseEvent* event) {
    const CloseSource source = event->spontaneous() ? CloseSource::Person : CloseSource::Program;
    event->setAccepted(!m_closeJudge || m_closeJudge(source));
}

}  // namespace keeper
