// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QLabel>
#include <QProgressBar>
#include <QWidget>

#include "store/connecting_display.h"

namespace keeper {

/// The small window that tells what is being sealed or unsealed and how far it is. It blocks
/// nothing, takes no focus and cannot be closed by the person: what it shows must run to its end.
class dlgConnecting final : public QWidget, public ConnectingDisplay {
    Q_OBJECT

  public:
    explicit dlgConnecting(QWidget* parent = nullptr);

    /// Shows the window; that a backup failed is told in red.
    void SetMsg(CryptMode mode) override;
    void setProgress(int percent) override;
    void close() override;
    [[nodiscard]] QString message() const { return lblMsg->text(); }

  protected:
    void closeEvent(QCloseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    QLabel* lblMsg;
    QProgressBar* prgbAES;
    QLabel* lblPercent;
};

}  // namespace keeper
