// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

// The C library's free and realloc, replaced for the whole process: no memory goes back to the heap
// with its content. What the toolkit copies on the way from a key press to a text, and from there
// to a layout, a clipboard or a message, is out of our hands; that it is overwritten as soon as it
// is given back is not.

#include "wiping_heap.h"

#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <cstring>

// A sanitizer brings a heap of its own, which quarantines and checks what is freed.
#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__)

// NOLINTBEGIN(bugprone-reserved-identifier): the C library's own names
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_realloc(void* piece, std::size_t size);
void __libc_free(void* piece);
}
// NOLINTEND(bugprone-reserved-identifier)

namespace {

/// The process has one heap, and free() no object to ask.
std::atomic<bool> isWiping = false;

/// Pieces of many pages are mapped for themselves and unmapped when freed: their content goes with
/// the pages, and writing over those that were never touched would only bring them into being.
bool isMapped(void* piece) {
    constexpr std::size_t kMappedFlag = 2;
    return (*(static_cast<std::size_t*>(piece) - 1) & kMappedFlag) != 0;
}

}  // namespace

extern "C" void free(void* piece) noexcept {
    if (piece == nullptr) {
        return;
    }
    if (isWiping.load(std::memory_order_relaxed) && !isMapped(piece)) {
        ::explicit_bzero(piece, ::malloc_usable_size(piece));
    }
    __libc_free(piece);
}

extern "C" void* realloc(void* piece, std::size_t size) noexcept {
    if (piece == nullptr || !isWiping.load(std::memory_order_relaxed)) {
        return __libc_realloc(piece, size);
    }
    if (size == 0) {
        free(piece);
        return nullptr;
    }
    const std::size_t present = ::malloc_usable_size(piece);
    if (size <= present && size >= present / 2) {
        return piece;
    }
    void* const other = __libc_malloc(size);
    if (other != nullptr) {
        std::memcpy(other, piece, std::min(present, size));
        free(piece);
    }
    return other;
}

void keeper::startWipingHeap() {
    isWiping.store(true, std::memory_order_relaxed);
}

#else

void keeper::startWipingHeap() {}

#endif
