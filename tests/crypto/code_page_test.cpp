// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "crypto/code_page.h"

#include <gtest/gtest.h>
#include <iconv.h>

#include <map>

namespace keeper {
namespace {

using Bytes = std::vector<std::uint8_t>;

/// The C library's own table of the page, which shares nothing with the toolkit's. It lacks the
/// user-defined area and the byte 0xFF.
class Iconv {
  public:
    Iconv() : m_handle(::iconv_open("UTF-16LE", "CP936")) {}
    ~Iconv() { ::iconv_close(m_handle); }
    Iconv(const Iconv&) = delete;
    Iconv& operator=(const Iconv&) = delete;

    /// 0 where the table has no character.
    char16_t decode(Bytes bytes) {
        char16_t unit = 0;
        char* in = reinterpret_cast<char*>(bytes.data());
        char* out = reinterpret_cast<char*>(&unit);
        std::size_t inLeft = bytes.size();
        std::size_t outLeft = sizeof unit;
        ::iconv(m_handle, nullptr, nullptr, nullptr, nullptr);
        const std::size_t result = ::iconv(m_handle, &in, &inLeft, &out, &outLeft);
        return result == static_cast<std::size_t>(-1) || inLeft != 0 ? u'\0' : unit;
    }

  private:
    iconv_t m_handle;
};

TEST(CodePage, EveryCharacterAgreesWithTheCLibraryInBothDirections) {
    Iconv reference;
    std::map<char16_t, Bytes> page;
    for (unsigned byte = 1; byte <= 0x80; ++byte) {
        page[reference.decode({static_cast<std::uint8_t>(byte)})] = {
            static_cast<std::uint8_t>(byte)};
    }
    for (unsigned lead = 0x81; lead <= 0xFE; ++lead) {
        for (unsigned trail = 0x40; trail <= 0xFE; ++trail) {
            const Bytes pair{static_cast<std::uint8_t>(lead), static_cast<std::uint8_t>(trail)};
            if (const char16_t unit = reference.decode(pair)) {
                page[unit] = pair;
            }
        }
    }
    ASSERT_EQ(page.size(), 128U + 21791U) << "the reference itself";
    for (unsigned unit = 1; unit <= 0xFFFF; ++unit) {
        const auto character = static_cast<char16_t>(unit);
        const Bytes bytes = ansiBytes(QStringView(&character, 1));
        const bool userDefined = unit >= 0xE000 && unit <= 0xE765;
        const bool loneByte = unit == 0xF8F5 || (unit >= 0xF781 && unit <= 0xF7FE);
        const auto entry = page.find(character);
        if (entry != page.end()) {
            ASSERT_EQ(bytes, entry->second) << std::hex << unit;
        } else if (!loneByte && !(bytes.size() == 2 && unit >= 0xE000 && unit <= 0xF8FF)) {
            ASSERT_EQ(bytes, Bytes{'?'}) << std::hex << unit;
        }
        if (entry != page.end() || userDefined || loneByte) {
            ASSERT_EQ(ansiText(bytes), QString(QChar(character))) << std::hex << unit;
        }
    }
}

TEST(CodePage, UserDefinedAreaFollowsTheThreeRanges) {
    EXPECT_EQ(ansiBytes(u"\uE000"), (Bytes{0xAA, 0xA1}));
    EXPECT_EQ(ansiBytes(u"\uE233"), (Bytes{0xAF, 0xFE}));
    EXPECT_EQ(ansiBytes(u"\uE234"), (Bytes{0xF8, 0xA1}));
    EXPECT_EQ(ansiBytes(u"\uE4C6"), (Bytes{0xA1, 0x40}));
    EXPECT_EQ(ansiBytes(u"\uE765"), (Bytes{0xA7, 0xA0}));
}

TEST(CodePage, WhatThePageLacksIsAQuestionMarkForEachUnit) {
    EXPECT_EQ(ansiBytes(u"a\u30FB\u00E7b"), (Bytes{'a', '?', '?', 'b'}));
    EXPECT_EQ(ansiBytes(u"\U00020BB7"), (Bytes{'?', '?'}));
    EXPECT_EQ(ansiBytes(u"中文€"), (Bytes{0xD6, 0xD0, 0xCE, 0xC4, 0x80}));
    EXPECT_TRUE(ansiBytes(u"").empty());
}

TEST(CodePage, EverySequenceOfTwoBytesAndALoneEndSurvives) {
    for (unsigned value = 0; value <= 0xFFFF; ++value) {
        const Bytes bytes{static_cast<std::uint8_t>(value >> 8), static_cast<std::uint8_t>(value)};
        ASSERT_EQ(ansiBytes(ansiText(bytes)), bytes) << std::hex << value;
        const Bytes three{'A', bytes[0], bytes[1]};
        ASSERT_EQ(ansiBytes(ansiText(three)), three) << std::hex << value;
    }
    EXPECT_EQ(ansiText(Bytes{'x', 0, 'y', 0xD6}), QString::fromUtf16(u"x\0y\uF7D6", 4));
    for (unsigned code = 0; code <= 0xFF; ++code) {
        EXPECT_EQ(ansiCode(ansiCharacter(static_cast<std::uint8_t>(code))), code);
    }
}

}  // namespace
}  // namespace keeper
