// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QPixmap>
#include <QWidget>

namespace keeper {

/// The ground `imgBG` that shows while no entry does: the person's own picture, or the program's
/// mark with what to do next.
class EmptyPane final : public QWidget {
    Q_OBJECT

  public:
    explicit EmptyPane(QWidget* parent = nullptr);

    /// A file that cannot be read, or an empty path, brings back the program's mark.
    void setPicture(const QString& path);

  Q_SIGNALS:
    void doubleClicked();

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

  private:
    QPixmap m_picture;
};

}  // namespace keeper
