// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <functional>

#include "guard/independent_password.h"
#include "platform/fingerprint_reader.h"

namespace keeper {

/// The rules of the form that verifies who sits in front of the program: by the independent
/// password within a session, by a finger in front of one.
class Authentication {
  public:
    enum class SecretType {
        LoginKey = 0,             ///< with the captions of the login key
        IndependentPassword = 1,  ///< with those of the independent password
        KeepPassword = 2,         ///< the same, and the session keeps the verified password
    };
    enum class Result { NotVerified = 0, Verified = 1, UsedUp = 2 };

    /// All that the form shows.
    struct State {
        QString title;
        QString label;
        QString userName;
        /// Hint of the password, for the tool tip.
        QString hint;
        /// In front of a session: a finger is waited for, and there is no box for a password.
        bool isFingerMode = false;
        /// The picture of a fingerprint, for a user who has chosen fingerprints.
        bool isFingerShown = false;
        QString fingerText;
        bool isFingerRefused = false;
    };

    struct Ports {
        Prompt& prompt;
        System& system;
        IndependentPassword& secret;
        FingerprintReader& reader;
    };

    explicit Authentication(const Ports& ports) : m_ports(ports) {}
    ~Authentication();
    Authentication(const Authentication&) = delete;
    Authentication& operator=(const Authentication&) = delete;

    /// A new showing, for the user of the session. What is verified is the independent password,
    /// whatever the captions say.
    void load(SecretType type);
    /// A new showing in front of a session: the reader waits for a finger of the desktop's user.
    void loadFinger(const QString& userName);

    [[nodiscard]] const State& state() const { return m_state; }
    [[nodiscard]] Result result() const { return m_result; }
    [[nodiscard]] bool isClosed() const { return m_isClosed; }

    void cmdOK(const QString& entry);
    void cmdCancel();

    /// state() has changed, or the form is to close.
    std::function<void()> changed;
    /// The entry was wrong: the box is to be emptied and focused.
    std::function<void()> entryRefused;

  private:
    void begin(const QString& userName);
    void takeFinger(FingerprintReader::Outcome outcome);
    void showFinger(const QString& text, bool isRefused);
    void close(Result result);
    void notify();

    Ports m_ports;
    State m_state;
    SecretType m_type = SecretType::IndependentPassword;
    Result m_result = Result::NotVerified;
    bool m_isClosed = true;
    int m_strangeFingers = 0;
};

}  // namespace keeper
