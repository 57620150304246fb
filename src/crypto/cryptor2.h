// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <QStringView>
#include <cstdint>
#include <span>

namespace keeper {

/// SHA-1 (FIPS 180-1) of texts, bytes and files.
///
/// All digests are upper-case hexadecimal. That of a text is taken over its ANSI bytes.
class Cryptor2 {
  public:
    /// Set while any instance that shares it runs hashFile(). The session makes one and hands it
    /// to all its instances.
    class BusyFlag {
      public:
        [[nodiscard]] bool isSet() const { return m_isSet; }

      private:
        friend class Cryptor2;
        bool m_isSet = false;
    };

    explicit Cryptor2(BusyFlag& shared) : m_busy(shared) {}

    [[nodiscard]] static QString hashString(QStringView text);
    [[nodiscard]] static QString hashArray(std::span<const std::uint8_t> data);

    /// Empty when the file cannot be read, or at once when the shared flag is set.
    [[nodiscard]] QString hashFile(const QString& path);

  private:
    BusyFlag& m_busy;
};

}  // namespace keeper
