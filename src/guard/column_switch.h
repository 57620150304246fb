// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <functional>
#include <utility>

#include "store/column_cryption.h"

namespace keeper {

class Clock;
class IndependentPassword;
class SysLogs;
class System;

/// The rules of the form that switches column encryption on and off. The conversion of the data,
/// the switch and the record in the log are one transaction.
class ColumnSwitch {
  public:
    struct Ports {
        Prompt& prompt;
        const Clock& clock;
        System& system;
        Database& database;
        IndependentPassword& secret;
        SysLogs& logs;
        ColumnCryption& cryption;
    };

    /// All that the form shows.
    struct State {
        bool isOn = false;
        QString caption;
        bool isRunning = false;
        bool isStopping = false;
        int percent = 0;
    };

    explicit ColumnSwitch(const Ports& ports);
    ~ColumnSwitch();
    ColumnSwitch(const ColumnSwitch&) = delete;
    ColumnSwitch& operator=(const ColumnSwitch&) = delete;

    [[nodiscard]] static QString illustration();

    /// A new showing.
    void load();
    [[nodiscard]] const State& state() const { return m_state; }
    [[nodiscard]] bool isClosed() const { return m_isClosed; }
    /// The chances of the independent password were used up here: the session is over.
    /// Whether a conversion was stopped by close() since the last call, which nobody was told.
    [[nodiscard]] bool takeUntoldStop() { return std::exchange(m_hasUntoldStop, false); }
    [[nodiscard]] bool isUsedUp() const { return m_isUsedUp; }
    [[nodiscard]] bool isRunning() const { return m_state.isRunning; }

    /// The click: turns the switch round under the typed password, after a confirmation.
    void chkCryptionStatus(const QString& entry);
    /// Closes the form, or asks a running conversion to stop, after which all is as before.
    void cmdCancel();
    /// Closes it whatever it does: a running conversion is stopped first.
    void close();

    /// state() has changed, or the form is to close.
    std::function<void()> changed;
    /// The box of the password is to be emptied and focused.
    std::function<void()> emptyEntry;

  private:
    [[nodiscard]] bool checkValid(const QString& entry, bool turnsOn);
    [[nodiscard]] bool IdentifySecret(const QString& entry);
    void m_columnCcryption_DisplayProgress(int percent);
    [[nodiscard]] ColumnCryption::Outcome convert(bool turnsOn);
    [[nodiscard]] ColumnCryption::Outcome convertInTransaction(bool turnsOn);
    [[nodiscard]] bool record(bool turnsOn);
    void tell(ColumnCryption::Outcome outcome, bool turnsOn);
    void showSwitch();
    void returnToRest();
    void notify();

    Ports m_ports;
    State m_state;
    bool m_isClosed = true;
    bool m_isUsedUp = false;
    bool m_closesAtEnd = false;
    bool m_hasUntoldStop = false;
};

}  // namespace keeper
