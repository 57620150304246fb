// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QWidget>
#include <functional>

class QPushButton;

namespace keeper {

/// Stands in for the tray's icon on a desktop without a tray: the only way back into a locked
/// manager.
class LockWindow final : public QWidget {
    Q_OBJECT

  public:
    LockWindow(const QString& userName, std::function<void()> unlock, std::function<void()> exit);

  protected:
    /// It comes again at the next lock, and Enter must unlock then, too.
    void showEvent(QShowEvent* event) override;
    /// Closing it would leave no way back: it is minimised instead.
    void closeEvent(QCloseEvent* event) override;

  private:
    QPushButton* cmdUnlock = nullptr;
};

}  // namespace keeper
