// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QAction>
#include <QHash>
#include <QObject>
#include <functional>

class QMenuBar;

namespace keeper {

/// The commands of the main form, one action each under its name (`mn_save`), in menus, toolbar,
/// pop-up and tray alike. A command that nothing carries out yet is shown, disabled, and its tool
/// tip says so.
class MainActions final : public QObject {
    Q_OBJECT

  public:
    /// `window` owns the shortcuts and outlives this object.
    explicit MainActions(QWidget* window);

    /// REQUIRES: there is a command of that name.
    [[nodiscard]] QAction* action(const QString& name) const;
    /// Gives the command its work and enables it.
    void carryOut(const QString& name, std::function<void()> work);
    /// Text, and the tool tip with the keys.
    void setCaption(const QString& name, const QString& caption);
    void fillMenuBar(QMenuBar* bar) const;

  private:
    QHash<QString, QAction*> m_actions;
};

}  // namespace keeper
