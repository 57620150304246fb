// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/random.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

namespace keeper {
namespace {

/// Hands out a fixed sequence of words, so that the rejection of the ragged end can be seen.
class ScriptedRandom final : public Random {
  public:
    explicit ScriptedRandom(std::vector<std::uint8_t> bytes) : m_bytes(std::move(bytes)) {}
    void fill(std::span<std::uint8_t> out) override {
        for (auto& byte : out) {
            byte = m_bytes.at(m_next++);
        }
    }
    std::size_t used() const { return m_next; }

  private:
    std::vector<std::uint8_t> m_bytes;
    std::size_t m_next = 0;
};

TEST(Random, DrawsAgainAtTheRaggedEndOfTheRange) {
    ScriptedRandom random({0xFF, 0xFF, 0xFF, 0xFF, 0x07, 0x00, 0x00, 0x00});
    EXPECT_EQ(random.below(5), 2U);
    EXPECT_EQ(random.used(), 8U);
}

TEST(Random, SystemBytesAreNotConstantAndBoundsHold) {
    SystemRandom random;
    std::array<std::uint8_t, 64> first{};
    std::array<std::uint8_t, 64> second{};
    random.fill(first);
    random.fill(second);
    EXPECT_NE(first, second);
    std::array<int, 49> seen{};
    for (int i = 0; i < 49 * 200; ++i) {
        ++seen.at(random.below(49));
    }
    for (const int count : seen) {
        EXPECT_GT(count, 80);
        EXPECT_LT(count, 360);
    }
}

}  // namespace
}  // namespace keeper
