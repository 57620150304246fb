// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <optional>

namespace keeper {

/// Where logic speaks to a person: message boxes, input boxes, file dialogs. All calls block until
/// the person answers, while the event loop runs.
class Prompt {
  public:
    enum class Icon { None, Information, Question, Exclamation, Critical };
    enum class Buttons { Ok, OkCancel, YesNo, YesNoCancel };
    enum class Answer { Ok, Cancel, Yes, No };

    virtual ~Prompt() = default;

    /// An empty title stands for the program's name. Closing the box counts as Cancel, or as No
    /// where there is no Cancel, or as Ok where that is the only button. `preset` is what Enter
    /// answers; without one it is the first button, but the harmless one (No, Cancel) where a
    /// warning asks, and No where there are three.
    virtual Answer messageBox(const QString& text, Icon icon, Buttons buttons = Buttons::Ok,
                              const QString& title = {}, std::optional<Answer> preset = {}) = 0;
    /// No value when the person cancels; an empty text when it was accepted empty.
    virtual std::optional<QString> inputBox(const QString& prompt, const QString& title,
                                            const QString& defaultText = {}) = 0;
    /// `filter` as for a file dialog, such as "数据库 (*.kvdb)". Empty when cancelled.
    virtual QString openFile(const QString& title, const QString& folder,
                             const QString& filter) = 0;
    virtual QString saveFile(const QString& title, const QString& path, const QString& filter) = 0;
    virtual QString chooseFolder(const QString& title, const QString& folder) = 0;
};

}  // namespace keeper
