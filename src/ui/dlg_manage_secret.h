// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <array>

#include "guard/secret_management.h"
#include "ui/widgets/session_dialog.h"

class QGridLayout;
class QGroupBox;
class QLineEdit;

namespace keeper {

class NumberBox;

/// The form that says how long secrets and questions may stand, and how often they may be tried.
class dlgManageSecret final : public SessionDialog {
    Q_OBJECT

  public:
    /// Shows what `logic` was loaded with; `logic` must outlive the form.
    explicit dlgManageSecret(SecretManagement& logic);

  private:
    using Field = SecretManagement::Field;

    QGroupBox* buildPeriods();
    QGroupBox* buildChances();
    void addPeriod(QGridLayout* grid, Field field);
    NumberBox* makeBox(Field field, const char* name, const QString& what);
    void take(Field field, const QString& text);
    /// A key of the button's own moves no focus, so a box may still hold what is not a value: it is
    /// told and focused. Empty boxes are filled again.
    [[nodiscard]] bool isFinished();
    void showPredictions();

    SecretManagement& m_logic;
    std::array<NumberBox*, SecretManagement::kFields> m_boxes{};
    std::array<QLineEdit*, 3> m_predictions{};
};

}  // namespace keeper
