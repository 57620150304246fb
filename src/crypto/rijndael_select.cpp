// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "crypto/rijndael.h"

#ifdef KEEPER_X86_64
#include <cpuid.h>
#endif

namespace keeper::rijndael {
namespace {

#ifdef KEEPER_X86_64
/// The register sets that the operating system saves.
std::uint32_t enabledStates() {
    std::uint32_t low = 0;
    std::uint32_t high = 0;
    __asm__("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    return low;
}

unsigned detectPaths() {
    unsigned eax = 0;
    unsigned ebx = 0;
    unsigned ecx = 0;
    unsigned edx = 0;
    constexpr unsigned aesSse = bit_AES | bit_SSSE3 | bit_SSE4_1;
    if (__get_cpuid(1, &eax, &ebx, &ecx, &edx) == 0 || (ecx & aesSse) != aesSse) {
        return Portable;
    }
    unsigned paths = Portable | AesNi;
    const bool savesMore = (ecx & bit_OSXSAVE) != 0 && (ecx & bit_AVX) != 0;
    if (!savesMore || __get_cpuid_count(7, 0, &eax, &ebx, &ecx, &edx) == 0) {
        return paths;
    }
    const std::uint32_t states = enabledStates();
    constexpr std::uint32_t ymmStates = 0x06;
    constexpr std::uint32_t zmmStates = 0xE6;
    constexpr unsigned avx512 = bit_AVX512F | bit_AVX512BW | bit_AVX512VL;
    constexpr unsigned vaesBit = 1U << 9U;
    constexpr unsigned vbmiBit = 1U << 1U;
    if ((ecx & vaesBit) != 0 && (ebx & bit_AVX2) != 0 && (states & ymmStates) == ymmStates) {
        paths |= Vaes256;
        if ((ecx & vbmiBit) != 0 && (ebx & avx512) == avx512 && (states & zmmStates) == zmmStates) {
            paths |= Vaes512;
        }
    }
    return paths;
}
#endif

}  // namespace

const Implementation& selectImplementation([[maybe_unused]] unsigned allowed) {
#ifdef KEEPER_X86_64
    static const unsigned available = detectPaths();
    const unsigned usable = available & allowed;
    if ((usable & Vaes512) != 0) {
        return vaes512Implementation;
    }
    if ((usable & Vaes256) != 0) {
        return vaes256Implementation;
    }
    if ((usable & AesNi) != 0) {
        return aesNiImplementation;
    }
#endif
    return portableImplementation;
}

}  // namespace keeper::rijndael
