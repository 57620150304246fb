// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <cstdio>
#include <cstdlib>

#include "crypto/cryptor_host.h"
#include "platform/prompt.h"
#include "store/column_cipher.h"

namespace keeper {

/// A message box in a benchmark is an error of the benchmark.
[[noreturn]] inline void failBenchmark(const QString& text) {
    std::fprintf(stderr, "%s\n", text.toUtf8().constData());
    std::exit(1);
}

class FatalPrompt final : public Prompt {
  public:
    Answer messageBox(const QString& text, Icon, Buttons, const QString&,
                      std::optional<Answer>) override {
        failBenchmark(text);
    }
    std::optional<QString> inputBox(const QString&, const QString&, const QString&) override {
        return {};
    }
    QString openFile(const QString&, const QString&, const QString&) override { return {}; }
    QString saveFile(const QString&, const QString&, const QString&) override { return {}; }
    QString chooseFolder(const QString&, const QString&) override { return {}; }
};

class FatalHost final : public CryptorHost {
  public:
    void showMessage(Severity, const QString& text) override { failBenchmark(text); }
    void turnEventLoop() override {}
};

class PlainColumns final : public ColumnKey {
  public:
    [[nodiscard]] bool p_idpPwdSwitch() const override { return false; }
    [[nodiscard]] QString p_plainIdpPwd() const override { return {}; }
};

}  // namespace keeper
