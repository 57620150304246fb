// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QDateTime>
#include <functional>

namespace keeper {

class Clock;
class Prompt;
class Settings;
class StatusPanels;

/// How long the two secrets and the security questions have stood, told at the start of a session.
class SecretAge {
  public:
    enum class Kind { LoginKey = 1, IndependentPassword = 2, Questions = 3 };
    /// Days behind the period in which a renewal is only asked for.
    static constexpr int kGraceDays = 3;

    struct Ports {
        Prompt& prompt;
        const Clock& clock;
        const Settings& settings;
        StatusPanels& panels;
        /// Shows the form of that kind; false when the person left it without renewing.
        std::function<bool(Kind kind)> renew;
        std::function<bool()> hasIndependentPassword;
    };

    explicit SecretAge(Ports ports) : m_ports(std::move(ports)) {}

    /// All three by the settings. False when the session must end, since one was not renewed.
    bool checkAll();
    /// 0 days never expire.
    bool CheckSecretAge(Kind kind, const QDateTime& start, int days);

  private:
    [[nodiscard]] bool forceRenewal(Kind kind, const QString& name, qint64 used,
                                    const QString& date);

    Ports m_ports;
};

}  // namespace keeper
