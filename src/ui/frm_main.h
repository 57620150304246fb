// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QMainWindow>
#include <QPixmap>
#include <functional>

#include "ui/main_actions.h"
#include "ui/sheets_panel.h"
#include "ui/widgets/status_panel_bar.h"
#include "workspace/ports.h"

class QSplitter;
class QStackedWidget;
class QToolBar;

namespace keeper {

class DetailPane;
class EditPane;
class EmptyPane;
class EntryDisposal;
class FormSize;

/// What the main window drives; all outlive it.
struct MainWindowLogic {
    SheetsLogic sheets;
    EditPane& pane;
    EntryDisposal& disposal;
    FormSize& size;
};

/// The main window: menus, toolbar, navigation sheets, detail pane, status panels, and the question
/// whether it may close.
class frmMain : public QMainWindow, public WorkspaceView {
    Q_OBJECT

  public:
    /// How a close came about; told to the judge of closing.
    enum class CloseSource { Person, Program };
    /// False keeps the window open (it may have been hidden to the tray meanwhile).
    using CloseJudge = std::function<bool(CloseSource)>;

    explicit frmMain(QWidget* parent = nullptr);

    [[nodiscard]] StatusPanels& statusPanels() { return *m_panels; }
    /// REQUIRES: attach().
    [[nodiscard]] MainActions& actions() { return *m_actions; }
    /// Without a judge the window just closes.
    void setCloseJudge(CloseJudge judge) { m_closeJudge = std::move(judge); }
    /// Title and user name, joined by " - ".
    void SetCaption(const QString& userName);
    /// In front of everything, restored when it was minimised or hidden.
    void bringToFront();

    /// Fills the window. Once, before it is shown; `logic` needs no open database yet.
    void attach(const MainWindowLogic& logic);
    /// Size, place and looks as the settings keep them. REQUIRES: attach(), settings read.
    void start();
    /// The settings take size and place.
    void keepGeometry();
    /// Between the original and the micro size.
    void mn_formSize();

    void showPane(const EditPaneState& state) override;
    void showSheets(const SheetsState& state) override;
    void expandNode(const QString& key) override;
    void expandSubtree(const QString& key, bool isOpen) override;
    void focusTree() override;
    void focusSearch() override;

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    void buildToolbar();
    void connectEntryCommands();
    void connectDirectoryCommands();
    void connectViewCommands();
    void setMicroSize(bool isMicro);
    void setKeepFront(bool isFront);
    void healPlace();

    StatusPanelBar* m_panels;
    MainActions* m_actions = nullptr;
    CloseJudge m_closeJudge;
    std::optional<MainWindowLogic> m_logic;
    QToolBar* m_toolbar = nullptr;
    QSplitter* m_halves = nullptr;
    SheetsPanel* stSheets = nullptr;
    DetailPane* picDetail = nullptr;
    EmptyPane* imgBG = nullptr;
    QStackedWidget* m_right = nullptr;
    QSize m_originalSize;
    bool m_isMicro = false;
};

}  // namespace keeper
