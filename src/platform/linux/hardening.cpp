// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/linux/hardening.h"

#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>

#include <cstdlib>

namespace keeper {

Hardening hardenProcess() {
    Hardening result;
#ifdef KEEPER_DEBUGGABLE
    if (std::getenv("KEEPER_DEBUGGABLE") != nullptr) {
        return result;
    }
#endif
    const rlimit none{0, 0};
    result.hasNoCore = ::setrlimit(RLIMIT_CORE, &none) == 0;
    result.isUndumpable = ::prctl(PR_SET_DUMPABLE, 0, 0, 0, 0) == 0;
    rlimit locked{};
    if (::getrlimit(RLIMIT_MEMLOCK, &locked) == 0 && locked.rlim_cur == RLIM_INFINITY) {
        // On fault: only pages that are really used, not the whole of every library.
        result.isLocked = ::mlockall(MCL_CURRENT | MCL_FUTURE | MCL_ONFAULT) == 0;
    }
    return result;
}

OpenToPortals::OpenToPortals() {
    if (::prctl(PR_GET_DUMPABLE, 0, 0, 0, 0) == 0) {
        m_hasOpened = ::prctl(PR_SET_DUMPABLE, 1, 0, 0, 0) == 0;
    }
}

void OpenToPortals::close() {
    if (m_hasOpened) {
        m_hasOpened = false;
        ::prctl(PR_SET_DUMPABLE, 0, 0, 0, 0);
    }
}

}  // namespace keeper
