// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <QStringList>
#include <cstdint>

namespace keeper {

enum class PaneField { None, No, Title, Location, Number, Password, Remarks, ModPwdDays };

/// A control with a caption. Captions carry their mnemonic as "&".
struct PaneControl {
    QString caption;
    QString toolTip;
    bool isEnabled = true;
};

/// Asks the view to move the focus, once for each new serial.
struct FocusRequest {
    PaneField field = PaneField::None;
    bool selectAll = false;
    unsigned serial = 0;
};

/// Back colour of the location. A dead target shows at a glance.
enum class LocationColour { Window, Theme, Dead };
inline constexpr std::uint32_t kThemeLocationRgb = 0xC7EDCC;
inline constexpr std::uint32_t kDeadLocationRgb = 0xB5B5B5;

/// All that the detail pane shows, as plain values under the names of the controls. The values of
/// number and password are not among them: EditPane keeps these in its hidden slots.
struct EditPaneState {
    QString txtNo;
    QString txtTitle;
    QString txtLocation;
    QString txtRemarks;
    QString txtModPwdDays;
    QString txtCreateDate;
    QString txtRecentUpdate;
    QString lblUsedTimes;
    bool chkEffective = true;
    bool chkEncrypted = false;
    QString chkEncryptedCaption;
    /// The digest, for a file.
    QString ComboBox2;
    QString cboPassword;
    /// What the lists of the two boxes offer. A file has no numbers.
    QStringList numberNames;
    QStringList passwordNames;

    /// The background picture shows where the pane does not.
    bool isPicDetailVisible = false;
    bool areFieldsEditable = false;
    bool isTxtNoEditable = false;
    bool isChkEffectiveUsable = true;
    /// Big class of the indicator: 0, 1, 2.
    int p_optType = 0;
    /// With it go the commands of the file cipher.
    bool isChkEncryptedVisible = false;
    /// `mn_save` and `mn_cancel` with their buttons.
    bool canSave = false;
    bool canUseNumber = false;
    bool canUsePassword = false;

    PaneControl lblLocation;
    PaneControl Label2;
    PaneControl Command2;
    PaneControl cmdPassword;
    PaneControl cmdLocation;
    /// "copy", "paste" or "open".
    QString cmdLocationPicture;
    PaneControl lblPassword;
    PaneControl lblRemarks;
    PaneControl mn_cancel;
    /// Caption of the toolbar's button `Cancel`; its tool tip is that of `mn_cancel`.
    QString toolbarCancel;
    LocationColour locationColour = LocationColour::Window;
    /// Status bar panel "operation".
    QString operation;
    FocusRequest focus;
};

}  // namespace keeper
