// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace keeper {

/// Where a long operation has to report progress, when it advances in units but works in large
/// pieces: after each unit the percentage is position / size * 100 as a 32-bit number, and it is
/// reported when it has grown by at least `step` since the last report. The positions come out
/// the same as if every unit was looked at. `lag`, less than a unit, is by how much the position in
/// the percentage stays behind the unit's end.
class ProgressSteps {
  public:
    ProgressSteps(std::uint64_t size, std::uint64_t unit, float step, std::uint64_t lag = 0)
        : m_size(size), m_unit(unit), m_step(step), m_lag(lag), m_next(findNext(0)) {}

    /// The first position behind the last report at which the next one is due; beyond the size
    /// when none is.
    [[nodiscard]] std::uint64_t nextPosition() const { return m_next; }

    /// True when a report is due at `position`; lastRaised() is then its percentage.
    [[nodiscard]] bool reached(std::uint64_t position) {
        if (position < m_next || !isDue(position)) {
            return false;
        }
        m_lastRaised = percentAt(position);
        m_next = findNext(position);
        return true;
    }

    [[nodiscard]] float lastRaised() const { return m_lastRaised; }

  private:
    [[nodiscard]] float percentAt(std::uint64_t position) const {
        return static_cast<float>(static_cast<double>(position - m_lag) /
                                  static_cast<double>(m_size) * 100.0);
    }
    [[nodiscard]] bool isDue(std::uint64_t position) const {
        return percentAt(position) - m_lastRaised >= m_step;
    }

    [[nodiscard]] std::uint64_t findNext(std::uint64_t from) const {
        // Start a little early: rounding may put the mark on either side of the exact quotient.
        const double mark =
            (static_cast<double>(m_lastRaised) + static_cast<double>(m_step)) / 100.0;
        const double units = mark * static_cast<double>(m_size) / static_cast<double>(m_unit);
        const double slack = 2.0 + units * 1e-6;
        std::uint64_t position =
            units > slack ? static_cast<std::uint64_t>(units - slack) * m_unit : 0;
        position = std::max(position, from + m_unit);
        while (position < m_size && !isDue(position)) {
            position += m_unit;
        }
        // The last unit may be a short one.
        position = std::min(position, m_size);
        return from < m_size && isDue(position) ? position : m_size + 1;
    }

    std::uint64_t m_size;
    std::uint64_t m_unit;
    float m_step;
    std::uint64_t m_lag;
    float m_lastRaised = 0.0F;
    std::uint64_t m_next;
};

}  // namespace keeper
