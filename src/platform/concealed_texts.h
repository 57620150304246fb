// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <cstdint>
#include <span>
#include <vector>

namespace keeper {

class Random;

/// Keeps texts out of reach of whoever searches the memory for them: each is held under a random
/// pad of its own length. Pad and text lie in one process, so this withstands a search for what is
/// known or looks like a password, and swap or core files cut off somewhere; not a debugger in the
/// hands of one who knows the program.
class ConcealedTexts {
  public:
    ConcealedTexts() = default;
    ~ConcealedTexts() { forget(); }
    ConcealedTexts(const ConcealedTexts&) = delete;
    ConcealedTexts& operator=(const ConcealedTexts&) = delete;

    /// Takes the texts from their places, which are empty afterwards, and wipes their memory as far
    /// as nobody else shares it.
    void conceal(std::span<QString* const> texts, Random& random);
    /// Puts them back, in the same order, and forgets them. Places beyond what is held stay.
    void reveal(std::span<QString* const> texts);
    [[nodiscard]] bool isEmpty() const { return m_lengths.empty(); }

  private:
    void forget();

    std::vector<std::size_t> m_lengths;
    std::vector<std::uint8_t> m_hidden;
    std::vector<std::uint8_t> m_pad;
};

}  // namespace keeper
