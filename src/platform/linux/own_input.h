// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QElapsedTimer>
#include <QObject>

namespace keeper {

/// Counts from the last key, click, touch or movement in a window of this program, or from its own
/// beginning. REQUIRES: the application's object.
class OwnInput final : public QObject {
  public:
    OwnInput();
    /// Milliseconds.
    [[nodiscard]] qint64 elapsed() const { return m_sinceInput.elapsed(); }

  protected:
    bool eventFilter(QObject* receiver, QEvent* event) override;

  private:
    QElapsedTimer m_sinceInput;
};

}  // namespace keeper
