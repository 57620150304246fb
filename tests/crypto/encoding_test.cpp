// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "crypto/cryptor4.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

#include "crypto/code_page.h"
#include "crypto/cryptor6.h"
#include "support/fake_cryptor_host.h"
#include "support/test_files.h"

namespace keeper {
namespace {

class PublicKeyCodec : public testing::Test {
  protected:
    std::mt19937 generator{7};
    FakeCryptorHost host;
    Cryptor4 codec{host, [this](std::span<std::uint8_t> bytes) {
                       for (std::uint8_t& byte : bytes) {
                           byte = static_cast<std::uint8_t>(generator());
                       }
                   }};

    static QString allCodes() {
        QString text;
        for (unsigned code = 1; code <= 255; ++code) {
            text += ansiCharacter(static_cast<std::uint8_t>(code));
        }
        return text;
    }
};

TEST_F(PublicKeyCodec, EveryTableKeyBringsBackEveryCodeAndHidesIt) {
    std::set<Cryptor4::Key> distinct;
    for (std::int16_t index = 0; index < 50; ++index) {
        Cryptor4::Key key{};
        Cryptor4::GetPGPKey(index, key);
        distinct.insert(key);
        EXPECT_LT(key[2], 46'341);
        const QString encoded = codec.Encode(allCodes(), key[0], key[2]);
        EXPECT_EQ(codec.Decode(encoded, key[1], key[2]), allCodes()) << index;
        EXPECT_NE(codec.Decode(encoded, 1, key[2]), allCodes()) << index;
    }
    EXPECT_EQ(distinct.size(), 50U);
    EXPECT_TRUE(host.messages.empty());
    Cryptor4::Key first{};
    Cryptor4::Key wrapped{};
    Cryptor4::GetPGPKey(0, first);
    Cryptor4::GetPGPKey(50, wrapped);
    EXPECT_EQ(first, wrapped);
    Cryptor4::GetPGPKey(-50, wrapped);
    EXPECT_EQ(first, wrapped);
}

TEST_F(PublicKeyCodec, TextFormIsTheNumbersInBase64WithoutPadding) {
    // 7^1 mod 1000 and so on: the numbers are the codes, so that the form itself is seen.
    EXPECT_EQ(codec.Encode(QStringLiteral("a"), 1, 1000), u"OTc");                // 97
    EXPECT_EQ(codec.Encode(QStringLiteral("\n\n"), 1, 1000), u"MTArMTA");         // 10+10
    EXPECT_EQ(codec.Encode(QStringLiteral("dd\n"), 1, 1000), u"MTAwKzEwMCsxMA");  // 100+100+10
    EXPECT_EQ(codec.Encode(QStringLiteral("text"), 0, 1000), u"text");
    EXPECT_EQ(codec.Decode(QStringLiteral("text"), 5, 0), u"text");
    EXPECT_TRUE(codec.Encode(QString(), 5, 1000).isEmpty());
    EXPECT_TRUE(codec.Decode(QString(), 5, 1000).isEmpty());
}

TEST_F(PublicKeyCodec, DamagedTextGivesAnEmptyResultWithoutAMessage) {
    for (const QString& damaged :
         {QStringLiteral("!!!!"), QStringLiteral("A"), QStringLiteral("KysrKys"),
          QStringLiteral("OTcr"), QStringLiteral("\u4E2D\u6587"),
          QStringLiteral("OTk5OTk5OTk5OTk")}) {
        EXPECT_TRUE(codec.Decode(damaged, 5, 1000).isEmpty()) << damaged.toStdString();
    }
    EXPECT_TRUE(host.messages.empty());
}

TEST_F(PublicKeyCodec, MultWorksInSigned32BitsAndShowsWhatLeavesThem) {
    EXPECT_EQ(codec.Mult(2, 10, 1000), 24);
    EXPECT_EQ(codec.Mult(5, 0, 1000), 1);
    EXPECT_EQ(codec.Mult(46'339, 2, 46'340), 1);
    EXPECT_TRUE(host.messages.empty());
    EXPECT_EQ(codec.Mult(46'341, 2, 50'000), 0);
    EXPECT_EQ(codec.Mult(2, 2, 0), 0);
    ASSERT_EQ(host.messages.size(), 2U);
    EXPECT_EQ(host.messages[0].second, u"[6]cCryptor4.Mult:\r\n溢出");
    EXPECT_EQ(host.messages[1].second, u"[11]cCryptor4.Mult:\r\n除数为零");
}

TEST_F(PublicKeyCodec, GeneratedKeysWorkAndRespectTheLimit) {
    for (int round = 0; round < 100; ++round) {
        const Cryptor4::Key key = codec.GenKey(round % 2 == 0 ? 2'000 : 0);
        EXPECT_EQ(codec.lastKey(), key);
        EXPECT_LE(round % 2 == 0 ? key[2] : 0, 2'000);
        ASSERT_EQ(codec.Decode(codec.Encode(allCodes(), key[0], key[2]), key[1], key[2]),
                  allCodes());
    }
    // 7 times 37 is the smallest product above the largest code.
    EXPECT_EQ(codec.GenKey(259)[2], 259);
    EXPECT_THROW((void)codec.GenKey(258), std::invalid_argument);
    EXPECT_THROW((void)codec.GenKey(-1), std::invalid_argument);
}

TEST_F(PublicKeyCodec, RandomPasswordsUseEveryCodeButZeroEvenly) {
    std::map<unsigned, int> counts;
    for (int i = 0; i < 1000; ++i) {
        const QString password = codec.RanPwd4PGP(32, 32);
        ASSERT_EQ(password.size(), 32);
        // As a cipher's key each character is the one byte that was drawn.
        const Bytes bytes = ansiBytes(password);
        ASSERT_EQ(bytes.size(), 32U);
        for (const std::uint8_t byte : bytes) {
            ++counts[byte];
        }
    }
    EXPECT_EQ(counts.size(), 255U);
    EXPECT_EQ(counts.count(0), 0U);
    // 32,000 draws over 255 codes: 125 each, give or take 11; six times that is never by chance.
    for (const auto& [code, count] : counts) {
        EXPECT_NEAR(count, 125, 66) << code;
    }
    std::set<qsizetype> lengths;
    for (int i = 0; i < 200; ++i) {
        lengths.insert(codec.RanPwd4PGP(3, 6).size());
    }
    EXPECT_EQ(lengths, (std::set<qsizetype>{3, 4, 5, 6}));
    EXPECT_TRUE(codec.RanPwd4PGP(5, 4).isEmpty());
    EXPECT_TRUE(codec.RanPwd4PGP(0, 0).isEmpty());
}

TEST(Base64, VectorsOfTheStandardAndBadInput) {
    const std::pair<const char*, const char*> vectors[] = {{"", ""},
                                                           {"f", "Zg=="},
                                                           {"fo", "Zm8="},
                                                           {"foo", "Zm9v"},
                                                           {"foob", "Zm9vYg=="},
                                                           {"fooba", "Zm9vYmE="},
                                                           {"foobar", "Zm9vYmFy"}};
    for (const auto& [plain, encoded] : vectors) {
        const std::string text(plain);
        const Bytes bytes(text.begin(), text.end());
        EXPECT_EQ(Cryptor6::Encode(bytes).toStdString(), encoded);
        EXPECT_EQ(Cryptor6::Decode(QString::fromLatin1(encoded)), bytes);
        EXPECT_EQ(Cryptor6::Decode(QString::fromLatin1(encoded).remove(u'=')), bytes);
    }
    for (const char* bad : {"Z", "Zm9vY", "Zm 9v", "Zm9v\n", "Zm9-", "====", "Zg==Zg==", "Z==="}) {
        EXPECT_TRUE(Cryptor6::Decode(QString::fromLatin1(bad)).empty()) << bad;
    }
    const Bytes all = noise(1000);
    EXPECT_EQ(Cryptor6::Decode(Cryptor6::Encode(all)), all);
}

}  // namespace
}  // namespace keeper
