// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/prompt.h"

namespace keeper {

/// Boxes and file dialogs of the toolkit, in front of whatever window is active. Texts are shown
/// as they are, never as markup.
class QtPrompt final : public Prompt {
  public:
    Answer messageBox(const QString& text, Icon icon, Buttons buttons = Buttons::Ok,
                      const QString& title = {}, std::optional<Answer> preset = {}) override;
    std::optional<QString> inputBox(const QString& prompt, const QString& title,
                                    const QString& defaultText = {}) override;
    QString openFile(const QString& title, const QString& folder, const QString& filter) override;
    /// The filter's extension is added to a name that has none.
    QString saveFile(const QString& title, const QString& path, const QString& filter) override;
    QString chooseFolder(const QString& title, const QString& folder) override;
};

}  // namespace keeper
