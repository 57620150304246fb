// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QFile>
#include <QFileInfo>
#include <QString>

namespace keeper {

// Files in the state folder. A copy beside which a "fresh" mark stands is not wanted yet, and what
// a compaction or a change of the key has not finished is never wanted.
inline const QString kWorkingSuffix = QStringLiteral(".tmp");
inline const QString kFreshSuffix = QStringLiteral(".fresh");
inline const QString kCompactingSuffix = QStringLiteral(".compacting");

/// Where the engine notes the pages that a write would change.
inline QString journalOf(const QString& path) {
    return path + QStringLiteral("-journal");
}

/// The part of a working copy's name that the copies of one session share; every change of the key
/// makes a new one.
inline QString familyOf(const QString& path) {
    const QString name = QFileInfo(path).fileName().chopped(kWorkingSuffix.size());
    return name.section(u'-', 0, 0);
}

/// Removes the file; false when it is still there.
inline bool isGone(const QString& path) {
    return QFile::remove(path) || !QFileInfo::exists(path);
}

}  // namespace keeper
