// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <cstddef>

namespace keeper {

/// Keeps the pages that hold `piece` out of the swap space, as far as the limit on locked memory
/// goes, for the life of the process: other secrets may share a page, so that none is released.
/// For what stays in memory while a session runs; what is wiped after its use needs no call.
void keepOutOfSwap(void* piece, std::size_t size) noexcept;
/// The buffer that the text has now. REQUIRES: no other text shares it.
inline void keepOutOfSwap(QString& text) noexcept {
    keepOutOfSwap(text.data(), static_cast<std::size_t>(text.size()) * sizeof(QChar));
}

}  // namespace keeper
