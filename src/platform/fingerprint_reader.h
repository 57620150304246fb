// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <functional>

namespace keeper {

/// The machine's fingerprint reader, as far as it knows the fingers of the desktop's user.
class FingerprintReader {
  public:
    enum class Outcome {
        Match,
        NoMatch,      ///< a finger, but none of the user's; the reader waits for the next
        TryAgain,     ///< nothing to judge by: too short, not centred; the reader still waits
        Disconnected  ///< the reader cannot go on
    };

    virtual ~FingerprintReader() = default;

    /// Whether there is a reader with at least one finger of this user. Asks anew at each call and
    /// never waits long.
    [[nodiscard]] virtual bool isAvailable() = 0;
    /// The same question without waiting at all: the answer comes from the event loop, if ever.
    virtual void lookFor(std::function<void(bool isAvailable)> tell) = 0;
    /// Waits for fingers until stop(), a match or a disconnection; each is told to `tell`, from the
    /// event loop. False when the reader cannot be had now, such as when another program uses it.
    [[nodiscard]] virtual bool start(std::function<void(Outcome)> tell) = 0;
    /// Sets the reader free. Harmless when nothing runs.
    virtual void stop() = 0;
};

/// A machine without a reader.
class NoFingerprintReader final : public FingerprintReader {
  public:
    [[nodiscard]] bool isAvailable() override { return false; }
    void lookFor(std::function<void(bool isAvailable)> /*tell*/) override {}
    [[nodiscard]] bool start(std::function<void(Outcome)> /*tell*/) override { return false; }
    void stop() override {}
};

}  // namespace keeper
