// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

namespace keeper {

/// What the system let us do against a look into this process's memory.
struct Hardening {
    /// No other process of the same user may attach a debugger or read /proc/PID/mem.
    bool isUndumpable = false;
    /// The kernel writes no core file.
    bool hasNoCore = false;
    /// All memory in use is kept out of swap. Only where the limit on locked memory is lifted:
    /// under a limit, locking everything would make later allocations fail. Then keepOutOfSwap() of
    /// memory_lock.h does it for the keys alone.
    bool isLocked = false;
};

/// To be called first in main(). What is refused is reported and changes nothing else. A
/// build with the option KEEPER_DEBUGGABLE, as the tests use, stays open to debuggers when the
/// environment has a variable of that name.
Hardening hardenProcess();

/// Opens a hardened process to a portal's first look.
///
/// A portal reads /proc/PID/root of each new caller and refuses one that it may not read there,
/// but remembers the answer for as long as the caller's bus connection lasts. So the first call
/// must come from an open process, before any secret is in memory; file dialogs of the portal work
/// ever after. Closes again with close() or with the object. Does nothing in a process not
/// hardened.
class OpenToPortals {
  public:
    OpenToPortals();
    ~OpenToPortals() { close(); }
    OpenToPortals(const OpenToPortals&) = delete;
    OpenToPortals& operator=(const OpenToPortals&) = delete;
    void close();

  private:
    bool m_hasOpened = false;
};

}  // namespace keeper
