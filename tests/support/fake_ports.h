// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QDateTime>
#include <functional>
#include <utility>

#include "platform/clock.h"
#include "platform/event_loop.h"

namespace keeper {

/// A clock that stands still until it is told otherwise.
class FakeClock final : public Clock {
  public:
    explicit FakeClock(QDateTime start = QDateTime(QDate(2026, 5, 20), QTime(12, 0)))
        : m_now(std::move(start)) {}
    [[nodiscard]] QDateTime now() const override { return m_now; }
    void set(const QDateTime& time) { m_now = time; }
    void advanceSeconds(qint64 seconds) { m_now = m_now.addSecs(seconds); }
    void advanceDays(qint64 days) { m_now = m_now.addDays(days); }

  private:
    QDateTime m_now;
};

/// Counts the turns; `onTurn` is what a person does meanwhile.
class FakeEventLoop final : public EventLoop {
  public:
    int turns = 0;
    std::function<void()> onTurn;
    void turn() override {
        ++turns;
        if (onTurn) {
            onTurn();
        }
    }
};

}  // namespace keeper
