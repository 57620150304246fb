// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <gtest/gtest.h>

#include <QString>
#include <QStringList>
#include <deque>
#include <functional>
#include <vector>

#include "platform/prompt.h"

namespace keeper {

/// Answers from a script and keeps what was shown, in order. A question without a scripted answer
/// is a failure of the test; a plain message (Ok only) needs none.
class ScriptedPrompt final : public Prompt {
  public:
    struct Shown {
        QString text;
        Icon icon = Icon::None;
        Buttons buttons = Buttons::Ok;
        QString title;
        std::optional<Answer> preset = {};
    };

    std::vector<Shown> boxes;
    std::deque<Answer> answers;
    std::deque<std::optional<QString>> inputs;
    std::deque<QString> paths;
    /// Titles (and for input boxes the prompts) of the dialogs that asked for a text or a path.
    QStringList dialogs;
    /// Called while a message box stands on the screen.
    std::function<void()> onShown;

    Answer messageBox(const QString& text, Icon icon, Buttons buttons, const QString& title,
                      std::optional<Answer> preset) override {
        boxes.push_back({text, icon, buttons, title, preset});
        if (onShown) {
            onShown();
        }
        if (buttons == Buttons::Ok) {
            return Answer::Ok;
        }
        if (answers.empty()) {
            ADD_FAILURE() << "no answer scripted for: " << text.toStdString();
            return Answer::Cancel;
        }
        const Answer answer = answers.front();
        answers.pop_front();
        return answer;
    }
    std::optional<QString> inputBox(const QString& prompt, const QString& title,
                                    const QString& defaultText) override {
        dialogs << title + QStringLiteral("|") + prompt + QStringLiteral("|") + defaultText;
        return next(inputs, std::optional<QString>());
    }
    QString openFile(const QString& title, const QString& folder, const QString& filter) override {
        dialogs << title + QStringLiteral("|") + folder + QStringLiteral("|") + filter;
        return next(paths, QString());
    }
    QString saveFile(const QString& title, const QString& path, const QString& filter) override {
        dialogs << title + QStringLiteral("|") + path + QStringLiteral("|") + filter;
        return next(paths, QString());
    }
    QString chooseFolder(const QString& title, const QString& folder) override {
        dialogs << title + QStringLiteral("|") + folder;
        return next(paths, QString());
    }

    /// Texts of the boxes so far, emptied by the call.
    QStringList takeTexts() {
        QStringList texts;
        for (const Shown& box : boxes) {
            texts << box.text;
        }
        boxes.clear();
        return texts;
    }

  private:
    template <typename Value>
    Value next(std::deque<Value>& queue, const Value& fallback) {
        if (queue.empty()) {
            ADD_FAILURE() << "no value scripted for: " << dialogs.last().toStdString();
            return fallback;
        }
        const Value value = queue.front();
        queue.pop_front();
        return value;
    }
};

}  // namespace keeper
