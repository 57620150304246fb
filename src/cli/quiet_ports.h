// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <functional>

#include "platform/event_loop.h"
#include "platform/prompt.h"

namespace keeper::cli {

/// Keeps the message of a failure for the one line on standard error, and declines every question.
class QuietPrompt final : public Prompt {
  public:
    Answer messageBox(const QString& text, Icon /*icon*/, Buttons buttons = Buttons::Ok,
                      const QString& /*title*/ = {},
                      std::optional<Answer> /*preset*/ = {}) override {
        message = text;
        switch (buttons) {
            case Buttons::Ok:
                return Answer::Ok;
            case Buttons::YesNo:
                return Answer::No;
            case Buttons::OkCancel:
            case Buttons::YesNoCancel:
                break;
        }
        return Answer::Cancel;
    }
    std::optional<QString> inputBox(const QString& /*prompt*/, const QString& /*title*/,
                                    const QString& /*defaultText*/ = {}) override {
        return {};
    }
    QString openFile(const QString& /*title*/, const QString& /*folder*/,
                     const QString& /*filter*/) override {
        return {};
    }
    QString saveFile(const QString& /*title*/, const QString& /*path*/,
                     const QString& /*filter*/) override {
        return {};
    }
    QString chooseFolder(const QString& /*title*/, const QString& /*folder*/) override {
        return {};
    }

    QString message;
};

/// What long work turns, so that a signal is seen.
class HookedLoop final : public EventLoop {
  public:
    void turn() override {
        if (onTurn) {
            onTurn();
        }
    }

    std::function<void()> onTurn;
};

}  // namespace keeper::cli
