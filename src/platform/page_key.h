// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QByteArray>
#include <QString>
#include <array>
#include <cstdint>

namespace keeper {

/// The key of a database's pages. Its derivation from the password is slow by intention, so that it
/// is made once for an opening and handed to all who need it. Wiped at its end.
class PageKey {
  public:
    using Salt = std::array<std::uint8_t, 16>;
    using Bytes = std::array<std::uint8_t, 32>;

    /// Throws DatabaseError.
    PageKey(const QString& password, const Salt& salt, int rounds);
    ~PageKey();
    PageKey(const PageKey&) = delete;
    PageKey& operator=(const PageKey&) = delete;

    /// The form in which the engine takes a key and its salt without deriving anything. The caller
    /// wipes it.
    [[nodiscard]] QByteArray readyForm() const;
    /// The key of the pages' authentication codes. The caller wipes it.
    [[nodiscard]] Bytes codeKey() const;

  private:
    Salt m_salt;
    Bytes m_key{};
};

}  // namespace keeper
