// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <array>
#include <vector>

#include "guard/auto_guard_settings.h"
#include "ui/widgets/session_dialog.h"

class QCheckBox;
class QGroupBox;
class QRadioButton;
class QSpinBox;

namespace keeper {

/// The settings of the automatic guard. Shows the state of its logic and forwards what the person
/// does.
class dlgAutoGuard final : public SessionDialog {
    Q_OBJECT

  public:
    /// The logic must outlive the form, which takes over its `changed`.
    explicit dlgAutoGuard(AutoGuardSettings& logic);
    ~dlgAutoGuard() override;

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
    std::array<FrameControls, AutoGuardSettings::kFrames> m_frames;
    QCheckBox* chkScreenLock = nullptr;
};

}  // namespace keeper
