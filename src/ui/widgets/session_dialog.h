// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QDialog>
#include <QString>
#include <initializer_list>

#include "app/open_forms.h"

class QBoxLayout;
class QPushButton;

namespace keeper {

class System;

/// A modal dialog of a session: it can stand in the table of open forms, where a lock and the end
/// of the session close it.
class SessionDialog : public QDialog, public OpenForm {
    Q_OBJECT

  public:
    /// `name` is the row of the table of open forms, too. Stands over the window in use.
    explicit SessionDialog(const char* name);

    /// Shows the dialog, in the table of open forms, and blocks until it closes. True when it was
    /// accepted. A locked manager opens none: false at once.
    bool run(System& system);
    [[nodiscard]] QString formName() const override { return objectName(); }
    void closeForm() override { reject(); }
    void activateForm() override;

  protected:
    /// run() in a locked manager, too: for the form that unlocks it.
    bool showModal(System& system);
    /// The dialog's layout, with the margins that all have; its size is fixed by its content.
    QBoxLayout* makeLayout();
    /// A row of commands: the others at its left end, OK, which Enter presses, and Cancel.
    QBoxLayout* makeCommands(const QString& okText, const QString& cancelText,
                             std::initializer_list<QPushButton*> others = {});
    QPushButton* cmdOK = nullptr;
    QPushButton* cmdCancel = nullptr;
};

}  // namespace keeper
