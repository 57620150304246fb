// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <gtest/gtest.h>

#include "crypto/cryptor3.h"
#include "support/fake_cryptor_host.h"
#include "support/test_files.h"

namespace keeper {
namespace {

constexpr std::size_t chunk = 4 * 1024 * 1024;

class Cryptor3File : public testing::Test {
  protected:
    TestFiles m_files;
    FakeCryptorHost m_host;
    Cryptor3 m_cryptor{m_host};

    [[nodiscard]] static QString keyFor(int bits) { return QString(bits / 8, u'k'); }
};

TEST_F(Cryptor3File, RoundTripsAtTheEdgesOfBlocksAndChunks) {
    for (int bits = 128; bits <= 256; bits += 32) {
        const auto block = static_cast<std::size_t>(bits / 8);
        const std::size_t whole = chunk / block * block;
        for (const std::size_t length : {std::size_t{0}, block - 1, block, block + 1, whole - 1,
                                         whole, whole + 1, whole + block}) {
            SCOPED_TRACE(testing::Message() << bits << " bits, " << length << " bytes");
            const Bytes plain = noise(length);
            const QString source = m_files.write(QStringLiteral("plain"), plain);
            ASSERT_EQ(m_cryptor.SetCipherKeyString(keyFor(bits), bits, bits, false), 0);
            Bytes expected;
            m_cryptor.ArrayEncrypt(plain, expected, true, bits);
            ASSERT_TRUE(m_cryptor.FileEncrypt(source, m_files.path(QStringLiteral("a.aes")), bits));
            ASSERT_TRUE(m_files.read(QStringLiteral("a.aes")) == expected);
            ASSERT_TRUE(m_cryptor.FileDecrypt(m_files.path(QStringLiteral("back")),
                                              m_files.path(QStringLiteral("a.aes")), bits));
            ASSERT_TRUE(m_files.read(QStringLiteral("back")) == plain);
            ASSERT_TRUE(QFile::remove(m_files.path(QStringLiteral("a.aes"))));
            ASSERT_TRUE(QFile::remove(m_files.path(QStringLiteral("back"))));
        }
    }
    EXPECT_TRUE(m_host.messages.empty());
    EXPECT_FALSE(m_cryptor.p_IsCalculating());
}

}  // namespace
}  // namespace keeper
