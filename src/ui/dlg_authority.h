// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <array>

#include "guard/authorities.h"
#include "ui/widgets/session_dialog.h"

class QCheckBox;
class QGroupBox;

namespace keeper {

/// The form that says which commands demand the independent password.
class dlgAuthority final : public SessionDialog {
    Q_OBJECT

  public:
    /// Shows what `logic` was loaded with; `logic` must outlive the form.
    explicit dlgAuthority(Authorities& logic);

  protected:
    void showEvent(QShowEvent* event) override;

  private:
    QGroupBox* buildBoxes();
    void showChecks();

    Authorities& m_logic;
    std::array<QCheckBox*, Authorities::kCount> chkAuthority{};
};

}  // namespace keeper
