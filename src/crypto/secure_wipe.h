// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <cstddef>
#include <span>
#include <vector>

namespace keeper {

/// Overwrites memory in a way that the optimiser may not drop (explicit_bzero of the C library).
void secureWipe(void* data, std::size_t size) noexcept;

template <typename Byte>
void secureWipe(std::vector<Byte>& bytes) noexcept {
    secureWipe(bytes.data(), bytes.size() * sizeof(Byte));
}

/// Wipes the text's own buffer and empties it. A buffer that is shared with another QString is left
/// alone, since the other one still needs it.
void secureWipe(QString& text) noexcept;

/// Wipes what it names at the end of the scope.
template <typename Secret>
class WipeGuard {
  public:
    explicit WipeGuard(Secret& secret) : m_secret(secret) {}
    ~WipeGuard() { secureWipe(m_secret); }
    WipeGuard(const WipeGuard&) = delete;
    WipeGuard& operator=(const WipeGuard&) = delete;

  private:
    Secret& m_secret;
};

}  // namespace keeper
