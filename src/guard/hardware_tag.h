// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

namespace keeper {

/// The fingerprint of a machine; the order firmware, processor, disk never changes.
struct HardwareTag {
    QString bios;
    QString cpu;
    QString disk;

    /// The branch tag while no branch is confined.
    [[nodiscard]] static HardwareTag none() {
        const QString zeros(10, QLatin1Char('0'));
        return {zeros, zeros, zeros};
    }
    [[nodiscard]] bool isComplete() const {
        return !bios.isEmpty() && !cpu.isEmpty() && !disk.isEmpty();
    }
    /// The text that its seal stands for.
    [[nodiscard]] QString text() const {
        return bios + QLatin1Char(' ') + cpu + QLatin1Char(' ') + disk;
    }
    bool operator==(const HardwareTag&) const = default;
};

}  // namespace keeper
