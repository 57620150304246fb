// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <optional>
#include <vector>

#include "platform/concealed_texts.h"
#include "workspace/edit_pane_state.h"
#include "workspace/sheet_lists.h"
#include "workspace/workspace.h"

namespace keeper {

class EntLog;
class Random;

/// The detail pane: a reader in browse, an editor in modify and add. Owns the state that a widget
/// shows and the two hidden slots for the effective number and password; takes what a person types
/// or chooses; checks, saves and walks on. Each public operation hands the state to the view once,
/// at its end. Messages leave all data as it was.
class EditPane {
  public:
    EditPane(Workspace& workspace, SheetLists& lists);
    ~EditPane();
    EditPane(const EditPane&) = delete;
    EditPane& operator=(const EditPane&) = delete;

    static constexpr int kMaxTitle = 200;
    static constexpr int kMaxLocation = 200;
    static constexpr int kMaxModPwdDays = 999;
    /// The controls of an open directory.
    static constexpr int kDirectoryType = 3;

    [[nodiscard]] const EditPaneState& state() const { return m_state; }

    // Commands
    /// Starts adding, with the lowest free number of the selected directory.
    void EnterAdd(bool isSingle, const QString& title = {});
    void EnterModify(bool isSingle);
    void mn_save();
    void mn_cancel();

    // What other parts of the main window do with the pane
    void SetEditState(EditState editState);
    /// Captions and tool tips for the class 0, 1, 2; any other type stands for a directory.
    void ShowControls(int type);
    void ColourLocation(int type);
    void ClearDetails();
    /// Loads the entry; an unknown number empties the pane.
    void DisplayEntry(const QString& number);
    /// The number alone: where an entry will be added, or moved by the save.
    void showNo(const QString& number);
    /// The entry on display has moved; the edited fields stay.
    void followMove(const QString& oldNo, const QString& number);
    /// Shows whether the entry on display is in use. Discarding has cancelled its reminder too.
    void showEffective(bool isEffective);
    /// Reads the names that the two boxes offer.
    void RefreshAssNames();
    /// Arms the fill of the entry on display, or says why there is none.
    void monitorShownEntry();

    // While the manager is locked, the pane is empty and its texts are not in memory as they are;
    // afterwards everything stands as before, typed but unsaved text included.
    void conceal(Random& random);
    void reveal();

    // Checks; a failure shows its message and moves the focus.
    [[nodiscard]] bool CheckValid();
    [[nodiscard]] bool AllowModify();

    // User input. Ignored while the field is read-only.
    void editField(PaneField field, const QString& text);
    void typeNumber(const QString& text);
    void chooseNumberName(const QString& name);
    void typePassword(const QString& text);
    void choosePasswordName(const QString& name);
    void setEncrypted(bool isEncrypted, const QString& caption);

    /// Nothing has been entered since the fields were filled, or the person gives it up.
    [[nodiscard]] bool mayReplaceFields();
    [[nodiscard]] bool isDirty() const { return isEditing() && m_isDirty; }

    // The two boxes and their hidden slots
    /// A row of the list; the reserved name is none.
    [[nodiscard]] bool IsAssNumName(const QString& text) const;
    [[nodiscard]] bool IsAssPwdName(const QString& text) const;
    /// Puts the associated value into the slot; an unknown or empty name clears it.
    void ShowAssNum(const QString& name);
    void ShowAssPwd(const QString& name);
    [[nodiscard]] const QString& GetNumberText() const { return m_numberText; }
    void SetNumberText(QString text);
    [[nodiscard]] const QString& GetPasswordText() const { return m_passwordText; }
    void SetPasswordText(QString text);
    [[nodiscard]] const QString& GetDigestText() const { return m_state.ComboBox2; }
    void SetDigestText(const QString& text);

    // The object of the fields. REQUIRES: CheckValid().
    [[nodiscard]] Web BuildWeb(bool isNew) const;
    [[nodiscard]] Prg BuildPrg(bool isNew) const;
    [[nodiscard]] Fil BuildFil(bool isNew) const;

    /// Holds the view back until the end of the outermost operation.
    class Showing;

  private:
    [[nodiscard]] bool isEditing() const { return m_workspace.m_editState != EditState::Browse; }
    [[nodiscard]] std::vector<QString*> concealable();
    void focus(PaneField field, bool selectAll = false);
    bool refuse(const QString& message, PaneField field, bool selectAll = false);
    void applyControls();
    void applyEditability();
    void applyCommon();
    void applyNumberControls();
    void applyLocationControls();

    void showCommon(const Entry& entry, const QString& location);
    void showNumberOf(const NetEntry& net);
    void showDigestOf(const Fil& fil);
    void showPasswordOf(const Entry& entry);

    [[nodiscard]] bool checkNo();
    [[nodiscard]] bool checkNet();
    [[nodiscard]] bool checkFile();
    [[nodiscard]] bool checkModPwdDays();
    [[nodiscard]] bool isPasswordChanged() const;

    void saveNew();
    void saveChange();
    void closePane();
    void walkToNextFree(const QString& number);
    void walkToNextUsed(const QString& oldNo);
    [[nodiscard]] bool addObject(const EntLog& history);
    [[nodiscard]] bool modifyObject(const QString& oldNo, const EntLog* history);
    void buildCommon(Entry& entry, bool isNew) const;
    void buildNet(NetEntry& net, bool isNew) const;

    Workspace& m_workspace;
    SheetLists& m_lists;
    EditPaneState m_state;
    /// Class whose controls stand, or kDirectoryType.
    int m_type = kDirectoryType;
    QString m_numberText;
    QString m_passwordText;
    QStringList m_numberNames;
    QStringList m_passwordNames;
    ConcealedTexts m_concealed;
    int m_showing = 0;
    /// A person has entered something that is not saved.
    bool m_isDirty = false;
};

class EditPane::Showing {
  public:
    explicit Showing(EditPane& pane) : m_pane(pane) { ++m_pane.m_showing; }
    ~Showing() {
        if (--m_pane.m_showing == 0) {
            m_pane.m_workspace.services.view.showPane(m_pane.m_state);
        }
    }
    Showing(const Showing&) = delete;
    Showing& operator=(const Showing&) = delete;

  private:
    EditPane& m_pane;
};

}  // namespace keeper
