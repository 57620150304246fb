// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "crypto/cryptor3.h"

#include <gtest/gtest.h>

#include <QRegularExpression>
#include <algorithm>
#include <string>

#include "crypto/code_page.h"
#include "support/fake_cryptor_host.h"
#include "support/test_files.h"

namespace keeper {
namespace {

class Cryptor3Test : public testing::Test {
  protected:
    FakeCryptorHost m_host;
    Cryptor3 m_cryptor{m_host};

    std::int32_t arrayErrorOf(const std::function<void()>& operation, const QString& description) {
        try {
            operation();
        } catch (const CryptorError& error) {
            EXPECT_EQ(error.description(), description);
            return error.number();
        }
        return 0;
    }
};

TEST_F(Cryptor3Test, KeyTextBecomesPaddedAnsiBytes) {
    const Bytes block = noise(16);
    const auto underKey = [&](const QString& key, bool isHex) {
        Bytes out(16);
        EXPECT_EQ(m_cryptor.SetCipherKeyString(key, 128, 128, isHex), 0);
        m_cryptor.BlockEncrypt(block, out, 0, 0);
        return out;
    };
    const Bytes abc = underKey(QStringLiteral("abc"), false);
    EXPECT_EQ(abc, underKey(QStringLiteral("61 62 63 00000000000000000000000000"), true));
    EXPECT_EQ(underKey(QStringLiteral("0123456789abcdefX"), false),
              underKey(QStringLiteral("0123456789abcdef"), false));
    EXPECT_EQ(underKey(QString(), true), underKey(QString(), false));
    // Three bytes are not sixteen: the digits are then a text like any other.
    EXPECT_EQ(underKey(QStringLiteral("616263"), true), underKey(QStringLiteral("616263"), false));
    EXPECT_EQ(underKey(QStringLiteral("密"), false),
              underKey(QStringLiteral("C3DC") + QString(28, u'0'), true));
}

TEST_F(Cryptor3Test, IllegalSizesKeepTheOldKey) {
    EXPECT_EQ(m_cryptor.Nr(), 0);
    Bytes before(32);
    EXPECT_THROW(m_cryptor.BlockEncrypt(before, before, 0, 0), CryptorError);
    ASSERT_EQ(m_cryptor.SetCipherKeyString(QStringLiteral("k"), 192, 224, false), 0);
    EXPECT_EQ(m_cryptor.Nr(), 13);
    m_cryptor.Block224Encrypt(before, before, 0, 0);
    for (const auto& [keyBits, blockBits] :
         {std::pair{129, 128}, {128, 129}, {288, 128}, {96, 128}, {128, 0}, {-128, 128}}) {
        EXPECT_EQ(m_cryptor.SetCipherKeyString(QStringLiteral("x"), keyBits, blockBits, false), 1);
    }
    EXPECT_EQ(m_cryptor.Nr(), 13);
    m_cryptor.Block224Decrypt(before, before, 0, 0);
    EXPECT_EQ(before, Bytes(32));
}

TEST_F(Cryptor3Test, BlockOperationsAgreeWithArraysAndWorkInPlace) {
    using Operation =
        void (Cryptor3::*)(std::span<const std::uint8_t>, std::span<std::uint8_t>, int, int);
    const std::pair<Operation, Operation> operations[] = {
        {&Cryptor3::BlockEncrypt, &Cryptor3::BlockDecrypt},
        {&Cryptor3::Block160Encrypt, &Cryptor3::Block160Decrypt},
        {&Cryptor3::Block192Encrypt, &Cryptor3::Block192Decrypt},
        {&Cryptor3::Block224Encrypt, &Cryptor3::Block224Decrypt},
        {&Cryptor3::Block256Encrypt, &Cryptor3::Block256Decrypt}};
    int bits = 128;
    for (const auto& [encrypt, decrypt] : operations) {
        const auto block = static_cast<std::size_t>(bits / 8);
        ASSERT_EQ(m_cryptor.SetCipherKeyString(QStringLiteral("key"), 160, bits, false), 0);
        const Bytes plain = noise(block);
        Bytes expected;
        m_cryptor.ArrayEncrypt(plain, expected, false, bits);
        Bytes buffer(block + 5);
        (m_cryptor.*encrypt)(plain, buffer, 0, 5);
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), buffer.begin() + 5)) << bits;
        (m_cryptor.*decrypt)(buffer, buffer, 5, 5);
        EXPECT_TRUE(std::equal(plain.begin(), plain.end(), buffer.begin() + 5)) << bits;
        EXPECT_THROW((m_cryptor.*encrypt)(plain, buffer, 1, 0), CryptorError);
        EXPECT_THROW((m_cryptor.*encrypt)(plain, buffer, 0, -1), CryptorError);

