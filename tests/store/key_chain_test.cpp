// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "store/key_chain.h"

#include <gtest/gtest.h>

#include <set>

#include "crypto/cryptor1.h"
#include "crypto/cryptor2.h"
#include "support/vault.h"

namespace keeper {
namespace {

QString keyOf(int length) {
    QString key;
    for (int i = 0; i < length; ++i) {
        key += QChar(u'a' + i % 26);
    }
    return key;
}

class KeyChainTest : public testing::Test {
  protected:
    ScriptedPrompt m_prompt;
    FakeEventLoop m_eventLoop;
    PromptCryptorHost m_host{m_prompt, m_eventLoop};
    Cryptor3 m_cipher{m_host};
    KeyChain m_chain{m_cipher};
};

TEST_F(KeyChainTest, CurrentSchemeIsTheDigests) {
    const QString key = QStringLiteral("abc");
    EXPECT_EQ(m_chain.GetCryptLgnKey(false, key),
              QStringLiteral("900150983CD24FB0D6963F7D28E17F72"));
    // SHA-1 of "abc": A9993E364706816ABA3E25717850C26C9CD0D89D, every other digit.
    EXPECT_EQ(KeyChain::GetAccessDBSec(false, key), QStringLiteral("A9334086B32775C69DD9"));
    EXPECT_EQ(KeyChain::GetAccessDBSec(false, QString()),
              KeyChain::GetAccessDBSec(false, QStringLiteral("Tarnvale")));
}

TEST_F(KeyChainTest, EarlierSchemeWeavesKeyAndMask) {
    const QString mask = Cryptor1::hashString(
        m_cipher.EncryptString(KeyChain::GetBuiltinSecret(0), KeyChain::GetBuiltinSecret(1)));
    for (const int length : {0, 1, 6, 15, 16, 17, 30, 32}) {
        const QString key = keyOf(length);
        const QString result = m_chain.GetCryptLgnKey(true, key);
        ASSERT_EQ(result.size(), 32) << length;
        const int woven = std::min(length, 32 - length);
        for (int i = 0; i < woven; ++i) {
            EXPECT_EQ(result.mid(2 * i, 2), QString(key.at(i)) + mask.at(i)) << length;
        }
        EXPECT_EQ(result.mid(2 * woven),
                  length > 16 ? key.mid(woven) : mask.mid(woven, 32 - 2 * length))
            << length;
    }
}

TEST_F(KeyChainTest, EarlierSchemeDropsCodesThatAConnectionCannotCarry) {
    const QString secret = KeyChain::GetBuiltinSecret(1);
    std::set<qsizetype> lengths;
    for (int i = 0; i < 300; ++i) {
        const QString key = QStringLiteral("key%1").arg(i);
        const QString digest = Cryptor2::hashString(key);
        QString expected;
        for (int place = 0; place < 20; ++place) {
            const int code = digest.at(2 * place + 1).unicode() ^ secret.at(place).unicode();
            if (!std::set<int>{0, 8, 9, 10, 13, 59}.contains(code)) {
                expected += code == ']' ? u'}' : QChar(code);
            }
        }
        const QString password = KeyChain::GetAccessDBSec(true, key);
        EXPECT_EQ(password, expected);
        lengths.insert(password.size());
    }
    EXPECT_GT(lengths.size(), 1U) << "no code was dropped, so nothing is proven";
    EXPECT_EQ(KeyChain::GetAccessDBSec(true, QString()),
              KeyChain::TransformDBPwd(KeyChain::GetBuiltinSecret(0)));
}

TEST_F(KeyChainTest, TransformIsIdempotentAndTheBuiltInsHaveTheirLengths) {
    EXPECT_EQ(KeyChain::TransformDBPwd(QStringLiteral("a]b;c[")), QStringLiteral("a}b:c["));
    EXPECT_EQ(KeyChain::TransformDBPwd(QStringLiteral("a}b:c[")), QStringLiteral("a}b:c["));
    EXPECT_EQ(KeyChain::GetBuiltinSecret(0).size(), 20);
    EXPECT_EQ(KeyChain::GetBuiltinSecret(1).size(), 20);
    EXPECT_EQ(KeyChain::GetBuiltinSecret(2).size(), 32);
}

}  // namespace
}  // namespace keeper
