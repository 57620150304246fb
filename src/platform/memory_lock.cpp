// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/memory_lock.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>

namespace keeper {

void keepOutOfSwap(void* piece, std::size_t size) noexcept {
    if (piece == nullptr || size == 0) {
        return;
    }
    static const auto page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
    const auto begin = reinterpret_cast<std::uintptr_t>(piece) & ~(page - 1);
    const auto end = reinterpret_cast<std::uintptr_t>(piece) + size;
    // A limit that is used up leaves things as they are without the call.
    static_cast<void>(::mlock(reinterpret_cast<const void*>(begin), end - begin));
}

}  // namespace keeper
