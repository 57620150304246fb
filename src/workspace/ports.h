// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

#include "guard/authority_gate.h"

namespace keeper {

struct EditPaneState;
struct SheetsState;

/// The fill monitor, which types numbers and passwords into other programs.
class FillMonitorPort {
  public:
    virtual ~FillMonitorPort() = default;
    /// 0 arms a fill of the entry on display; 3 and above end any fill and show that state.
    virtual void ActivateMonitor(int state) = 0;
};

/// What ActivateMonitor() is told from the main window.
enum FillState { kArmFill = 0, kFillEnded = 4, kFillDiscarded = 5 };

/// The digest of a user file that may be running while the pane is used.
class DigestPort {
  public:
    virtual ~DigestPort() = default;
    [[nodiscard]] virtual bool isComputing() const = 0;
    virtual void StopDigest(bool withBeep) = 0;
};

/// Short sounds.
class Beeper {
  public:
    enum class Sound { Warning = 48, Done = 64 };
    virtual ~Beeper() = default;
    virtual void MessageBeep(Sound sound) = 0;
};

/// What shows the main window. States are complete: a view needs no memory of earlier ones.
class WorkspaceView {
  public:
    virtual ~WorkspaceView() = default;
    virtual void showPane(const EditPaneState& state) = 0;
    virtual void showSheets(const SheetsState& state) = 0;
    /// Opens one node of the tree.
    virtual void expandNode(const QString& key) = 0;
    /// Opens or closes a node and all below it, whatever the single-expansion mode says.
    virtual void expandSubtree(const QString& key, bool isOpen) = 0;
    virtual void focusTree() = 0;
    /// With all of its text selected.
    virtual void focusSearch() = 0;
};

class NoFillMonitor final : public FillMonitorPort {
  public:
    void ActivateMonitor(int /*state*/) override {}
};

class NoDigest final : public DigestPort {
  public:
    [[nodiscard]] bool isComputing() const override { return false; }
    void StopDigest(bool /*withBeep*/) override {}
};

class NoWorkspaceView final : public WorkspaceView {
  public:
    void showPane(const EditPaneState& /*state*/) override {}
    void showSheets(const SheetsState& /*state*/) override {}
    void expandNode(const QString& /*key*/) override {}
    void expandSubtree(const QString& /*key*/, bool /*isOpen*/) override {}
    void focusTree() override {}
    void focusSearch() override {}
};

}  // namespace keeper
