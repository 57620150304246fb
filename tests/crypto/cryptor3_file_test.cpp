// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>

#include "crypto/cryptor3.h"
#include "support/fake_cryptor_host.h"
#include "support/file_size_limit.h"
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
        std::vector<std::size_t> lengths{0, block - 1, block, block + 1};
        if (bits != 128) {
            lengths.insert(lengths.end(), {whole - 1, whole, whole + 1, whole + block});
        }
        for (const std::size_t length : lengths) {
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

TEST_F(Cryptor3File, ProgressGrowsByWholeSteps) {
    std::vector<float> reported;
    m_cryptor.DisplayProgress = [&](float percent) {
        EXPECT_TRUE(m_cryptor.p_IsCalculating());
        reported.push_back(percent);
    };
    const QString source = m_files.write(QStringLiteral("p"), noise(std::size_t{1} << 20U));
    const QString sealed = m_files.path(QStringLiteral("p.aes"));
    ASSERT_TRUE(m_cryptor.EncryptFile(source, sealed, keyFor(256), false));
    // After 1 % of 32,769 blocks of 32 bytes, the 328th block is the first at or over it.
    ASSERT_FALSE(reported.empty());
    EXPECT_FLOAT_EQ(reported.front(), 328.0F / 32769.0F * 100.0F);
    EXPECT_EQ(reported.back(), 100.0F);
    for (std::size_t i = 1; i + 1 < reported.size(); ++i) {
        EXPECT_GE(reported[i] - reported[i - 1], 1.0F);
    }
    EXPECT_EQ(m_host.turns, static_cast<int>(reported.size()));

    // While deciphering, a block counts by its first byte.
    reported.clear();
    const QString one = m_files.write(QStringLiteral("one"), noise(3));
    ASSERT_TRUE(
        m_cryptor.EncryptFile(one, m_files.path(QStringLiteral("one.aes")), keyFor(128), false));
    EXPECT_EQ(reported, std::vector<float>{100.0F});
    reported.clear();
    ASSERT_TRUE(m_cryptor.DecryptFile(m_files.path(QStringLiteral("one.aes")),
                                      m_files.path(QStringLiteral("back")), keyFor(128), false));
    EXPECT_EQ(reported, (std::vector<float>{6.25F, 100.0F}));
}

TEST_F(Cryptor3File, AStopLeavesTheSourceAndNoTarget) {
    const Bytes plain = noise(300'000);
    const QString source = m_files.write(QStringLiteral("plain"), plain);
    const QString target = m_files.path(QStringLiteral("plain.aes"));
    m_host.onTurn = [&] { m_cryptor.p_stopRequested(m_host.turns == 50); };
    EXPECT_FALSE(m_cryptor.EncryptFile(source, target, keyFor(192), true));
    EXPECT_EQ(m_host.turns, 50);
    EXPECT_FALSE(QFile::exists(target));
    EXPECT_TRUE(m_files.read(QStringLiteral("plain")) == plain);
    EXPECT_FALSE(m_cryptor.p_IsCalculating());
    EXPECT_FALSE(m_cryptor.p_stopRequested());
    EXPECT_EQ(m_cryptor.lastFailure(), QStringLiteral("加密运算已终止。"));
    EXPECT_TRUE(m_host.messages.empty());
}

TEST_F(Cryptor3File, AKeySetMeanwhileDoesNotSpoilTheFile) {
    const Bytes plain = noise(100'000);
    const QString source = m_files.write(QStringLiteral("plain"), plain);
    const QString target = m_files.path(QStringLiteral("plain.aes"));
    m_host.onTurn = [&] { m_cryptor.SetCipherKeyString(QStringLiteral("other"), 128, 128, false); };
    ASSERT_TRUE(m_cryptor.EncryptFile(source, target, keyFor(256), false));
    m_host.onTurn = nullptr;
    ASSERT_TRUE(
        m_cryptor.DecryptFile(target, source + QStringLiteral(".back"), keyFor(256), false));
    EXPECT_TRUE(m_files.read(QStringLiteral("plain.back")) == plain);
}

TEST_F(Cryptor3File, DeletesTheSourceOnlyAfterSuccess) {
    const QString source = m_files.write(QStringLiteral("plain"), noise(100));
    const QString target = m_files.path(QStringLiteral("plain.aes"));
    ASSERT_TRUE(QFile::setPermissions(source, QFile::ReadOwner));
    EXPECT_TRUE(m_cryptor.EncryptFile(source, target, keyFor(128), true));
    EXPECT_FALSE(QFile::exists(source));
    EXPECT_TRUE(m_cryptor.DecryptFile(target, source, keyFor(128), true));
    EXPECT_TRUE(m_files.read(QStringLiteral("plain")) == noise(100));
    EXPECT_FALSE(QFile::exists(target));
}

TEST_F(Cryptor3File, SourceEqualToTargetIsRefusedUntouched) {
    const Bytes plain = noise(1000);
    const QString source = m_files.write(QStringLiteral("same"), plain);
    const QString link = m_files.path(QStringLiteral("link"));
    ASSERT_TRUE(QFile::link(source, link));
    for (const QString& target : {source, link}) {
        EXPECT_FALSE(m_cryptor.EncryptFile(source, target, keyFor(128), true));
        EXPECT_TRUE(m_files.read(QStringLiteral("same")) == plain);
    }
    ASSERT_EQ(m_host.messages.size(), 2U);
    EXPECT_EQ(m_host.messages[0],
              (FakeCryptorHost::Message{
                  CryptorHost::Severity::Exclamation,
                  QStringLiteral("[70]AES.FileEncrypt:\r\n明文文件拒绝访问，无法加密！")}));
}

TEST_F(Cryptor3File, BadInputIsRefusedBeforeTheTargetIsTouched) {
    const Bytes old = noise(10);
    const QString target = m_files.write(QStringLiteral("target"), old);
    const QString ragged = m_files.write(QStringLiteral("ragged.aes"), noise(33));
    EXPECT_FALSE(m_cryptor.DecryptFile(ragged, target, keyFor(256), true));
    EXPECT_EQ(m_cryptor.lastFailure(), QStringLiteral("加密文件的块大小有误！"));
    EXPECT_FALSE(m_cryptor.FileEncrypt(ragged, target, 100));
    EXPECT_EQ(m_cryptor.lastFailure(), QStringLiteral("字区大小的值不合法！"));
    const QString huge = m_files.writeSparse(QStringLiteral("huge"), qint64{256} * 4194304);
    EXPECT_FALSE(m_cryptor.EncryptFile(huge, target, keyFor(256), true));
    EXPECT_TRUE(m_host.messages.empty());

    EXPECT_FALSE(
        m_cryptor.EncryptFile(m_files.path(QStringLiteral("none")), target, keyFor(128), false));
    EXPECT_FALSE(m_cryptor.DecryptFile(m_files.path(QString()), target, keyFor(128), false));
    EXPECT_FALSE(m_cryptor.EncryptFile(ragged, target, QString(), true));
    EXPECT_FALSE(m_cryptor.DecryptFile(ragged, target, QString(), true));
    QStringList texts;
    for (const auto& [severity, text] : m_host.messages) {
        EXPECT_EQ(severity, CryptorHost::Severity::Critical);
        texts << text;
    }
    EXPECT_EQ(texts, (QStringList{QStringLiteral("[1]AES.EncryptFile:\r\n明文源文件无效！"),
                                  QStringLiteral("[1]AES.DecryptFile:\r\n密文源文件无效！"),
                                  QStringLiteral("[2]AES.EncryptFile:\r\n加密密钥空！"),
                                  QStringLiteral("[2]AES.DecryptFile:\r\n解密密钥空！")}));
    EXPECT_TRUE(m_files.read(QStringLiteral("target")) == old);
    EXPECT_TRUE(QFile::exists(ragged) && QFile::exists(huge));
}

/// A wrong key is found by the last byte in all but about 32 of 256 cases, and quietly.
TEST_F(Cryptor3File, MostWrongKeysAreFound) {
    const QString source = m_files.write(QStringLiteral("plain"), noise(5000));
    const QString sealed = m_files.path(QStringLiteral("plain.aes"));
    const QString target = m_files.path(QStringLiteral("target"));
    ASSERT_TRUE(m_cryptor.EncryptFile(source, sealed, keyFor(256), false));
    int found = 0;
    for (char16_t letter = u'A'; letter <= u'Z'; ++letter) {
        if (!m_cryptor.DecryptFile(sealed, target, QString(32, letter), true)) {
            ++found;
            EXPECT_FALSE(QFile::exists(target));
            EXPECT_TRUE(m_cryptor.lastFailure().startsWith(
                QStringLiteral("在密文文件中出现长度有误的字段，\r\n\r\n")));
        } else {
            ASSERT_TRUE(m_cryptor.EncryptFile(source, sealed, keyFor(256), false));
            ASSERT_TRUE(QFile::remove(target));
        }
    }
    EXPECT_GT(found, 15);
    EXPECT_TRUE(m_host.messages.empty());
}

TEST_F(Cryptor3File, OnlyARegularFileIsATarget) {
    const QString source = m_files.write(QStringLiteral("plain"), noise(100));
    const QString pipe = m_files.path(QStringLiteral("pipe"));
    ASSERT_EQ(::mkfifo(qPrintable(pipe), 0600), 0);
    for (const QString& target : {pipe, QStringLiteral("/dev/null"), m_files.path(QString())}) {
        EXPECT_FALSE(m_cryptor.EncryptFile(source, target, keyFor(128), true));
        EXPECT_EQ(m_cryptor.lastFailureNumber(), 75) << target.toStdString();
        EXPECT_TRUE(QFile::exists(target));
    }
    EXPECT_TRUE(QFile::exists(source));
}

TEST_F(Cryptor3File, AStopWhileDecipheringLeavesTheSourceAndNoTarget) {
    const QString source = m_files.write(QStringLiteral("plain"), noise(300'000));
    const QString sealed = m_files.path(QStringLiteral("plain.aes"));
    const QString target = m_files.path(QStringLiteral("back"));
    ASSERT_TRUE(m_cryptor.EncryptFile(source, sealed, keyFor(224), false));
    const Bytes before = m_files.read(QStringLiteral("plain.aes"));
    m_host.turns = 0;
    m_host.onTurn = [&] { m_cryptor.p_stopRequested(m_host.turns == 50); };
    EXPECT_FALSE(m_cryptor.DecryptFile(sealed, target, keyFor(224), true));
    EXPECT_EQ(m_host.turns, 50);
    EXPECT_FALSE(QFile::exists(target));
    EXPECT_TRUE(m_files.read(QStringLiteral("plain.aes")) == before);
    EXPECT_EQ(m_cryptor.lastFailure(), QStringLiteral("解密运算已终止。"));
    EXPECT_FALSE(m_cryptor.p_IsCalculating());
}

/// The size alone decides: a file at the limit gets as far as its target, one byte more does not.
TEST_F(Cryptor3File, TheLastFileThatFitsHas256Chunks) {
    for (int bits = 128; bits <= 256; bits += 32) {
        const qint64 block = bits / 8;
        const qint64 most = 256 * (qint64{chunk} / block * block);
        const QString missing = m_files.path(QStringLiteral("no/target"));
        ASSERT_EQ(m_cryptor.SetCipherKeyString(keyFor(bits), bits, bits, false), 0);
        const auto failureOf = [&](qint64 length) {
            const QString source = m_files.writeSparse(QStringLiteral("sparse"), length);
            EXPECT_FALSE(m_cryptor.FileEncrypt(source, missing, bits));
            return m_cryptor.lastFailureNumber();
        };
        EXPECT_EQ(failureOf(most - 1), 76) << bits;
        EXPECT_EQ(failureOf(most), 6) << bits;
    }
}

TEST_F(Cryptor3File, ALongerTargetKeepsItsTail) {
    const QString source = m_files.write(QStringLiteral("plain"), noise(20));
    const Bytes old = noise(100, 5);
    const QString target = m_files.write(QStringLiteral("target"), old);
    ASSERT_TRUE(m_cryptor.EncryptFile(source, target, keyFor(128), false));
    const Bytes now = m_files.read(QStringLiteral("target"));
    ASSERT_EQ(now.size(), 100U);
    EXPECT_TRUE(std::equal(now.begin() + 32, now.end(), old.begin() + 32));
    EXPECT_FALSE(std::equal(now.begin(), now.begin() + 32, old.begin()));
}

/// The administrator may read and write everything: the test becomes nobody for a while.
TEST_F(Cryptor3File, RefusedAccessIsShown) {
    constexpr uid_t nobody = 65534;
    const bool isRoot = ::geteuid() == 0;
    const QString folder = m_files.path(QString());
    const QString source = m_files.write(QStringLiteral("secret"), noise(100));
    const QString readable = m_files.write(QStringLiteral("readable"), noise(160));
    const QString locked = m_files.path(QStringLiteral("locked"));
    ASSERT_TRUE(QDir().mkpath(locked));
    // Written, but never read: what goes to the disk goes through the open file.
    const QString open = m_files.path(QStringLiteral("open"));
    const QString writeOnly = open + QStringLiteral("/w");
    const QString moved = open + QStringLiteral("/plain");
    ASSERT_TRUE(QDir().mkpath(open));
    ASSERT_EQ(::chmod(qPrintable(open), 0777), 0);
    m_files.write(QStringLiteral("open/w"), {});
    m_files.write(QStringLiteral("open/plain"), noise(16));
    ASSERT_EQ(::chmod(qPrintable(writeOnly), isRoot ? 0622 : 0200), 0);
    ASSERT_EQ(::chmod(qPrintable(moved), 0644), 0);
    ASSERT_EQ(::chmod(qPrintable(folder), 0755), 0);
    ASSERT_EQ(::chmod(qPrintable(source), 0), 0);
    ASSERT_EQ(::chmod(qPrintable(readable), 0644), 0);
    ASSERT_EQ(::chmod(qPrintable(locked), 0555), 0);
    const QString inLocked = locked + QStringLiteral("/t");
    ASSERT_TRUE(!isRoot || ::seteuid(nobody) == 0);
    const bool fromSecret = m_cryptor.EncryptFile(source, inLocked, keyFor(128), false);
    const bool intoLocked = m_cryptor.EncryptFile(readable, inLocked, keyFor(128), true);
    m_cryptor.SetCipherKeyString(keyFor(128), 128, 128, false);
    const bool decipher = m_cryptor.FileDecrypt(inLocked, source, 128);
    const bool intoWriteOnly = m_cryptor.EncryptFile(moved, writeOnly, keyFor(128), true);
    ASSERT_TRUE(!isRoot || ::seteuid(0) == 0);
    EXPECT_FALSE(fromSecret || intoLocked || decipher);
    EXPECT_TRUE(intoWriteOnly);
    EXPECT_FALSE(QFile::exists(moved));
    EXPECT_TRUE(QFile::exists(readable));
    QStringList texts;
    for (const auto& message : m_host.messages) {
        texts << message.second;
    }
    const QString encrypt = QStringLiteral("[70]AES.FileEncrypt:\r\n明文文件拒绝访问，无法加密！");
    EXPECT_EQ(texts, (QStringList{
                         encrypt, encrypt,
                         QStringLiteral("[70]AES.FileDecrypt:\r\n密文文件拒绝访问，无法解密！")}));
    // A missing folder is another failure, and not shown.
    EXPECT_FALSE(
        m_cryptor.EncryptFile(readable, m_files.path(QStringLiteral("no/t")), keyFor(128), true));
    EXPECT_EQ(m_cryptor.lastFailure(), QStringLiteral("路径未找到。"));
    EXPECT_EQ(m_host.messages.size(), 3U);
}

TEST_F(Cryptor3File, AFullDiskLeavesNoTarget) {
    const Bytes plain = noise(600'000);
    const QString source = m_files.write(QStringLiteral("plain"), plain);
    const QString small = m_files.path(QStringLiteral("small"));
    ASSERT_TRUE(QDir().mkpath(small));
    const bool mounted = ::mount("tmpfs", qPrintable(small), "tmpfs", 0, "size=300k") == 0;
    const QString target = small + QStringLiteral("/t.aes");
    bool done = true;
    if (mounted) {
        done = m_cryptor.EncryptFile(source, target, keyFor(256), true);
    } else {
        const FileSizeLimit limit(300'000);
        done = m_cryptor.EncryptFile(source, target, keyFor(256), true);
    }
    const bool leftOver = QFile::exists(target);
    if (mounted) {
        EXPECT_EQ(::umount(qPrintable(small)), 0);
    }
    EXPECT_FALSE(done);
    EXPECT_FALSE(leftOver);
    EXPECT_EQ(m_cryptor.lastFailure(), QStringLiteral("磁盘已满。"));
    EXPECT_TRUE(m_files.read(QStringLiteral("plain")) == plain);
}

}  // namespace
}  // namespace keeper
