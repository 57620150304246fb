// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

#include "platform/user_folders.h"

namespace keeper {

/// Programs that start with the person's session, one entry for each `id` (letters, digits, "-").
class Autostart {
  public:
    virtual ~Autostart() = default;
    /// False also for an entry that the person has switched off in the desktop's settings.
    [[nodiscard]] virtual bool contains(const QString& id) const = 0;
    /// Starts this program with the one argument `document`, shown to people as `title`. Throws
    /// std::system_error.
    virtual void add(const QString& id, const QString& title, const QString& document) = 0;
    /// Gives an entry that exists the present program and `document`, and leaves all else in it as
    /// it is. Throws std::system_error.
    virtual void refresh(const QString& id, const QString& document) = 0;
    /// Throws std::system_error; an absent entry is no failure.
    virtual void remove(const QString& id) = 0;
};

/// Entries of the XDG autostart folder.
class XdgAutostart final : public Autostart {
  public:
    /// `program` is the full path of the program to start.
    XdgAutostart(const UserFolders& folders, QString program);
    [[nodiscard]] bool contains(const QString& id) const override;
    void add(const QString& id, const QString& title, const QString& document) override;
    void refresh(const QString& id, const QString& document) override;
    void remove(const QString& id) override;
    [[nodiscard]] QString path(const QString& id) const;

  private:
    [[nodiscard]] QString execLine(const QString& document) const;

    QString m_folder;
    QString m_program;
};

/// One argument of the Exec key of a desktop entry, in quotes and escaped (freedesktop.org, Desktop
/// Entry 1.5, "The Exec key" and "Values").
[[nodiscard]] QString desktopExecArgument(const QString& argument);
/// A text as the value of a desktop entry.
[[nodiscard]] QString desktopString(const QString& text);

}  // namespace keeper
