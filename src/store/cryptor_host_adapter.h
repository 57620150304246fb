// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "crypto/cryptor_host.h"
#include "platform/event_loop.h"
#include "platform/prompt.h"

namespace keeper {

/// Lets the ciphers speak through the session's Prompt and turn its EventLoop.
class PromptCryptorHost final : public CryptorHost {
  public:
    PromptCryptorHost(Prompt& prompt, EventLoop& eventLoop)
        : m_prompt(prompt), m_eventLoop(eventLoop) {}

    void showMessage(Severity severity, const QString& text) override {
        m_prompt.messageBox(text, severity == Severity::Critical ? Prompt::Icon::Critical
                                                                 : Prompt::Icon::Exclamation);
    }
    void turnEventLoop() override { m_eventLoop.turn(); }

  private:
    Prompt& m_prompt;
    EventLoop& m_eventLoop;
};

}  // namespace keeper
