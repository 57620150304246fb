// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

namespace keeper {

/// Has the database engine overwrite each piece of memory before it gives it back, so that bound
/// passwords and pages in clear do not stay in the heap. Takes effect for the whole process, once;
/// later calls do nothing. REQUIRES: called before the engine's first use.
void installWipingAllocator();

/// While it lives, small pieces that the engine asks for are kept out of the swap space: the keys
/// of a connection, which stay as long as that, are made then. Holds for the whole process, which
/// has one thread.
class KeyAllocations {
  public:
    explicit KeyAllocations(bool locksKeys);
    ~KeyAllocations();
    KeyAllocations(const KeyAllocations&) = delete;
    KeyAllocations& operator=(const KeyAllocations&) = delete;
};

}  // namespace keeper
