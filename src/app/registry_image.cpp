// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/registry_image.h"

#include <array>

namespace keeper {
namespace {

constexpr QByteArrayView magic = "morvane-keeper-registry ";
constexpr unsigned formatVersion = 1;

/// CRC-32 of ISO 3309 (reflected, polynomial 0x04C11DB7).
std::uint32_t crc32(const QByteArray& bytes) {
    static const auto table = [] {
        std::array<std::uint32_t, 256> made{};
        for (std::uint32_t i = 0; i < made.size(); ++i) {
            std::uint32_t value = i;
            for (int bit = 0; bit < 8; ++bit) {
                value = (value >> 1U) ^ ((value & 1U) != 0 ? 0xEDB88320U : 0U);
            }
            made.at(i) = value;
        }
        return made;
    }();
    std::uint32_t crc = 0xFFFFFFFFU;
    for (const char byte : bytes) {
        crc = table.at((crc ^ static_cast<std::uint8_t>(byte)) & 0xFFU) ^ (crc >> 8U);
    }
    return ~crc;
}

QByteArray headLine(const QByteArray& body, unsigned version = formatVersion) {
    return magic.toByteArray() + QByteArray::number(version) + ' ' +
           QByteArray::number(body.size()) + ' ' +
           QByteArray::number(crc32(body), 16).rightJustified(8, '0') + '\n';
}

/// Backslash doubled; controls, the byte order mark and halves of surrogate pairs that stand alone
/// as \uXXXX. So a line break or a tab always belongs to the format, and the bytes are always good
/// UTF-8 that every decoder leaves as it is.
QByteArray escaped(const QString& text) {
    QString line;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar unit = text.at(i);
        const bool startsPair =
            unit.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate();
        if (unit == u'\\') {
            line += QStringLiteral("\\\\");
        } else if (startsPair) {
            line += unit;
            line += text.at(++i);
        } else if (unit.unicode() < 0x20 || unit.unicode() == 0x7F ||
                   unit == QChar::ByteOrderMark || unit.isSurrogate()) {
            line += QStringLiteral("\\u%1").arg(
                QString::number(unit.unicode(), 16).rightJustified(4, u'0'));
        } else {
            line += unit;
        }
    }
    return line.toUtf8();
}

/// The reverse of escaped(); the caller compares, so leniency here opens nothing.
QString unescaped(const QByteArray& bytes) {
    const QString line = QString::fromUtf8(bytes);
    QString text;
    for (qsizetype i = 0; i < line.size(); ++i) {
        const bool isEscape = line.at(i) == u'\\' && i + 1 < line.size();
        i += isEscape ? 1 : 0;
        if (isEscape && line.at(i) == u'u') {
            text += QChar(static_cast<char16_t>(QStringView(line).mid(i + 1, 4).toUShort({}, 16)));
            i += 4;
        } else {
            text += line.at(i);
        }
    }
    return text;
}

QByteArray valueLine(const QString& name, const RegistryValue& value) {
    QByteArray line;
    if (const auto* text = std::get_if<QString>(&value)) {
        line = "S " + escaped(name) + '\t' + escaped(*text);
    } else {
        line = "D " + escaped(name) + '\t' + QByteArray::number(std::get<std::uint32_t>(value));
    }
    return line + '\n';
}

}  // namespace

bool RegistryImage::deleteKey(const QString& path) {
    const QString below = path + u'\\';
    return std::erase_if(m_keys, [&](const auto& key) {
               return key.first == path || key.first.startsWith(below);
           }) > 0;
}

std::optional<RegistryValue> RegistryImage::value(const QString& path, const QString& name) const {
    const auto key = m_keys.find(path);
    if (key == m_keys.end()) {
        return std::nullopt;
    }
    const auto found = key->second.find(name);
    return found == key->second.end() ? std::nullopt : std::optional(found->second);
}

void RegistryImage::setValue(const QString& path, const QString& name, const RegistryValue& value) {
    m_keys.at(path).insert_or_assign(name, value);
}

bool RegistryImage::deleteValue(const QString& path, const QString& name) {
    const auto key = m_keys.find(path);
    return key != m_keys.end() && key->second.erase(name) > 0;
}

QStringList RegistryImage::valueNames(const QString& path) const {
    QStringList names;
    if (const auto key = m_keys.find(path); key != m_keys.end()) {
        for (const auto& [name, value] : key->second) {
            names.append(name);
        }
    }
    return names;
}

QByteArray RegistryImage::toBytes() const {
    QByteArray body;
    for (const auto& [path, values] : m_keys) {
        body += "K " + escaped(path) + '\n';
        for (const auto& [name, value] : values) {
            body += valueLine(name, value);
        }
    }
    return headLine(body) + body;
}

bool RegistryImage::readBody(const QByteArray& body) {
    m_keys.clear();
    if (!body.isEmpty() && !body.endsWith('\n')) {
        return false;
    }
    Key* key = nullptr;
    for (qsizetype start = 0; start < body.size();) {
        const qsizetype end = body.indexOf('\n', start);
        const QByteArray line = body.mid(start, end - start);
        start = end + 1;
        const QByteArray rest = line.mid(2);
        const qsizetype tab = rest.indexOf('\t');
        const bool isText = line.startsWith("S ");
        if (line.startsWith("K ")) {
            key = &m_keys[unescaped(rest)];
        } else if (key != nullptr && tab >= 0 && (isText || line.startsWith("D "))) {
            key->insert_or_assign(unescaped(rest.left(tab)),
                                  isText ? RegistryValue(unescaped(rest.mid(tab + 1)))
                                         : RegistryValue(rest.mid(tab + 1).toUInt()));
        } else {
            return false;
        }
    }
    // Whatever was lenient above (order, doubles, escapes, numbers, bad UTF-8) does not come back
    // as it was.
    const QByteArray again = toBytes();
    return QByteArrayView(again).sliced(again.indexOf('\n') + 1) == body;
}

RegistryImage RegistryImage::fromBytes(const QByteArray& bytes, Fault& fault) {
    fault = Fault::Damaged;
    const qsizetype lineEnd = bytes.indexOf('\n');
    if (lineEnd < 0 || !bytes.startsWith(magic)) {
        return {};
    }
    const unsigned version =
        bytes.mid(magic.size(), bytes.indexOf(' ', magic.size()) - magic.size()).toUInt();
    const QByteArray body = bytes.mid(lineEnd + 1);
    if (version == 0 || bytes.left(lineEnd + 1) != headLine(body, version)) {
        return {};
    }
    if (version > formatVersion) {
        fault = Fault::Newer;
        return {};
    }
    RegistryImage image;
    if (!image.readBody(body)) {
        return {};
    }
    fault = Fault::None;
    return image;
}

}  // namespace keeper
