// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QLabel>
#include <QStatusBar>
#include <array>

#include "platform/status_panels.h"

namespace keeper {

/// The main window's status bar. "message" takes the room that the others leave; a text too long
/// for its panel is cut with dots and told whole by the tool tip. An empty panel takes no room.
class StatusPanelBar final : public QStatusBar, public StatusPanels {
    Q_OBJECT

  public:
    explicit StatusPanelBar(QWidget* parent = nullptr);

    void setPanel(StatusPanel panel, const QString& text) override;
    [[nodiscard]] QString panelText(StatusPanel panel) const;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    [[nodiscard]] QLabel* label(StatusPanel panel) const {
        return m_labels.at(static_cast<std::size_t>(panel));
    }

    std::array<QLabel*, 6> m_labels{};
};

}  // namespace keeper
