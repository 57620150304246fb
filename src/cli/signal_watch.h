// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

namespace keeper::cli {

/// Holds back the signals that end a program (Ctrl-C, hang-up, terminate), so that work in progress
/// can be undone first. They are looked at, never handled behind the program's back. A signal that
/// was ignored when the program started stays ignored.
class SignalWatch {
  public:
    SignalWatch();
    ~SignalWatch();
    SignalWatch(const SignalWatch&) = delete;
    SignalWatch& operator=(const SignalWatch&) = delete;

    /// The first signal that came, 0 while there is none.
    [[nodiscard]] int pending();
    /// Readable when a signal has come.
    [[nodiscard]] int descriptor() const { return m_descriptor; }

  private:
    int m_descriptor = -1;
    int m_first = 0;
};

}  // namespace keeper::cli
