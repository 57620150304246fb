// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

namespace keeper {

/// Where this system keeps a person's things: full paths without a slash at the end, which need not
/// exist. Tests point all of them into a temporary folder.
struct UserFolders {
    QString home;
    QString desktop;
    QString documents;
    QString pictures;
    QString music;
    QString videos;
    QString configuration;  ///< of all programs, such as ~/.config
    QString data;           ///< of all programs, such as ~/.local/share
    QString state;          ///< of all programs, such as ~/.local/state
    QString temporary;

    /// The program's own folder for the registry; 0700.
    [[nodiscard]] QString registry() const;
    /// Desktop entries here are started with the session.
    [[nodiscard]] QString autostart() const;

    /// By the XDG base directories and user directories; a relative path in a variable is ignored,
    /// as the XDG rules demand.
    [[nodiscard]] static UserFolders ofSystem();
};

}  // namespace keeper
