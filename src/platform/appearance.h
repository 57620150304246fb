// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QObject>

namespace keeper {

/// What the desktop asks programs to look like.
class Appearance : public QObject {
    Q_OBJECT

  public:
    enum class Scheme { Unknown, Light, Dark };

    /// The best answer that costs no waiting; a better one may follow by schemeChanged().
    [[nodiscard]] virtual Scheme scheme() const = 0;

  Q_SIGNALS:
    void schemeChanged(keeper::Appearance::Scheme scheme);
};

}  // namespace keeper
