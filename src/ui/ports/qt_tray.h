// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QHash>
#include <QMenu>
#include <QSystemTrayIcon>
#include <functional>

#include "platform/tray.h"

namespace keeper {

/// The tray of the toolkit: a StatusNotifierItem where the desktop has a host, else an icon docked
/// in the panel.
class QtTray final : public Tray {
    Q_OBJECT

  public:
    /// Shows a note by the desktop's notification service, for when there is no tray.
    using Notifier = std::function<void(const QString& title, const QString& text)>;

    explicit QtTray(Notifier notifier = {});
    ~QtTray() override;

    [[nodiscard]] bool isAvailable() const override;
    [[nodiscard]] bool isVisible() const override { return m_icon.isVisible(); }
    void setVisible(bool visible) override;
    void setState(State state) override;
    void setToolTip(const QString& text) override { m_icon.setToolTip(text); }
    void setMenu(const std::vector<TrayItem>& items) override;
    void setItemText(const QString& key, const QString& text) override;
    void setItemEnabled(const QString& key, bool isEnabled) override;
    void showBalloon(const QString& text, const QString& title = {}) override;

  private:
    [[nodiscard]] QAction& item(const QString& key) const;

    Notifier m_notifier;
    QMenu m_menu;
    QHash<QString, QAction*> m_items;
    QSystemTrayIcon m_icon;  // after the menu that it shows, so that it goes first
};

}  // namespace keeper
