// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QMainWindow>
#include <functional>

#include "ui/widgets/status_panel_bar.h"

namespace keeper {

/// The main window: its frame, its status panels, and the question whether it may close.
class frmMain : public QMainWindow {
    Q_OBJECT

  public:
    /// How a close came about; told to the judge of closing.
    enum class CloseSource { Person, Program };
    /// False keeps the window open (it may have been hidden to the tray meanwhile).
    using CloseJudge = std::function<bool(CloseSource)>;

    explicit frmMain(QWidget* parent = nullptr);

    [[nodiscard]] StatusPanels& statusPanels() { return *m_panels; }
    /// Without a judge the window just closes.
    void setCloseJudge(CloseJudge judge) { m_closeJudge = std::move(judge); }
    /// Title and user name, joined by " - ".
    void SetCaption(const QString& userName);
    /// In front of everything, restored when it was minimised or hidden.
    void bringToFront();

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    StatusPanelBar* m_panels;
    CloseJudge m_closeJudge;
};

}  // namespace keeper
