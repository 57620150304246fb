// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "crypto/secure_wipe.h"

#include <cstring>

namespace keeper {

void secureWipe(void* data, std::size_t size) noexcept {
    if (size > 0) {
        ::explicit_bzero(data, size);
    }
}

void secureWipe(QString& text) noexcept {
    if (text.isDetached() && !text.isEmpty()) {
        secureWipe(text.data(), static_cast<std::size_t>(text.size()) * sizeof(QChar));
    }
    text = QString();
}

}  // namespace keeper
