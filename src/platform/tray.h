// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QObject>
#include <QString>
#include <vector>

namespace keeper {

/// One line of the tray's menu. An empty key stands for a separator.
struct TrayItem {
    QString key;
    QString text;
    bool isEnabled = true;
};

/// The icon in the notification area, its menu and its balloons.
///
/// A desktop may have no such area, or lose it at any time. Ask isAvailable() before hiding a
/// window of which the icon would be the only way back.
class Tray : public QObject {
    Q_OBJECT

  public:
    enum class State { Open, Locked };

    [[nodiscard]] virtual bool isAvailable() const = 0;
    [[nodiscard]] virtual bool isVisible() const = 0;
    virtual void setVisible(bool visible) = 0;
    virtual void setState(State state) = 0;
    virtual void setToolTip(const QString& text) = 0;
    virtual void setMenu(const std::vector<TrayItem>& items) = 0;
    /// REQUIRES: `key` is in the menu.
    virtual void setItemText(const QString& key, const QString& text) = 0;
    virtual void setItemEnabled(const QString& key, bool isEnabled) = 0;
    /// A passing note that asks for no answer. Without a tray it goes to the desktop's
    /// notification service, and where that is missing too it is dropped.
    virtual void showBalloon(const QString& text, const QString& title = {}) = 0;

  Q_SIGNALS:
    void itemChosen(const QString& key);
    /// A single click also precedes each double click.
    void clicked();
    void doubleClicked();
    void balloonClicked();
};

}  // namespace keeper