        m_cryptor.p_stopRequested(true);
        EXPECT_EQ(arrayErrorOf([&] { (m_cryptor.*encrypt)(plain, buffer, 0, 0); },
                               QStringLiteral("加密运算已终止。")),
                  1);
        EXPECT_FALSE(m_cryptor.p_stopRequested());
        m_cryptor.p_stopRequested(true);
        EXPECT_EQ(arrayErrorOf([&] { (m_cryptor.*decrypt)(buffer, buffer, 0, 0); },
                               QStringLiteral("解密运算已终止。")),
                  1);
        EXPECT_FALSE(m_cryptor.p_stopRequested());
        bits += 32;
    }
}

TEST_F(Cryptor3Test, ArrayFormsRoundTripAroundTheBlock) {
    for (int bits = 128; bits <= 256; bits += 32) {
        const auto block = static_cast<std::size_t>(bits / 8);
        m_cryptor.SetCipherKeyString(QStringLiteral("array key"), bits, bits, false);
        for (const std::size_t length : {std::size_t{0}, std::size_t{1}, block - 1, block,
                                         block + 1, 3 * block, 200'000 / block * block + 7}) {
            const Bytes plain = noise(length);
            Bytes cipher;
            Bytes back;
            m_cryptor.ArrayEncrypt(plain, cipher, true, bits);
            EXPECT_EQ(cipher.size(), (length + block) / block * block);
            m_cryptor.ArrayDecrypt(back, cipher, true, bits);
            EXPECT_TRUE(back == (length == 0 ? Bytes(block) : plain)) << bits << " " << length;
            m_cryptor.ArrayDecrypt(back, cipher, false, bits);
            EXPECT_EQ(back.back(), length % block);

            m_cryptor.ArrayEncrypt(plain, cipher, false, bits);
            EXPECT_EQ(cipher.size(), (length + block - 1) / block * block);
            m_cryptor.ArrayDecrypt(back, cipher, false, bits);
            EXPECT_TRUE(std::equal(plain.begin(), plain.end(), back.begin()));
            EXPECT_TRUE(std::all_of(back.begin() + static_cast<long>(length), back.end(),
                                    [](std::uint8_t byte) { return byte == 0; }));
        }
    }
}

TEST_F(Cryptor3Test, ArrayErrors) {
    m_cryptor.SetCipherKeyString(QStringLiteral("k"), 128, 128, false);
    Bytes out;
    const auto number = [](std::uint32_t value) {
        return static_cast<std::int32_t>(0x80040000U + value);
    };
    const QString bits = QStringLiteral("invalid block bits");
    EXPECT_EQ(arrayErrorOf([&] { m_cryptor.ArrayEncrypt({}, out, true, 127); }, bits), number(1));
    EXPECT_EQ(arrayErrorOf([&] { m_cryptor.ArrayDecrypt(out, {}, true, 512); }, bits), number(1));
    EXPECT_EQ(arrayErrorOf([&] { m_cryptor.ArrayDecrypt(out, Bytes(17), true, 128); },
                           QStringLiteral("ciphertext size is not a multiple of block size")),
              number(4));
    // The block's last byte is 16, one too many.
    Bytes plain(16);
    plain.back() = 16;
    Bytes cipher;
    m_cryptor.ArrayEncrypt(plain, cipher, false, 128);
    const QString length = QStringLiteral("incorrect length field");
    EXPECT_EQ(arrayErrorOf([&] { m_cryptor.ArrayDecrypt(out, cipher, true, 128); }, length),
              number(3));
    EXPECT_EQ(arrayErrorOf([&] { m_cryptor.ArrayDecrypt(out, {}, true, 128); }, length), number(3));
}

TEST_F(Cryptor3Test, TextsHaveTheirShapeAndComeBack) {
    const QString key16 = QStringLiteral("0123456789abcdef");
    const auto isShaped = [](const QString& text, const char* pattern) {
        return QRegularExpression(QString::fromLatin1(pattern)).match(text).hasMatch();
    };
    const QString one = m_cryptor.EncryptString(QStringLiteral("abc"), QStringLiteral("k"));
    EXPECT_TRUE(isShaped(one, "^[0-9A-F]{32}$"));
    EXPECT_TRUE(isShaped(m_cryptor.EncryptString(QString(16, u'x'), key16), "^[0-9A-F]{32}$"));
    const QString two = m_cryptor.EncryptString(QString(17, u'x'), key16);
    EXPECT_TRUE(isShaped(two, "^[0-9A-F]{32}  [0-9A-F]{32}$"));
    EXPECT_TRUE(isShaped(m_cryptor.EncryptString(QString(17, u'x'), key16 + QChar(u'g')),
                         "^[0-9A-F]{40}$"));

    EXPECT_EQ(m_cryptor.DecryptString(one, QStringLiteral("k")), QStringLiteral("abc"));
    EXPECT_EQ(m_cryptor.DecryptString(
                  two.toLower().replace(QStringLiteral("  "), QStringLiteral("\r\n-")), key16),
              QString(17, u'x'));
    const QString text = QStringLiteral("密码本 Keeper，第１章 ") + QString(300, u'好');
    for (int characters = 1; characters <= 40; ++characters) {
        const QString key = QString(characters, u'钥');
        EXPECT_EQ(m_cryptor.DecryptString(m_cryptor.EncryptString(text, key), key), text);
    }
    EXPECT_TRUE(m_host.messages.empty());
}

TEST_F(Cryptor3Test, TextsAtTheEdges) {
    const QString key = QStringLiteral("k");
    const QString text = QStringLiteral("text");
    EXPECT_EQ(m_cryptor.EncryptString(text, QString()), text);
    EXPECT_EQ(m_cryptor.DecryptString(text, QString()), text);
    EXPECT_EQ(m_cryptor.EncryptString(QString(), key), QString());
    EXPECT_EQ(m_cryptor.DecryptString(QString(), key), QString());
    EXPECT_EQ(m_cryptor.DecryptString(QStringLiteral("xyz 7"), key), QString());
    EXPECT_TRUE(m_host.messages.empty());

    // A NUL ends the text only when the plaintext ends with one, as a padded one does.
    const QString withNul = QStringLiteral("ab") + QChar(u'\0') + QStringLiteral("cd");
    EXPECT_EQ(m_cryptor.DecryptString(m_cryptor.EncryptString(withNul, key), key),
              QStringLiteral("ab"));
    const QString full = withNul + QString(11, u'x');
    EXPECT_EQ(m_cryptor.DecryptString(m_cryptor.EncryptString(full, key), key), full);
    // A digit counts by the low byte of its unit: U+4E30 is a "0".
    const QString cipher = m_cryptor.EncryptString(text, key);
    QString disguised = cipher;
    for (QChar& unit : disguised) {
        unit = QChar(static_cast<char16_t>(unit.unicode() | 0x4E00));
    }
    EXPECT_EQ(m_cryptor.DecryptString(disguised, key), text);

    EXPECT_EQ(m_cryptor.DecryptString(QStringLiteral("ABCDEF"), key), QString());
    m_cryptor.p_stopRequested(true);
    EXPECT_EQ(m_cryptor.EncryptString(text, key), QString());
    const std::vector<FakeCryptorHost::Message> expected{
        {CryptorHost::Severity::Critical,
         QStringLiteral("[-2147221500]AES.DecryptString:\r\nciphertext size is not a multiple of "
                        "block size")},
        {CryptorHost::Severity::Critical,
         QStringLiteral("[1]AES.EncryptString:\r\n加密运算已终止。")}};
    EXPECT_EQ(m_host.messages, expected);
}

TEST(Cryptor3Size, FollowsTheCharactersOfTheKey) {
    const std::pair<int, int> cases[] = {{1, 128},  {16, 128}, {17, 160}, {20, 160}, {21, 192},
                                         {24, 192}, {25, 224}, {28, 224}, {29, 256}, {500, 256}};
    for (const auto& [characters, bits] : cases) {
        EXPECT_EQ(Cryptor3::sizeForKey(characters), bits) << characters;
    }
}

}  // namespace
}  // namespace keeper
