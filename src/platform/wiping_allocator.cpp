// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/wiping_allocator.h"

#include <malloc.h>
#include <sqlcipher/sqlite3.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <mutex>

#include "crypto/secure_wipe.h"
#include "platform/database.h"
#include "platform/memory_lock.h"

namespace keeper {
namespace {

int sizeOf(void* piece) {
    return static_cast<int>(::malloc_usable_size(piece));
}

/// The engine's allocator has no object to ask.
bool areKeysMade = false;

void* allocate(int size) {
    constexpr int kLargestKey = 512;
    void* const piece = std::malloc(static_cast<std::size_t>(size));
    if (areKeysMade && size <= kLargestKey) {
        keepOutOfSwap(piece, static_cast<std::size_t>(size));
    }
    return piece;
}

void wipeAndFree(void* piece) {
    if (piece != nullptr) {
        secureWipe(piece, ::malloc_usable_size(piece));
        std::free(piece);
    }
}

/// realloc of the C library may leave the old bytes behind.
void* reallocate(void* piece, int size) {
    void* const larger = allocate(size);
    if (larger != nullptr) {
        std::memcpy(larger, piece, static_cast<std::size_t>(std::min(sizeOf(piece), size)));
        wipeAndFree(piece);
    }
    return larger;
}

int roundUp(int size) {
    return (size + 7) & ~7;
}

int start(void*) {
    return SQLITE_OK;
}
void stop(void*) {}

}  // namespace

void installWipingAllocator() {
    static std::once_flag once;
    std::call_once(once, [] {
        static const sqlite3_mem_methods methods{allocate, wipeAndFree, reallocate, sizeOf,
                                                 roundUp,  start,       stop,       nullptr};
        if (const int result = sqlite3_config(SQLITE_CONFIG_MALLOC, &methods);
            result != SQLITE_OK) {
            throw DatabaseError(result, QStringLiteral("sqlite3_config: refused"));
        }
    });
}

KeyAllocations::KeyAllocations(bool locksKeys) {
    areKeysMade = locksKeys;
}

KeyAllocations::~KeyAllocations() {
    areKeysMade = false;
}

}  // namespace keeper
