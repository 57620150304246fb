// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/random.h"

#include <sys/random.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <system_error>

namespace keeper {

std::uint32_t Random::below(std::uint32_t bound) {
    // Values at the ragged end of the range would favour small results: draw again.
    const std::uint32_t limit = UINT32_MAX - UINT32_MAX % bound;
    for (;;) {
        std::array<std::uint8_t, 4> bytes{};
        fill(bytes);
        std::uint32_t value = 0;
        std::memcpy(&value, bytes.data(), bytes.size());
        if (value < limit) {
            return value % bound;
        }
    }
}

void SystemRandom::fill(std::span<std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const ssize_t got = ::getrandom(bytes.data(), bytes.size(), 0);
        if (got < 0) {
            if (errno == EINTR) {
                continue;
            }
            throw std::system_error(errno, std::generic_category(), "getrandom");
        }
        bytes = bytes.subspan(static_cast<std::size_t>(got));
    }
}

}  // namespace keeper
