// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QObject>
#include <QString>

namespace keeper {

/// Lets one program run for each desktop user. Which one is decided by a lock that ends with its
/// process, however that ends; messages between the two only serve convenience.
class SingleInstance : public QObject {
    Q_OBJECT

  public:
    enum class Outcome {
        Holder,         ///< this is the one program; it now hears raiseRequested()
        AlreadyRunning  ///< another one lives
    };

    /// Throws std::runtime_error when neither can be told, such as for a folder that refuses the
    /// lock file: running twice over one database is worse than not starting.
    [[nodiscard]] virtual Outcome acquire() = 0;
    /// Asks the living one to come to the front and, with a path, to look at that file. False when
    /// it could not be reached. REQUIRES: acquire() told AlreadyRunning.
    virtual bool askHolder(const QString& path = {}) = 0;

  Q_SIGNALS:
    /// Another start wants this program in front; `path` is its command line's file or empty.
    void raiseRequested(const QString& path);
};

}  // namespace keeper
