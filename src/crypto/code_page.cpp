// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "crypto/code_page.h"

#include <QByteArray>
#include <QStringDecoder>
#include <algorithm>
#include <array>
#include <memory>
#include <stdexcept>

#include "crypto/secure_wipe.h"

namespace keeper {

namespace {

constexpr unsigned kFirstLead = 0x81;
constexpr unsigned kLastLead = 0xFE;
constexpr unsigned kFirstTrail = 0x40;
constexpr unsigned kNoTrail = 0x7F;
constexpr unsigned kLastTrail = 0xFE;
constexpr unsigned kTrails = kLastTrail - kFirstTrail + 1;
constexpr unsigned kLoneByteBase = 0xF700;

constexpr bool isLead(unsigned byte) {
    return byte >= kFirstLead && byte <= kLastLead;
}

constexpr bool isTrail(unsigned byte) {
    return byte >= kFirstTrail && byte <= kLastTrail && byte != kNoTrail;
}

constexpr bool isLoneByte(unsigned unit) {
    return unit >= kLoneByteBase + kFirstLead && unit <= kLoneByteBase + kLastLead;
}

/// The page in both directions. The toolkit's codec knows the page, but it keeps a state, loses a
/// lead byte at the end and counts a surrogate pair as one character; a table has none of this and
/// is an order of magnitude faster on the short texts of a database.
struct Page {
    std::array<char16_t, (kLastLead - kFirstLead + 1) * kTrails> decode{};
    std::array<std::uint16_t, 0x10000> encode{};

    [[nodiscard]] char16_t pair(unsigned lead, unsigned trail) const {
        return decode[(lead - kFirstLead) * kTrails + (trail - kFirstTrail)];
    }
};

std::unique_ptr<const Page> makePage() {
    QByteArray pairs;
    for (unsigned lead = kFirstLead; lead <= kLastLead; ++lead) {
        for (unsigned trail = kFirstTrail; trail <= kLastTrail; ++trail) {
            // The one hole in a row keeps its place, so that index and character stay in step.
            pairs.append(static_cast<char>(isTrail(trail) ? lead : '?'));
            if (isTrail(trail)) {
                pairs.append(static_cast<char>(trail));
            }
        }
    }
    QStringDecoder decoder("GBK", QStringDecoder::Flag::Stateless);
    const QString characters = decoder.isValid() ? QString(decoder.decode(pairs)) : QString();

    auto page = std::make_unique<Page>();
    if (static_cast<std::size_t>(characters.size()) != page->decode.size()) {
        throw std::runtime_error("the code page GBK is not available");
    }
    page->encode.fill('?');
    for (unsigned lead = kFirstLead; lead <= kLastLead; ++lead) {
        for (unsigned trail = kFirstTrail; trail <= kLastTrail; ++trail) {
            if (isTrail(trail)) {
                const std::size_t index = (lead - kFirstLead) * kTrails + (trail - kFirstTrail);
                const char16_t unit = characters[static_cast<qsizetype>(index)].unicode();
                page->decode[index] = unit;
                page->encode[unit] = static_cast<std::uint16_t>(lead << 8U | trail);
            }
        }
    }
    for (unsigned byte = 0; byte < 0x80; ++byte) {
        page->encode[byte] = static_cast<std::uint16_t>(byte);
    }
    for (unsigned byte = 0x80; byte <= 0xFF; ++byte) {
        page->encode[ansiCharacter(static_cast<std::uint8_t>(byte)).unicode()] =
            static_cast<std::uint16_t>(byte);
    }
    return page;
}

/// Made at the first character outside ASCII: a program that meets none starts without it.
const Page& page() {
    static const std::unique_ptr<const Page> instance = makePage();
    return *instance;
}

}  // namespace

QChar ansiCharacter(std::uint8_t code) {
    switch (code) {
        case 0x80:
            return QChar(0x20AC);
        case 0xFF:
            return QChar(0xF8F5);
        default:
            return QChar(static_cast<char16_t>(code < 0x80 ? code : kLoneByteBase + code));
    }
}

std::uint16_t ansiCode(QChar character) {
    const unsigned unit = character.unicode();
    if (unit < 0x80) {
        return static_cast<std::uint16_t>(unit);
    }
    return isLoneByte(unit) ? static_cast<std::uint16_t>(unit - kLoneByteBase)
                            : page().encode[unit];
}

std::vector<std::uint8_t> ansiBytes(QStringView text) {
    // The worst case is allocated at once: a growing vector would leave unwiped copies behind.
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(text.size()) * 2);
    std::size_t count = 0;
    for (const QChar character : text) {
        const unsigned code = ansiCode(character);
        if (code > 0xFF) {
            bytes[count++] = static_cast<std::uint8_t>(code >> 8U);
        }
        bytes[count++] = static_cast<std::uint8_t>(code);
    }
    bytes.resize(count);
    return bytes;
}

QString ansiText(std::span<const std::uint8_t> bytes) {
    QString text(static_cast<qsizetype>(bytes.size()), Qt::Uninitialized);
    QChar* out = text.data();
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const unsigned byte = bytes[i];
        if (isLead(byte) && i + 1 < bytes.size() && isTrail(bytes[i + 1])) {
            *out++ = QChar(page().pair(byte, bytes[i + 1]));
            ++i;
        } else {
            *out++ = ansiCharacter(static_cast<std::uint8_t>(byte));
        }
    }
    // What stays beyond the end was never written.
    text.truncate(out - text.constData());
    return text;
}

bool isInCodePage(QStringView text) {
    return std::ranges::all_of(text,
                               [](QChar unit) { return unit == u'?' || ansiCode(unit) != u'?'; });
}

}  // namespace keeper
