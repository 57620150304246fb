// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "crypto/cryptor5.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <algorithm>

#include "support/fake_cryptor_host.h"
#include "support/file_size_limit.h"
#include "support/test_files.h"

namespace keeper {
namespace {

/// The format itself, a byte at a time.
Bytes xored(Bytes data, const Bytes& key) {
    for (std::size_t i = 0; i < data.size(); ++i) {
        data[i] ^= key[i % key.size()];
    }
    return data;
}

class XorCipher : public testing::Test {
  protected:
    FakeCryptorHost host;
    Cryptor5 cipher{host};
    TestFiles files;
    const QString source = files.path(QStringLiteral("source"));
    const QString target = files.path(QStringLiteral("target"));
    const QString key = QStringLiteral("key");

    /// What is in the folder, so that nothing half-written hides there.
    QStringList names() const {
        return QDir(files.path(QStringLiteral(".")))
            .entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }
};

TEST_F(XorCipher, EveryLengthOfDataAndKeyFollowsTheFormat) {
    for (const qsizetype keyLength : {1, 2, 3, 7, 32, 100, 4095, 4096, 5000}) {
        Bytes keyBytes;
        QString keyText;
        for (qsizetype i = 0; i < keyLength; ++i) {
            keyBytes.push_back(static_cast<std::uint8_t>('!' + i % 90));
            keyText += QChar(u'!' + static_cast<char16_t>(i % 90));
        }
        for (const std::size_t size : {1U, 2U, 31U, 4096U, 70'001U}) {
            const Bytes plain = noise(size);
            Bytes data = plain;
            ASSERT_TRUE(cipher.EncryptByte(data, keyText));
            ASSERT_EQ(data, xored(plain, keyBytes)) << keyLength << " " << size;
            ASSERT_TRUE(cipher.DecryptByte(data, QString()));
            ASSERT_EQ(data, plain) << "the empty key is the one set before";
        }
    }
}

TEST_F(XorCipher, KeyLengthCountsCharactersButItsBytesAreAnsi) {
    Bytes data(9, 0);
    ASSERT_TRUE(cipher.EncryptByte(data, QStringLiteral("a密码b")));
    EXPECT_EQ(data, (Bytes{'a', 0xC3, 0xDC, 0xC2, 'a', 0xC3, 0xDC, 0xC2, 'a'}));
}

TEST_F(XorCipher, WithoutAnyKeyItFailsWithAMessage) {
    Bytes data{1, 2};
    EXPECT_FALSE(cipher.EncryptByte(data, QString()));
    ASSERT_EQ(host.messages.size(), 1U);
    EXPECT_TRUE(host.messages[0].second.startsWith(u"[11]cXOR.EncryptByte:\r\n"));
    EXPECT_EQ(data, (Bytes{1, 2}));
}

TEST_F(XorCipher, ProgressAndStopAreThoseOfABytewiseLoop) {
    for (const std::size_t size : {1U, 3U, 200U, 201U, 1000U, 100'003U}) {
        std::vector<float> expected;
        float last = 0;
        for (std::size_t i = 0; i < size; ++i) {
            const auto percent =
                static_cast<float>(static_cast<double>(i) / static_cast<double>(size) * 100.0);
            if (percent - last >= 0.5F) {
                expected.push_back(last = percent);
            }
        }
        expected.push_back(100.0F);
        std::vector<float> raised;
        cipher.DisplayProgress = [&](float percent) { raised.push_back(percent); };
        Bytes data = noise(size);
        ASSERT_TRUE(cipher.EncryptByte(data, key));
        EXPECT_EQ(raised, expected) << size;
    }
    EXPECT_FALSE(cipher.p_IsCalculating());
    cipher.DisplayProgress = nullptr;
    cipher.p_stopRequested(true);
    Bytes data(10, 0);
    EXPECT_FALSE(cipher.EncryptByte(data, key));
    EXPECT_FALSE(cipher.p_stopRequested());
    EXPECT_FALSE(cipher.p_IsCalculating());
}

TEST_F(XorCipher, FilesMoveThereAndBack) {
    const Bytes plain = noise(300'001);
    files.write(QStringLiteral("source"), plain);
    files.write(QStringLiteral("target"), noise(400'000));
    ::chmod(source.toUtf8().constData(), 0600);
    ASSERT_TRUE(cipher.EncryptFile(source, target, key));
    EXPECT_EQ(names(), QStringList{QStringLiteral("target")}) << "the source is consumed";
    EXPECT_EQ(files.read(QStringLiteral("target")), xored(plain, {'k', 'e', 'y'}));
    struct stat status {};
    ASSERT_EQ(::stat(target.toUtf8().constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
    ASSERT_TRUE(cipher.DecryptFile(target, source, key));
    EXPECT_EQ(files.read(QStringLiteral("source")), plain);
    EXPECT_EQ(names(), QStringList{QStringLiteral("source")});
    EXPECT_TRUE(host.messages.empty());
}

TEST_F(XorCipher, StopLeavesSourceAndOldTargetAsTheyWere) {
    const Bytes plain = noise(300'001);
    files.write(QStringLiteral("source"), plain);
    files.write(QStringLiteral("target"), Bytes{1, 2, 3});
    host.onTurn = [&] { cipher.p_stopRequested(host.turns == 50); };
    EXPECT_FALSE(cipher.EncryptFile(source, target, key));
    EXPECT_EQ(host.turns, 50);
    EXPECT_EQ(files.read(QStringLiteral("source")), plain);
    EXPECT_EQ(files.read(QStringLiteral("target")), (Bytes{1, 2, 3}));
    EXPECT_EQ(names().size(), 2);
    EXPECT_TRUE(host.messages.empty());
    EXPECT_FALSE(cipher.p_IsCalculating());
}

TEST_F(XorCipher, FailuresAreShownAndLoseNothing) {
    const Bytes plain = noise(10);
    files.write(QStringLiteral("empty"), {});
    EXPECT_FALSE(cipher.EncryptFile(source, target, key));
    EXPECT_FALSE(cipher.DecryptFile(files.path(QStringLiteral("empty")), target, key));
    files.write(QStringLiteral("source"), plain);
    EXPECT_FALSE(cipher.EncryptFile(source, files.path(QStringLiteral("no/target")), key));
    EXPECT_FALSE(cipher.EncryptFile(source, files.path(QStringLiteral("./source")), key));
    EXPECT_FALSE(cipher.EncryptFile(source, files.path(QStringLiteral(".")), key));
    const char* const starts[] = {
        "[-2147221504]cXOR.EncryptFile:\r\n明文源文件无效！",
        "[-2147221504]cXOR.DecryptFile:\r\n密文源文件无效！",
        "[76]cXOR.EncryptFile:\r\n",
        "[70]cXOR.EncryptFile:\r\n",
        "[75]cXOR.EncryptFile:\r\n",
    };
    ASSERT_EQ(host.messages.size(), std::size(starts));
    for (std::size_t i = 0; i < std::size(starts); ++i) {
        EXPECT_TRUE(host.messages[i].second.startsWith(QString::fromUtf8(starts[i])))
            << host.messages[i].second.toStdString();
        EXPECT_EQ(host.messages[i].first, CryptorHost::Severity::Critical);
    }
    EXPECT_EQ(files.read(QStringLiteral("source")), plain);
    EXPECT_EQ(names().size(), 2) << "empty and source";
}

TEST_F(XorCipher, AFullDiskAndRefusedAccessLoseNothing) {
    constexpr uid_t nobody = 65534;
    const bool isRoot = ::geteuid() == 0;
    const Bytes plain = noise(600'000);
    const Bytes old{1, 2, 3};
    files.write(QStringLiteral("source"), plain);
    files.write(QStringLiteral("target"), old);
    {
        const FileSizeLimit full(300'000);
        EXPECT_FALSE(cipher.EncryptFile(source, target, key));
    }
    EXPECT_EQ(names().size(), 2) << "no part of the result is left";
    files.write(QStringLiteral("secret"), old);
    const QString secret = files.path(QStringLiteral("secret"));
    ASSERT_EQ(::chmod(qPrintable(secret), 0), 0);
    ASSERT_EQ(::chmod(qPrintable(source), 0644), 0);
    ASSERT_EQ(::chmod(qPrintable(files.path(QString())), 0555), 0);
    ASSERT_TRUE(!isRoot || ::seteuid(nobody) == 0);
    const bool fromSecret = cipher.DecryptFile(secret, target, key);
    const bool intoLocked = cipher.EncryptFile(source, target, key);
    ASSERT_TRUE(!isRoot || ::seteuid(0) == 0);
    ASSERT_EQ(::chmod(qPrintable(files.path(QString())), 0755), 0);
    EXPECT_FALSE(fromSecret || intoLocked);
    ASSERT_EQ(host.messages.size(), 3U);
    EXPECT_TRUE(host.messages[0].second.startsWith(u"[61]cXOR.EncryptFile:\r\n"));
    EXPECT_TRUE(host.messages[1].second.startsWith(u"[70]cXOR.DecryptFile:\r\n"));
    EXPECT_TRUE(host.messages[2].second.startsWith(u"[70]cXOR.EncryptFile:\r\n"));
    EXPECT_EQ(files.read(QStringLiteral("source")), plain);
    EXPECT_EQ(files.read(QStringLiteral("target")), old);
    EXPECT_EQ(names().size(), 3);
}

TEST_F(XorCipher, TextsComeBackWhateverTheirBytesBecome) {
    EXPECT_TRUE(cipher.EncryptString(QString(), key).isEmpty());
    EXPECT_EQ(cipher.EncryptString(QStringLiteral("text"), QString()), u"text");
    const QString text = QStringLiteral("密码€abc 0123456789 第二行");
    for (const QString& each : {QStringLiteral("k"), QStringLiteral("钥匙"), text}) {
        const QString hidden = cipher.EncryptString(text, each);
        EXPECT_NE(hidden, text);
        EXPECT_EQ(cipher.DecryptString(hidden, each), text);
    }
}

}  // namespace
}  // namespace keeper
