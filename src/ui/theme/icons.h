// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QIcon>
#include <QString>

namespace keeper {

/// The program's own line icons. The name of the file in data/icons/glyphs is the same word with
/// dashes.
enum class Glyph {
    Add,
    Application,
    ArrowLeft,
    ArrowRight,
    Bookmark,
    CapsLock,
    Check,
    Close,
    Copy,
    Delete,
    Dice,
    Edit,
    Error,
    Exit,
    Eye,
    EyeOff,
    File,
    Fingerprint,
    Folder,
    FolderOpen,
    Hourglass,
    Info,
    Key,
    Keyboard,
    Language,
    Link,
    Lock,
    Log,
    Paste,
    Question,
    Refresh,
    Save,
    Search,
    Settings,
    Shield,
    Undo,
    Unlock,
    User,
    Warning,
    Website,
};

/// The tint of an icon: the text colour of where it stands, or a meaning.
enum class IconTint { Text, Accent, Good, Warning, Danger };

/// An icon that is drawn from its vectors at the wanted size and in the palette's present colours,
/// so that it follows a change of theme by itself. Costs nothing until it is painted.
[[nodiscard]] QIcon glyphIcon(Glyph glyph, IconTint tint = IconTint::Text);

/// The program's icon, in full colour.
[[nodiscard]] QIcon programIcon();
/// The same with a padlock: the manager is locked.
[[nodiscard]] QIcon lockedProgramIcon();

}  // namespace keeper
