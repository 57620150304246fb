// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

// The sentence of a log row: whatever the three stored values are, it must be composed without a
// crash, must not depend on what a value looks like, and must not grow beyond its parts.

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "store/sys_log.h"

namespace keeper {
namespace {

constexpr qsizetype kLongestSentence = 400;

void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

void compose(std::int32_t status, std::int32_t count, const QString& description) {
    SysLog log;
    log.m_statusNo = status;
    log.m_lCount = count;
    log.m_Description = description;
    const QString sentence = log.p_Status();
    const bool isKnown = status >= 1 && status <= SysLog::kLastStatus;
    require(sentence.isEmpty() != isKnown);
    require(sentence.size() <= kLongestSentence + description.size());

    // Braces mark places in the vocabulary only: in a value they are letters like any other.
    QString other = description;
    other.replace(QLatin1Char('{'), QLatin1Char('(')).replace(QLatin1Char('}'), QLatin1Char(')'));
    QString expected = sentence;
    expected.replace(QLatin1Char('{'), QLatin1Char('('))
        .replace(QLatin1Char('}'), QLatin1Char(')'));
    log.m_Description = other;
    // Two values that differ by such a letter alone may count as one and choose another sentence.
    const bool mayChoose = status == 29 || status == 32;
    require(mayChoose || log.p_Status() == expected);
}

}  // namespace
}  // namespace keeper

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kHead = 1 + sizeof(std::int32_t);
    if (size >= kHead) {
        std::int32_t count = 0;
        std::memcpy(&count, data + 1, sizeof count);
        keeper::compose(static_cast<std::int8_t>(data[0]), count,
                        QString::fromUtf8(reinterpret_cast<const char*>(data) + kHead,
                                          static_cast<qsizetype>(size - kHead)));
    }
    return 0;
}
