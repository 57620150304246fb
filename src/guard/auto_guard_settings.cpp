// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "guard/auto_guard_settings.h"

#include <algorithm>

#include "app/system.h"
#include "guard/guard_timers.h"
#include "platform/clock.h"
#include "store/failure.h"
#include "store/sys_logs.h"

namespace keeper {
namespace {

constexpr int kSecondsPerMinute = 60;
constexpr int kSecondsPerHour = 3600;
constexpr int kSecondsPerDay = 24 * kSecondsPerHour;
constexpr int kFirstOfferSeconds = 10 * kSecondsPerMinute;

// The system log tells what was set by its count: the lock's below zero, the exit's as its mode.
constexpr int kGuardSet = 8;
constexpr std::int32_t kLockOff = -2;
constexpr std::int32_t kLockOn = -1;

}  // namespace

void AutoGuardSettings::load() {
    const Settings& settings = m_ports.system.settings();
    m_frames.at(fraAutoLock).option = settings.p_autoLock() ? 1 : 0;
    setTotal(fraAutoLock, settings.p_autoLockSecs());
    m_frames.at(fraAutoExit).option = static_cast<int>(m_ports.timers.m_autoExit());
    setTotal(fraAutoExit, m_ports.timers.m_autoExitSecs());
    m_locksWithScreen = settings.p_lockWithScreen();
    m_hint = m_ports.timers.isDesktopWide()
                 ? QString()
                 : QStringLiteral("此桌面不提供空闲时间，只能按本程序窗口内的操作计算。");
    tell();
}

void AutoGuardSettings::unload() {
    if (std::exchange(m_isLockSet, false)) {
        m_ports.timers.armLock();
    }
    if (std::exchange(m_isExitSet, false)) {
        m_ports.timers.armExit();
    }
}

QString AutoGuardSettings::optionCaption(Frame frame, int option) {
    if (frame == fraAutoLock) {
        return option == 0 ? QStringLiteral("没有动作(&N)") : QStringLiteral("自动锁定(&L)");
    }
    return option == 0   ? QStringLiteral("没有动作(&M)")
           : option == 1 ? QStringLiteral("自动关闭(&C)")
                         : QStringLiteral("关机退出(&S)");
}

void AutoGuardSettings::choose(Frame frame, int option) {
    m_frames.at(frame).option = option;
    tell();
}

const QString& AutoGuardSettings::text(Frame frame, Unit unit) const {
    return m_frames.at(frame).fields.at(unit).text;
}

int AutoGuardSettings::spinner(Frame frame, Unit unit) const {
    return m_frames.at(frame).fields.at(unit).spinner;
}

int AutoGuardSettings::upperBound(Unit unit) {
    return unit == Hours ? 23 : 59;
}

void AutoGuardSettings::type(Frame frame, Unit unit, const QString& text) {
    Field& field = m_frames.at(frame).fields.at(unit);
    if (field.text == text) {
        return;
    }
    field.text = text;
    if (text.isEmpty()) {
        return;
    }
    bool isNumber = false;
    const int value = text.toInt(&isNumber);
    if (isNumber && value >= 0 && value <= upperBound(unit)) {
        field.spinner = value;
        return;
    }
    m_ports.prompt.messageBox(
        QStringLiteral("时间的取值范围在%1-%2之间！").arg(0).arg(upperBound(unit)),
        Prompt::Icon::Exclamation);
    field.text = QString::number(field.spinner);
    tell();
}

void AutoGuardSettings::spin(Frame frame, Unit unit, int value) {
    Field& field = m_frames.at(frame).fields.at(unit);
    field.spinner = std::clamp(value, 0, upperBound(unit));
    field.text = QString::number(field.spinner);
    tell();
}

bool AutoGuardSettings::CheckValid(Frame frame) {
    return guarded(m_ports.prompt, QStringLiteral("dlgAutoGuard.CheckValid"), false, [&] {
        FrameState& state = m_frames.at(frame);
        if (state.option == 0) {
            return true;
        }
        for (Field& field : state.fields) {
            if (field.text.isEmpty()) {
                field.text = QString::number(field.spinner);
            }
        }
        tell();
        if (totalSeconds(frame) >= kShortestInterval) {
            return true;
        }
        const QString action = optionCaption(frame, state.option);
        m_ports.prompt.messageBox(
            action.left(action.indexOf(u'(')) + QStringLiteral("的时间间隔最短不能小于60秒！"),
            Prompt::Icon::Exclamation);
        return false;
    });
}

void AutoGuardSettings::cmdOK(Frame frame) {
    guardedRun(m_ports.prompt, QStringLiteral("dlgAutoGuard.cmdOK_Click"), [&] {
        if (!CheckValid(frame)) {
            return;
        }
        if (frame == fraAutoLock) {
            storeLock();
        } else {
            storeExit();
        }
    });
}

void AutoGuardSettings::storeLock() {
    Settings& settings = m_ports.system.settings();
    const bool wasOn = settings.p_autoLock();
    const std::int32_t secondsBefore = settings.p_autoLockSecs();
    const bool withScreenBefore = settings.p_lockWithScreen();
    const bool isOn = m_frames.at(fraAutoLock).option != 0;
    settings.p_autoLock(isOn);
    if (isOn) {
        settings.p_autoLockSecs(totalSeconds(fraAutoLock));
    }
    settings.p_lockWithScreen(m_locksWithScreen);
    // At once: a session that crashes must not come back without its lock.
    if (!m_ports.system.WriteDB(/*isNew=*/false)) {
        settings.p_autoLock(wasOn);
        settings.p_autoLockSecs(secondsBefore);
        settings.p_lockWithScreen(withScreenBefore);
        return;
    }
    m_isLockSet = true;
    log(isOn ? kLockOn : kLockOff);
    m_ports.prompt.messageBox(QStringLiteral("自动锁定设置成功！关闭本对话框后生效。"),
                              Prompt::Icon::Information, Prompt::Buttons::Ok,
                              QStringLiteral("自动锁定"));
}

void AutoGuardSettings::storeExit() {
    const auto mode = static_cast<AutoExit>(m_frames.at(fraAutoExit).option);
    m_ports.timers.setAutoExit(mode, mode == AutoExit::None ? 0 : totalSeconds(fraAutoExit));
    m_isExitSet = true;
    log(static_cast<std::int32_t>(mode));
    m_ports.prompt.messageBox(QStringLiteral("自动退出设置成功！关闭本对话框后生效。"),
                              Prompt::Icon::Information, Prompt::Buttons::Ok,
                              QStringLiteral("自动退出"));
}

int AutoGuardSettings::totalSeconds(Frame frame) const {
    const auto& fields = m_frames.at(frame).fields;
    return fields.at(Hours).spinner * kSecondsPerHour +
           fields.at(Minutes).spinner * kSecondsPerMinute + fields.at(Seconds).spinner;
}

void AutoGuardSettings::setTotal(Frame frame, int seconds) {
    // A frame that was never set offers a useful time, since the fields' zero would be refused.
    const int total = seconds > 0 ? std::min(seconds, kSecondsPerDay - 1) : kFirstOfferSeconds;
    const std::array<int, kUnits> values{total / kSecondsPerHour,
                                         total % kSecondsPerHour / kSecondsPerMinute,
                                         total % kSecondsPerMinute};
    for (std::size_t i = 0; i < kUnits; ++i) {
        m_frames.at(frame).fields.at(i) = {QString::number(values.at(i)), values.at(i)};
    }
}

void AutoGuardSettings::log(std::int32_t count) {
    SysLog entry;
    entry.m_dateTime = m_ports.clock.now();
    entry.m_statusNo = kGuardSet;
    entry.m_lCount = count;
    m_ports.logs.Add(entry);
}

void AutoGuardSettings::tell() const {
    if (changed) {
        changed();
    }
}

}  // namespace keeper
