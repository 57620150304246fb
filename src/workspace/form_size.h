// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QSize>
#include <QString>

namespace keeper {

class Workspace;

/// The two sizes of the main form: the original one with the pane, and the micro one, a narrow
/// window with the sheets alone that may stay in front of others. Keeps both in the settings.
class FormSize {
  public:
    explicit FormSize(Workspace& workspace) : m_workspace(workspace) {}

    [[nodiscard]] bool isMicro() const;
    [[nodiscard]] bool isKeptInFront() const;
    /// What a switch would lead to.
    [[nodiscard]] QString caption() const;
    /// Switches; back to the original size may need the independent password. False when refused.
    bool mn_formSize();
    /// Only the micro form may stay in front; false and a message otherwise.
    bool keepInFront(bool isWanted);

    /// The original form's size in logical pixels; empty when none was kept.
    [[nodiscard]] QSize originalSize() const;
    void originalSize(QSize size);
    [[nodiscard]] int sheetsWidth() const;
    void sheetsWidth(int width);
    [[nodiscard]] int minLeft() const;
    void minLeft(int left);

  private:
    Workspace& m_workspace;
};

}  // namespace keeper
