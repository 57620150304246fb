// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QDialog>
#include <array>
#include <vector>

#include "app/open_forms.h"
#include "guard/auto_guard_settings.h"

class QCheckBox;
class QGroupBox;
class QPushButton;
class QRadioButton;
class QSpinBox;

namespace keeper {

class System;

/// The settings of the automatic guard. Shows the state of its logic and forwards what the person
/// does.
class dlgAutoGuard final : public QDialog, public OpenForm {
    Q_OBJECT

  public:
    /// Both must outlive the form. The form takes over `logic.changed`.
    dlgAutoGuard(AutoGuardSettings& logic, System& system, QWidget* parent = nullptr);
    ~dlgAutoGuard() override;

    /// Blocks until the form closes.
    void run();

    [[nodiscard]] QString formName() const override { return objectName(); }
    void closeForm() override { reject(); }
    void activateForm() override;

  private:
    using Frame = AutoGuardSettings::Frame;
    struct FrameControls {
        QGroupBox* box = nullptr;
        std::vector<QRadioButton*> options;
        std::array<QSpinBox*, AutoGuardSettings::kUnits> times{};
        QPushButton* cmdOK = nullptr;
    };

    QGroupBox* buildFrame(Frame frame);
    QLayout* buildTimes(Frame frame);
    void updateState();

    AutoGuardSettings& m_logic;
    System& m_system;
    std::array<FrameControls, AutoGuardSettings::kFrames> m_frames;
    QCheckBox* chkScreenLock = nullptr;
    QPushButton* cmdCancel = nullptr;
};

}  // namespace keeper
