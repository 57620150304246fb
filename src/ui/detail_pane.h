// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QToolButton>
#include <QWidget>
#include <array>

#include "workspace/edit_pane_state.h"

class QFormLayout;

namespace keeper {

class EditPane;
class EntryDisposal;

/// The detail pane `picDetail`: shows the state of EditPane and hands it what a person enters.
class DetailPane final : public QWidget {
    Q_OBJECT

  public:
    /// Both must outlive the pane.
    DetailPane(EditPane& logic, EntryDisposal& disposal, QWidget* parent = nullptr);

    void show(const EditPaneState& state);
    using QWidget::show;

  protected:
    void changeEvent(QEvent* event) override;

  private:
    void buildFields();
    [[nodiscard]] QWidget* buildHead();
    [[nodiscard]] QWidget* buildDates();
    [[nodiscard]] QWidget* beside(QWidget* field, QToolButton* button);
    void connectFields();
    void showEditability(const EditPaneState& state);
    void showControls(const EditPaneState& state);
    void showBoxes(const EditPaneState& state);
    void showColours();
    void maskTypedPassword();
    void moveFocus(const FocusRequest& request);
    [[nodiscard]] QWidget* fieldWidget(PaneField field) const;

    EditPane& m_logic;
    EntryDisposal& m_disposal;
    EditPaneState m_shown;
    unsigned m_focusSerial = 0;
    bool m_isShowing = false;
    bool m_isPasswordRevealed = false;

    std::array<QToolButton*, 3> optType{};
    QLineEdit* txtNo;
    QLineEdit* txtTitle;
    QLabel* lblLocation;
    QLineEdit* txtLocation;
    QToolButton* cmdLocation;
    QLabel* Label2;
    QComboBox* ComboBox2;
    QToolButton* Command2;
    QLabel* lblPassword;
    QComboBox* cboPassword;
    QToolButton* cmdPassword;
    QAction* m_reveal;
    QLabel* lblRemarks;
    QPlainTextEdit* txtRemarks;
    QLineEdit* txtModPwdDays;
    QLineEdit* txtCreateDate;
    QLineEdit* txtRecentUpdate;
    QLabel* lblUsedTimes;
    QCheckBox* chkEffective;
    QCheckBox* chkEncrypted;
    QFormLayout* m_form;
};

}  // namespace keeper
