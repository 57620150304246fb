// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QLabel>
#include <QProgressBar>
#include <QWidget>

namespace keeper {

/// The small window that tells what is being sealed or unsealed and how far it is. It blocks
/// nothing, takes no focus and cannot be closed by the person: what it shows must run to its end.
class dlgConnecting final : public QWidget {
    Q_OBJECT

  public:
    explicit dlgConnecting(QWidget* parent = nullptr);

    /// 0 unsealing, 1 sealing, 2 dispatch to a branch machine, 3 sealing and backup, 4 sealing
    /// after a backup that failed, told in red.
    void SetMsg(int mode);
    /// 0 .. 100.
    void setPercent(int percent);
    [[nodiscard]] QString message() const { return lblMsg->text(); }

  protected:
    void closeEvent(QCloseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    QLabel* lblMsg;
    QProgressBar* prgbAES;
    QLabel* lblPercent;
};

}  // namespace keeper
