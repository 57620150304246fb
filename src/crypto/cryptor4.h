// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <array>
#include <cstdint>
#include <functional>
#include <span>

#include "crypto/cryptor_host.h"

namespace keeper {

/// A public-key codec on small numbers, with which random passwords are wrapped before they are
/// stored. It hides a password from a casual look and no more: whoever has the table has the keys.
class Cryptor4 {
  public:
    /// Element 0 is the exponent for Encode, 1 that for Decode, 2 the modulus.
    using Key = std::array<std::int32_t, 3>;
    /// Fills its argument with random bytes fit for keys, or throws.
    using RandomFill = std::function<void(std::span<std::uint8_t>)>;

    Cryptor4(CryptorHost& host, RandomFill random);

    /// Each character's ANSI code, raised to the exponent; decimal numbers joined by "+", written
    /// in an alphabet of 64 without padding. Empty text stays empty; exponent or modulus 0 returns
    /// the text unchanged. Only codes below 256 and below the modulus can be brought back.
    [[nodiscard]] QString Encode(const QString& text, std::int32_t exponent, std::int32_t modulus);

    /// The reverse; each number becomes the character of a single byte (ansiCharacter()). A text
    /// that does not hold numbers gives an empty result.
    [[nodiscard]] QString Decode(const QString& text, std::int32_t exponent, std::int32_t modulus);

    /// A fresh key of the RSA scheme from two primes below 1,000, whose modulus is above 255, fits
    /// Mult, and is not above `limit` where that is not 0. Throws std::invalid_argument for a
    /// negative limit and for one from 1 to 258, which no key can meet.
    [[nodiscard]] Key GenKey(std::int32_t limit);
    /// What GenKey made last; zeros before the first.
    [[nodiscard]] const Key& lastKey() const { return m_lastKey; }

    /// base ^ exponent modulo modulus in signed 32-bit steps. A step that leaves 32 bits is shown
    /// to the user and gives 0; a modulus below 46,341 never does for residues.
    [[nodiscard]] std::int32_t Mult(std::int32_t base, std::int32_t exponent, std::int32_t modulus);

    /// A random text whose characters have the ANSI codes 1 to 255, each as likely as the others;
    /// its length is drawn evenly between the two. Empty when minLength is above maxLength.
    [[nodiscard]] QString RanPwd4PGP(std::int16_t minLength, std::int16_t maxLength);

    /// Key index mod 50 of the program's table. What was encoded under one table cannot be read
    /// under another: it must never change.
    static void GetPGPKey(std::int16_t index, Key& key);

  private:
    [[nodiscard]] std::uint32_t randomBelow(std::uint32_t bound);
    [[nodiscard]] std::int32_t randomPrime();
    void showMultFailure(const CryptorError& error);

    CryptorHost& m_host;
    RandomFill m_random;
    Key m_lastKey{};
};

}  // namespace keeper
