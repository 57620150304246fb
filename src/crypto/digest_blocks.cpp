// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "crypto/digest_blocks.h"

#include <algorithm>

#include "crypto/secure_wipe.h"

namespace keeper {

PaddedTail::PaddedTail(std::span<const std::uint8_t> tail, std::uint64_t totalBytes,
                       std::endian lengthOrder) {
    std::copy(tail.begin(), tail.end(), m_bytes.begin());
    m_bytes[tail.size()] = 0x80;
    m_blocks = tail.size() + 1 + sizeof(std::uint64_t) > kDigestBlock ? 2 : 1;
    const std::uint64_t bits = totalBytes * 8;
    std::uint8_t* const length = m_bytes.data() + m_blocks * kDigestBlock - sizeof bits;
    for (unsigned i = 0; i < sizeof bits; ++i) {
        const unsigned shift = lengthOrder == std::endian::little ? 8 * i : 56 - 8 * i;
        length[i] = static_cast<std::uint8_t>(bits >> shift);
    }
}

PaddedTail::~PaddedTail() {
    secureWipe(m_bytes.data(), m_bytes.size());
}

QString digestText(std::span<const std::uint32_t> words, std::endian order) {
    static constexpr char16_t kDigits[] = u"0123456789ABCDEF";
    QString text;
    text.reserve(static_cast<qsizetype>(words.size()) * 8);
    for (const std::uint32_t word : words) {
        for (unsigned i = 0; i < 4; ++i) {
            const unsigned shift = order == std::endian::little ? 8 * i : 24 - 8 * i;
            text += QChar(kDigits[word >> (shift + 4) & 15U]);
            text += QChar(kDigits[word >> shift & 15U]);
        }
    }
    return text;
}

}  // namespace keeper
