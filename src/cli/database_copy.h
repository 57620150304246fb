// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <optional>

#include "cli/progress_bar.h"
#include "cli/quiet_ports.h"
#include "cli/signal_watch.h"
#include "crypto/cryptor3.h"
#include "crypto/secure_wipe.h"
#include "platform/database.h"
#include "platform/random.h"
#include "platform/user_folders.h"
#include "store/connecting_display.h"
#include "store/cryptor_host_adapter.h"
#include "store/key_holder.h"
#include "store/sealed_database.h"

namespace keeper::cli {

/// A sealed file unsealed into a copy of its own, where a look and even a guard that writes do no
/// harm. The copy is a page-enciphered database in the user's state folder; it goes with the
/// object, and one that a kill left behind is taken away by the next run or session.
class DatabaseCopy {
  public:
    /// Asks for the key and opens the copy, every page of which is checked. Throws Exit: no such
    /// file, wrong key, damage, trouble of the system, a signal.
    DatabaseCopy(const QString& path, const std::optional<QString>& keyFile);
    ~DatabaseCopy();
    DatabaseCopy(const DatabaseCopy&) = delete;
    DatabaseCopy& operator=(const DatabaseCopy&) = delete;

    [[nodiscard]] Database& connection() { return m_connection; }
    [[nodiscard]] Cryptor3& cipher() { return m_cipher; }
    /// Failures that no exception tells end up here.
    [[nodiscard]] QuietPrompt& prompt() { return m_prompt; }
    [[nodiscard]] SystemRandom& random() { return m_random; }
    /// Whether it was sealed by an earlier version, which a login would lift to the current form.
    [[nodiscard]] bool isOldScheme() const { return m_isOldScheme; }
    /// Throws Exit when a signal has come.
    void heedSignals();

  private:
    class Keys final : public KeyHolder {
      public:
        Keys(QString path, QString key) : m_path(std::move(path)), m_key(std::move(key)) {}
        ~Keys() override { secureWipe(m_key); }
        [[nodiscard]] QString p_plainLgnKey() const override {
            // A copy of its own: the callers wipe what they get.
            return QString(m_key.constData(), m_key.size());
        }
        void p_plainLgnKey(const QString& /*key*/) override {}
        [[nodiscard]] bool takeLgnKey(const QString& /*key*/, const QString& /*formerCopy*/,
                                      const QString& /*copy*/) override {
            return false;
        }
        [[nodiscard]] QString p_hashLgnKey() const override { return {}; }
        [[nodiscard]] QString p_idpPwdHashCode() const override { return {}; }
        [[nodiscard]] QString p_kvdbFile() const override { return m_path; }

      private:
        QString m_path;
        QString m_key;
    };
    class Display final : public ConnectingDisplay {
      public:
        void SetMsg(CryptMode /*mode*/) override { m_bar.emplace(); }
        void setProgress(int percent) override { m_bar->show(static_cast<float>(percent)); }
        void close() override { m_bar.reset(); }

      private:
        std::optional<ProgressBar> m_bar;
    };

    void open();
    [[nodiscard]] bool tryScheme(bool scheme);
    [[noreturn]] void fail(const QString& reason);

    SignalWatch m_signals;
    QString m_path;
    Keys m_keys;
    QuietPrompt m_prompt;
    HookedLoop m_loop;
    PromptCryptorHost m_host{m_prompt, m_loop};
    SystemRandom m_random;
    Cryptor3 m_cipher{m_host};
    Database m_connection;
    Display m_display;
    SealedDatabase m_sealed;
    bool m_isOldScheme = false;
};

}  // namespace keeper::cli
