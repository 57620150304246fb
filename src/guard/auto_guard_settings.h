// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>

#include "guard/auto_exit.h"

namespace keeper {

class Clock;
class GuardTimers;
class Prompt;
class SysLogs;
class System;

/// The logic of `dlgAutoGuard`: what its two frames show, check and store.
class AutoGuardSettings {
  public:
    enum Frame : std::size_t { fraAutoLock, fraAutoExit };
    enum Unit : std::size_t { Hours, Minutes, Seconds };
    static constexpr std::size_t kFrames = 2;
    static constexpr std::size_t kUnits = 3;
    static constexpr int kShortestInterval = 60;

    struct Ports {
        Prompt& prompt;
        Clock& clock;
        System& system;
        SysLogs& logs;
        GuardTimers& timers;
    };

    explicit AutoGuardSettings(const Ports& ports) : m_ports(ports) {}

    /// Shows the settings that are in force.
    void load();
    /// What was set takes effect.
    void unload();

    /// `optAutoLock` (0 nothing, 1 lock) or `optAutoExit` (0 nothing, 1 close, 2 shut down).
    [[nodiscard]] int option(Frame frame) const { return m_frames.at(frame).option; }
    void choose(Frame frame, int option);
    [[nodiscard]] static QString optionCaption(Frame frame, int option);

    /// `txtAutoLock` or `txtAutoExit`, as it stands in the field, and the value of its spinner.
    [[nodiscard]] const QString& text(Frame frame, Unit unit) const;
    [[nodiscard]] int spinner(Frame frame, Unit unit) const;
    [[nodiscard]] static int upperBound(Unit unit);
    /// A text out of range is refused and the spinner's value stands again. An empty one waits for
    /// what follows.
    void type(Frame frame, Unit unit, const QString& text);
    void spin(Frame frame, Unit unit, int value);

    /// Said beside the idle lock; empty where there is nothing to say.
    [[nodiscard]] const QString& hint() const { return m_hint; }
    [[nodiscard]] bool locksWithScreen() const { return m_locksWithScreen; }
    void locksWithScreen(bool value) { m_locksWithScreen = value; }

    [[nodiscard]] bool CheckValid(Frame frame);
    void cmdOK(Frame frame);

    /// What is shown has changed by other hands than the person's.
    std::function<void()> changed;

  private:
    struct Field {
        QString text;
        int spinner = 0;
    };
    struct FrameState {
        int option = 0;
        std::array<Field, kUnits> fields;
    };

    [[nodiscard]] int totalSeconds(Frame frame) const;
    void setTotal(Frame frame, int seconds);
    void storeLock();
    void storeExit();
    void log(std::int32_t count);
    void tell() const;

    Ports m_ports;
    std::array<FrameState, kFrames> m_frames;
    QString m_hint;
    bool m_locksWithScreen = true;
    bool m_isLockSet = false;
    bool m_isExitSet = false;
};

}  // namespace keeper
