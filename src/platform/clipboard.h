// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

namespace keeper {

/// The clipboard that a person pastes from. Nothing is ever put into the selection that a middle
/// click pastes: it would hand a password to whatever window is clicked next.
class Clipboard {
  public:
    enum class Kind {
        Plain,
        Secret,  ///< marked so that clipboard histories leave it out
    };

    virtual ~Clipboard() = default;
    virtual void setText(const QString& text, Kind kind) = 0;
    [[nodiscard]] virtual QString text() const = 0;
    /// Whether what lies there now was put there by this process.
    [[nodiscard]] virtual bool isOwned() const = 0;
    /// Empties the clipboard, but only of our own content: what another program put there since is
    /// its person's, not ours. To be called before the program ends, or a clipboard manager may
    /// keep the text. Returns whether something was cleared.
    virtual bool clear() = 0;
    /// Takes back the selection when a window of this process holds it.
    virtual void clearSelection() = 0;
};

}  // namespace keeper
