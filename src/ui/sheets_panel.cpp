// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/sheets_panel.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QMenu>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QShortcut>
#include <QSplitter>
#include <QToolButton>
#include <QVBoxLayout>

#include "store/numbering.h"
#include "ui/main_actions.h"
#include "ui/theme/colors.h"
#include "ui/theme/icons.h"
#include "ui/widgets/directory_tree_view.h"
#include "ui/widgets/item_delegate.h"
#include "ui/widgets/named.h"
#include "workspace/directory_commands.h"
#include "workspace/sheets.h"
#include "workspace/tree_drag.h"

namespace keeper {
namespace {

/// A flat list: Enter and Space choose like the left button, the right one asks where the line
/// lies.
class LineList final : public QListView {
  public:
    std::function<void(const QString&)> onChosen;
    std::function<void(const QString&)> onAsked;

  protected:
    void keyPressEvent(QKeyEvent* event) override {
        const bool isChoosing = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter ||
                                event->key() == Qt::Key_Space;
        if (isChoosing && currentIndex().isValid()) {
            onChosen(currentIndex().data(NumberRole).toString());
            return;
        }
        QListView::keyPressEvent(event);
    }
    void mouseReleaseEvent(QMouseEvent* event) override {
        QListView::mouseReleaseEvent(event);
        const QModelIndex index = indexAt(event->pos());
        if (!index.isValid()) {
            return;
        }
        const QString number = index.data(NumberRole).toString();
        if (event->button() == Qt::LeftButton) {
            onChosen(number);
        } else if (event->button() == Qt::RightButton) {
            onAsked(number);
        }
    }
};

/// A colour as the settings hold it, blue in the upper byte; those of the system, which have the
/// highest bit set, are left to the desktop.
std::optional<QColor> storedColour(const std::optional<std::int32_t>& value) {
    if (!value || *value < 0) {
        return std::nullopt;
    }
    const auto bits = static_cast<std::uint32_t>(*value);
    return QColor(static_cast<int>(bits & 0xFFU), static_cast<int>((bits >> 8U) & 0xFFU),
                  static_cast<int>((bits >> 16U) & 0xFFU));
}

}  // namespace

SheetsPanel::SheetsPanel(const SheetsLogic& logic, const MainActions& actions, QWidget* parent)
    : QTabWidget(parent),
      m_logic(logic),
      tvwDirectory(named(new DirectoryTreeView, "tvwDirectory")),
      txtSearch(named(new QLineEdit, "txtSearch")),
      lsbSearch(buildList("lsbSearch", QStringLiteral("全部条目"), logic.workspace.lsbSearch)),
      lblTotal(named(new QLabel, "lblTotal")),
      lblRecentUpdates(named(new QLabel, "lblRecentUpdates")),
      lsbRecentUpdate(buildList("lsbRecentUpdate", QStringLiteral("最近更新"),
                                logic.workspace.lsbRecentUpdate)),
      lblBookmark(named(new QLabel, "lblBookmark")),
      lsbBookmark(buildList("lsbBookmark", QStringLiteral("书签"), logic.workspace.lsbBookmark)),
      mn_DirPopup(new QMenu(this)) {
    setObjectName(QStringLiteral("stSheets"));
    setAccessibleName(QStringLiteral("导航"));
    setDocumentMode(true);
    addTab(buildTree(actions), glyphIcon(Glyph::Folder), QStringLiteral("目录"));
    addTab(buildSearch(), glyphIcon(Glyph::Search), QStringLiteral("查找"));
    addTab(buildFavourites(actions), glyphIcon(Glyph::Bookmark), QStringLiteral("收藏"));
    buildPopup(actions);
    connect(this, &QTabWidget::currentChanged, this, [this](int tab) {
        if (!m_isShowing) {
            m_logic.sheets.selectTab(static_cast<SheetTab>(tab));
        }
    });
    connect(this, &QTabWidget::tabBarClicked, this, [this](int tab) {
        if (tab == currentIndex() && tab == static_cast<int>(SheetTab::Search)) {
            focusSearch();
        }
    });
}

QWidget* SheetsPanel::buildTree(const MainActions& actions) {
    tvwDirectory->setModel(&m_logic.workspace.tvwDirectory);
    tvwDirectory->setItemDelegate(new ItemDelegate(ItemDelegate::Number::Hidden, tvwDirectory));
    tvwDirectory->setAccessibleName(QStringLiteral("目录树"));
    connect(tvwDirectory, &DirectoryTreeView::nodeClicked, this,
            [this](const QString& key) { m_logic.sheets.clickTree(key); });
    connect(tvwDirectory, &DirectoryTreeView::nodePressedByKey, this,
            [this] { m_logic.sheets.pressTree(); });
    connect(tvwDirectory, &DirectoryTreeView::nodeMoved, this, [this](const QString& key) {
        if (!m_isShowing) {
            m_logic.sheets.selectNode(key);
        }
    });
    connect(tvwDirectory, &DirectoryTreeView::popupWanted, this, &SheetsPanel::showPopup);
    connect(tvwDirectory, &DirectoryTreeView::deletePressed, this, [this, &actions] {
        const QString key = m_logic.sheets.state().selectedKey;
        fitDirectoryCommands(key);
        actions
            .action(TestEntDir(key) ? QStringLiteral("mn_dirDeleteEntry")
                                    : QStringLiteral("mn_dirDelete"))
            ->trigger();
    });
    connect(tvwDirectory, &DirectoryTreeView::nodeDropped, this,
            [this](const QString& source, const QString& target) {
                m_logic.drag.drop(source, target);
            });
    return tvwDirectory;
}

QListView* SheetsPanel::buildList(const char* name, const QString& accessibleName,
                                  ItemListModel& model) {
    auto* list = named(new LineList, name);
    list->setModel(&model);
    list->setUniformItemSizes(true);
    list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list->setItemDelegate(new ItemDelegate(ItemDelegate::Number::AtTheRight, list));
    list->setAccessibleName(accessibleName);
    list->setToolTip(QStringLiteral("左键：显示条目；右键：显示条目在目录中的位置"));
    list->onChosen = [this](const QString& number) { m_logic.sheets.ShowListEntry(number); };
    list->onAsked = [this](const QString& number) { m_logic.sheets.showInTree(number); };
    return list;
}

QWidget* SheetsPanel::withHint(QListView* list, const QString& hint) {
    auto* pages = new QStackedWidget;
    auto* label = new QLabel(hint);
    label->setWordWrap(true);
    label->setAlignment(Qt::AlignCenter);
    label->setForegroundRole(QPalette::PlaceholderText);
    label->setMargin(label->fontMetrics().height());
    pages->addWidget(list);
    pages->addWidget(label);
    const auto choose = [pages, list] {
        pages->setCurrentIndex(list->model()->rowCount() == 0 ? 1 : 0);
    };
    connect(list->model(), &QAbstractItemModel::modelReset, pages, choose);
    connect(list->model(), &QAbstractItemModel::rowsInserted, pages, choose);
    connect(list->model(), &QAbstractItemModel::rowsRemoved, pages, choose);
    choose();
    return pages;
}

QWidget* SheetsPanel::buildSearch() {
    auto* page = new QWidget;
    auto* column = new QVBoxLayout(page);
    txtSearch->setPlaceholderText(QStringLiteral("输入标题或完整编号来查找"));
    txtSearch->setAccessibleName(QStringLiteral("查找条目"));
    txtSearch->setClearButtonEnabled(true);
    txtSearch->addAction(glyphIcon(Glyph::Search), QLineEdit::LeadingPosition);
    connect(txtSearch, &QLineEdit::textChanged, this,
            [this](const QString& text) { m_logic.sheets.searchFor(text); });
    connect(txtSearch, &QLineEdit::returnPressed, this, [this] { lsbSearch->setFocus(); });
    auto* down = new QShortcut(QKeySequence(Qt::Key_Down), txtSearch);
    down->setContext(Qt::WidgetShortcut);
    connect(down, &QShortcut::activated, this, [this] { lsbSearch->setFocus(); });
    lblTotal->setToolTip(QStringLiteral("所列出条目的总数"));
    auto* cmdRefreshQuery = named(new QPushButton(QStringLiteral("刷新")), "cmdRefreshQuery");
    auto* cmdSearchEngine = named(new QPushButton(QStringLiteral("检索器(&F)")), "cmdSearchEngine");
    for (QPushButton* button : {cmdRefreshQuery, cmdSearchEngine}) {
        button->setEnabled(false);
        button->setToolTip(QStringLiteral("条目检索器将在以后的版本中提供"));
    }
    auto* foot = new QHBoxLayout;
    foot->addWidget(new QLabel(QStringLiteral("条目总数：")));
    foot->addWidget(lblTotal);
    foot->addStretch();
    foot->addWidget(cmdRefreshQuery);
    foot->addWidget(cmdSearchEngine);
    column->addWidget(txtSearch);
    column->addWidget(
        withHint(lsbSearch, QStringLiteral("还没有条目。\n按 Ctrl+N 添加第一个条目。")), 1);
    column->addLayout(foot);
    return page;
}

QWidget* SheetsPanel::buildFavourites(const MainActions& actions) {
    auto* halves = new QSplitter(Qt::Vertical);
    const auto half = [&](QLabel* title, QWidget* list, const QList<QAction*>& commands) {
        auto* box = new QWidget;
        auto* column = new QVBoxLayout(box);
        auto* head = new QHBoxLayout;
        head->addWidget(title, 1);
        for (QAction* command : commands) {
            auto* button = new QToolButton;
            button->setDefaultAction(command);
            button->setAutoRaise(true);
            head->addWidget(button);
        }
        column->addLayout(head);
        column->addWidget(list, 1);
        halves->addWidget(box);
    };
    half(lblRecentUpdates,
         withHint(lsbRecentUpdate, QStringLiteral("新增或修改过的条目会出现在这里。")), {});
    half(lblBookmark,
         withHint(lsbBookmark, QStringLiteral("选择一个条目，按 Ctrl+B 把它加入书签。")),
         {actions.action(QStringLiteral("AddBookmark")),
          actions.action(QStringLiteral("RemoveBookmark"))});
    return halves;
}

void SheetsPanel::buildPopup(const MainActions& actions) {
    mn_DirPopup->setObjectName(QStringLiteral("mn_DirPopup"));
    for (const char* name :
         {"mn_dirNewSub", "mn_dirRename", "mn_dirDelete", "mn_dirClear", "", "mn_dirExpand",
          "mn_dirCollapse", "", "mn_dirAddEntry", "mn_dirModifyEntry", "mn_dirDeleteEntry"}) {
        if (*name == '\0') {
            mn_DirPopup->addSeparator();
        } else {
            mn_DirPopup->addAction(actions.action(QString::fromLatin1(name)));
        }
    }
}

void SheetsPanel::fitDirectoryCommands(const QString& key) {
    const DirPopup fit = m_logic.sheets.SetDirPopup(key);
    const auto set = [this](const char* name, bool isEnabled) {
        for (QAction* action : mn_DirPopup->actions()) {
            if (action->objectName() == QLatin1String(name)) {
                action->setEnabled(isEnabled);
            }
        }
    };
    set("mn_dirDeleteEntry", fit.mn_dirDeleteEntry);
    set("mn_dirNewSub", fit.mn_dirNewSub);
    set("mn_dirRename", fit.mn_dirRename);
    set("mn_dirDelete", fit.mn_dirDelete);
    set("mn_dirClear", fit.mn_dirClear);
    set("mn_dirExpand", fit.mn_dirExpand);
    set("mn_dirCollapse", fit.mn_dirCollapse);
    for (QAction* action : mn_DirPopup->actions()) {
        if (action->objectName() == QLatin1String("mn_dirAddEntry") ||
            action->objectName() == QLatin1String("mn_dirModifyEntry")) {
            action->setVisible(fit.areEditItemsVisible);
        }
    }
}

void SheetsPanel::showPopup(const QString& key, QPoint at) {
    // A click that was refused leaves the selection where it was; the commands would act there.
    if (key == m_logic.sheets.state().selectedKey) {
        fitDirectoryCommands(key);
        mn_DirPopup->popup(at);
    }
}

QModelIndex SheetsPanel::indexOf(const QString& key) const {
    const ItemTreeModel& model = m_logic.workspace.tvwDirectory;
    const ItemId id = model.tree().findKey(key);
    return key.isEmpty() ? QModelIndex() : model.indexOf(id);
}

void SheetsPanel::showSheets(const SheetsState& state) {
    const QScopedValueRollback<bool> showing(m_isShowing, true);
    setCurrentIndex(static_cast<int>(state.tab));
    const QModelIndex selected = indexOf(state.selectedKey);
    if (selected != tvwDirectory->currentIndex()) {
        tvwDirectory->setCurrentIndex(selected);
        if (selected.isValid()) {
            tvwDirectory->scrollTo(selected);
        }
    }
    // The mouse and the arrow keys have made the node current before the logic hears of it.
    if (state.isSingleExpansion && selected.isValid() && state.selectedKey != m_branchAlone) {
        tvwDirectory->showBranchAlone(selected);
    }
    m_branchAlone = state.selectedKey;
    // A line that was chosen in the list stays chosen: only a new search moves it.
    if (state.searchRow != m_searchRow) {
        m_searchRow = state.searchRow;
        lsbSearch->setCurrentIndex(m_logic.workspace.lsbSearch.index(state.searchRow));
    }
    showWhetherFound();
    lblTotal->setText(state.lblTotal);
    lblRecentUpdates->setText(state.lblRecentUpdates);
    lblBookmark->setText(state.lblBookmark);
    colourTree(state);
}

/// A search that finds nothing says so while it is typed.
void SheetsPanel::showWhetherFound() {
    const bool isMissing =
        !txtSearch->text().isEmpty() && m_logic.sheets.state().searchRow == ItemListModel::kNoRow;
    QPalette palette = this->palette();
    if (isMissing) {
        palette.setColor(QPalette::Text, themeColor(ThemeColor::Danger, isDarkPalette(palette)));
    }
    txtSearch->setPalette(palette);
    txtSearch->setToolTip(isMissing ? QStringLiteral("没有找到这个标题或编号") : QString());
    txtSearch->setAccessibleDescription(txtSearch->toolTip());
}

void SheetsPanel::colourTree(const SheetsState& state) {
    QPalette palette = this->palette();
    if (const auto back = storedColour(state.treeBackground)) {
        palette.setColor(QPalette::Base, *back);
        // A ground of its own needs a text that is read on it.
        palette.setColor(QPalette::Text, back->lightnessF() > 0.5F ? Qt::black : Qt::white);
    }
    if (const auto fore = storedColour(state.treeForeground)) {
        palette.setColor(QPalette::Text, *fore);
    }
    if (tvwDirectory->palette() != palette) {
        tvwDirectory->setPalette(palette);
    }
}

void SheetsPanel::expandNode(const QString& key) {
    tvwDirectory->expand(indexOf(key));
}

void SheetsPanel::expandSubtree(const QString& key, bool isOpen) {
    const QModelIndex index = indexOf(key);
    if (!index.isValid()) {
        return;
    }
    tvwDirectory->setUpdatesEnabled(false);
    if (isOpen) {
        tvwDirectory->expandRecursively(index);
    } else {
        tvwDirectory->collapseRecursively(index);
    }
    tvwDirectory->setUpdatesEnabled(true);
}

void SheetsPanel::focusTree() {
    tvwDirectory->setFocus(Qt::OtherFocusReason);
}

void SheetsPanel::focusSearch() {
    txtSearch->setFocus(Qt::OtherFocusReason);
    txtSearch->selectAll();
}

void SheetsPanel::focusSheet(SheetTab tab) {
    switch (tab) {
        case SheetTab::Directory:
            focusTree();
            break;
        case SheetTab::Search:
            focusSearch();
            break;
        case SheetTab::Favourite:
            lsbBookmark->setFocus(Qt::OtherFocusReason);
            break;
    }
}

int SheetsPanel::bookmarkRow() const {
    const QModelIndexList selected = lsbBookmark->selectionModel()->selectedRows();
    return selected.isEmpty() ? ItemListModel::kNoRow : selected.first().row();
}

}  // namespace keeper
