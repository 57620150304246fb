// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/ports/qt_tray.h"

#include "app/program_info.h"
#include "ui/theme/icons.h"

namespace keeper {

QtTray::QtTray(Notifier notifier) : m_notifier(std::move(notifier)) {
    m_menu.setObjectName(QStringLiteral("mn_tray"));
    m_icon.setIcon(programIcon());
    m_icon.setToolTip(programTitle());
    m_icon.setContextMenu(&m_menu);
    connect(&m_icon, &QSystemTrayIcon::messageClicked, this, &Tray::balloonClicked);
    connect(&m_icon, &QSystemTrayIcon::activated, this,
            [this](QSystemTrayIcon::ActivationReason reason) {
                if (reason == QSystemTrayIcon::Trigger) {
                    Q_EMIT clicked();
                } else if (reason == QSystemTrayIcon::DoubleClick) {
                    Q_EMIT doubleClicked();
                }
            });
}

QtTray::~QtTray() = default;

bool QtTray::isAvailable() const {
    return QSystemTrayIcon::isSystemTrayAvailable();
}

void QtTray::setVisible(bool visible) {
    // Shown without a tray, the icon waits and docks as soon as a panel comes up.
    m_icon.setVisible(visible);
}

void QtTray::setState(State state) {
    m_icon.setIcon(state == State::Locked ? lockedProgramIcon() : programIcon());
}

void QtTray::setMenu(const std::vector<TrayItem>& items) {
    m_menu.clear();
    m_items.clear();
    for (const TrayItem& line : items) {
        if (line.key.isEmpty()) {
            m_menu.addSeparator();
            continue;
        }
        QAction* action = m_menu.addAction(line.text);
        action->setObjectName(line.key);
        action->setEnabled(line.isEnabled);
        connect(action, &QAction::triggered, this,
                [this, key = line.key] { Q_EMIT itemChosen(key); });
        m_items.insert(line.key, action);
    }
}

QAction& QtTray::item(const QString& key) const {
    QAction* action = m_items.value(key);
    Q_ASSERT_X(action != nullptr, "QtTray", "no such menu item");
    return *action;
}

void QtTray::setItemText(const QString& key, const QString& text) {
    item(key).setText(text);
}

void QtTray::setItemEnabled(const QString& key, bool isEnabled) {
    item(key).setEnabled(isEnabled);
}

void QtTray::showBalloon(const QString& text, const QString& title) {
    const QString heading = title.isEmpty() ? programTitle() : title;
    QString body = text;
    body.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    if (isAvailable() && m_icon.isVisible()) {
        m_icon.showMessage(heading, body, programIcon());
    } else if (m_notifier) {
        m_notifier(heading, body);
    }
}

}  // namespace keeper
