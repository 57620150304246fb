// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <cstdint>
#include <map>
#include <optional>
#include <variant>

namespace keeper {

/// A registry value: text, or an unsigned 32-bit number.
using RegistryValue = std::variant<QString, std::uint32_t>;

/// The registry in memory: keys by path (steps parted by a backslash), each with named values. It
/// knows neither files nor locks. Names are compared exactly; any text may be a name, the empty one
/// included.
class RegistryImage {
  public:
    /// Why a file could not be taken over.
    enum class Fault { None, Damaged, Newer };

    [[nodiscard]] bool hasKey(const QString& path) const { return m_keys.contains(path); }
    void createKey(const QString& path) { m_keys[path]; }
    /// Deletes the key and those below it; false when there was none.
    bool deleteKey(const QString& path);

    [[nodiscard]] std::optional<RegistryValue> value(const QString& path,
                                                     const QString& name) const;
    /// REQUIRES: the key exists.
    void setValue(const QString& path, const QString& name, const RegistryValue& value);
    /// False when there was none.
    bool deleteValue(const QString& path, const QString& name);
    /// Names of the key's values in order of their UTF-16 units, the empty name first.
    [[nodiscard]] QStringList valueNames(const QString& path) const;

    /// The bytes of the registry file: a head line with format, length and CRC-32 of the body, then
    /// the body. Described in docs/registry-format.md.
    [[nodiscard]] QByteArray toBytes() const;
    /// Accepts exactly what toBytes() can make, so that a fault in a single bit is noticed. On a
    /// fault the image is empty.
    static RegistryImage fromBytes(const QByteArray& bytes, Fault& fault);
    /// A body without its head line; false, and the image unspecified, when it is none.
    bool readBody(const QByteArray& body);

    bool operator==(const RegistryImage&) const = default;

  private:
    using Key = std::map<QString, RegistryValue>;
    std::map<QString, Key> m_keys;
};

}  // namespace keeper
