// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <gtest/gtest.h>

#include <QProcess>
#include <bit>
#include <string>

#include "crypto/cryptor1.h"
#include "crypto/cryptor2.h"
#include "crypto/digest_blocks.h"
#include "crypto/sha1.h"
#include "support/fake_cryptor_host.h"
#include "support/test_files.h"

namespace keeper {
namespace {

/// The digests that a program of the system prints for files, one a file, in upper case.
QStringList peerDigests(const QString& program, const QStringList& files) {
    QProcess peer;
    peer.start(program, files);
    EXPECT_TRUE(peer.waitForFinished());
    QStringList digests;
    for (const QString& line :
         QString::fromUtf8(peer.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts)) {
        digests << line.section(u' ', 0, 0).toUpper();
    }
    return digests;
}

std::string md5OfFile(const QString& path) {
    FakeCryptorHost host;
    Cryptor1 md5(host);
    QString digest = QStringLiteral("untouched");
    EXPECT_TRUE(md5.hashFile(path, digest));
    return digest.toStdString();
}

TEST(Digests, KnownAnswersOfTheStandards) {
    EXPECT_EQ(Cryptor1::hashString(u"").toStdString(), "D41D8CD98F00B204E9800998ECF8427E");
    EXPECT_EQ(Cryptor1::hashString(u"message digest").toStdString(),
              "F96B697D7CB7938D525A2F31AAF161D0");
    EXPECT_EQ(Cryptor2::hashString(u"").toStdString(), "DA39A3EE5E6B4B0D3255BFEF95601890AFD80709");
    EXPECT_EQ(Cryptor2::hashString(u"abc").toStdString(),
              "A9993E364706816ABA3E25717850C26C9CD0D89D");
    EXPECT_EQ(Cryptor2::hashArray(Bytes(1'000'000, 'a')).toStdString(),
              "34AA973CD4C4DAA4F61EEB2BDBAD27316534016F");
}

TEST(Digests, TextIsDigestedAsItsAnsiBytes) {
    const Bytes ansi{0xC3, 0xDC, 0xC2, 0xEB};
    TestFiles files;
    const QString path = files.write(QStringLiteral("ansi"), ansi);
    EXPECT_EQ(Cryptor2::hashString(u"密码"), Cryptor2::hashArray(ansi));
    EXPECT_EQ(Cryptor1::hashString(u"密码").toStdString(), md5OfFile(path));
}

TEST(Digests, FilesAgreeWithCoreutilsAtEverySizeButTheDroppedBlock) {
    TestFiles files;
    const Bytes data = noise(102'600);
    QStringList names;
    std::vector<std::size_t> sizes;
    for (std::size_t size = 0; size <= 4096; ++size) {
        sizes.push_back(size);
    }
    for (std::size_t size = 102'272; size <= 102'500; ++size) {
        sizes.push_back(size);
    }
    for (const std::size_t size : sizes) {
        names << files.write(QString::number(size), std::span(data).first(size));
    }
    const QStringList md5 = peerDigests(QStringLiteral("md5sum"), names);
    const QStringList sha1 = peerDigests(QStringLiteral("sha1sum"), names);
    ASSERT_EQ(md5.size(), names.size());
    ASSERT_EQ(sha1.size(), names.size());
    Cryptor2::BusyFlag busy;
    Cryptor2 cryptor2(busy);
    for (qsizetype i = 0; i < names.size(); ++i) {
        const std::size_t size = sizes[static_cast<std::size_t>(i)];
        const bool dropped = size > 0 && size % 64 == 0;
        const qsizetype like = dropped ? i - 64 : i;
        // The big sizes start in the middle of a run; their first blocks have no row to look at.
        if (like >= 0 && sizes[static_cast<std::size_t>(like)] == size - (dropped ? 64 : 0)) {
            ASSERT_EQ(md5OfFile(names[i]), md5[like].toStdString()) << size;
        }
        ASSERT_EQ(cryptor2.hashFile(names[i]), sha1[i]) << size;
    }
}

TEST(Digests, EverySha1PathGivesTheSameWords) {
    const Bytes data = noise(64 * 300 + 3);
    for (const std::size_t offset : {0U, 1U, 3U}) {
        for (const std::size_t blocks : {0U, 1U, 2U, 3U, 17U, 300U}) {
            Sha1State portable = kSha1Start;
            Sha1State chosen = kSha1Start;
            sha1Path(/*allowHardware=*/false).transform(portable, data.data() + offset, blocks);
            sha1Path().transform(chosen, data.data() + offset, blocks);
            EXPECT_EQ(portable, chosen) << sha1Path().name << " " << blocks;
        }
    }
    EXPECT_STREQ(sha1Path(false).name, "portable");
    Sha1State abc = kSha1Start;
    const PaddedTail tail(Bytes{'a', 'b', 'c'}, 3, std::endian::big);
    sha1TransformPortable(abc, tail.data(), tail.blocks());
    EXPECT_EQ(digestText(abc, std::endian::big).toStdString(),
              "A9993E364706816ABA3E25717850C26C9CD0D89D");
}

class Md5File : public testing::Test {
  protected:
    FakeCryptorHost host;
    Cryptor1 md5{host};
    TestFiles files;
    QString digest = QStringLiteral("untouched");
};

/// Progress as a loop over single blocks would raise it.
std::vector<float> expectedProgress(std::size_t size) {
    std::vector<float> raised;
    float last = 0;
    for (std::size_t read = 64; read < size + 64; read += 64) {
        const std::size_t position = std::min(read, size);
        const auto percent =
            static_cast<float>(static_cast<double>(position) / static_cast<double>(size) * 100.0);
        if (percent - last >= 0.5F) {
            raised.push_back(last = percent);
        }
    }
    if (last < 100) {
        raised.push_back(last);
    }
    return raised;
}

TEST_F(Md5File, ProgressComesAtTheSameBlocksAsFromABlockwiseLoop) {
    for (const std::size_t size : {1U, 64U, 65U, 6400U, 12'801U, 102'399U, 102'400U, 1'000'003U}) {
        std::vector<float> raised;
        md5.DisplayProgress = [&](float percent) {
            EXPECT_TRUE(md5.p_IsCalculating());
            raised.push_back(percent);
        };
        ASSERT_TRUE(md5.hashFile(files.write(QStringLiteral("f"), noise(size)), digest));
        EXPECT_EQ(raised, expectedProgress(size)) << size;
    }
    EXPECT_FALSE(md5.p_IsCalculating());
}

TEST_F(Md5File, StopEndsItWithFalseAndClearsTheFlags) {
    const QString path = files.write(QStringLiteral("f"), noise(200'000));
    host.onTurn = [&] { md5.p_stopRequested(host.turns == 3); };
    EXPECT_FALSE(md5.hashFile(path, digest));
    EXPECT_EQ(host.turns, 3);
    EXPECT_EQ(digest, u"untouched");
    EXPECT_FALSE(md5.p_stopRequested());
    EXPECT_FALSE(md5.p_IsCalculating());
    host.onTurn = nullptr;
    md5.p_stopRequested(true);
    EXPECT_TRUE(md5.hashFile(path, digest)) << "an old request does not stop a new run";
}

TEST_F(Md5File, FailsSilentlyWhereItCannotCountOrRead) {
    EXPECT_FALSE(md5.hashFile(files.path(QStringLiteral("missing")), digest));
    EXPECT_FALSE(md5.hashFile(files.path(QStringLiteral(".")), digest));
    // One byte less, a multiple of 64, counts a block less and has a digest (see below).
    EXPECT_FALSE(md5.hashFile(files.writeSparse(QStringLiteral("f"), 268'435'457), digest));
    EXPECT_EQ(digest, u"untouched");
    EXPECT_TRUE(host.messages.empty());
    Cryptor2::BusyFlag busy;
    EXPECT_TRUE(Cryptor2(busy).hashFile(files.path(QStringLiteral("missing"))).isEmpty());
    EXPECT_FALSE(busy.isSet());
}

TEST_F(Md5File, TheLargestFileHasExactly256Mebibytes) {
    const QString path = files.writeSparse(QStringLiteral("f"), 268'435'456);
    ASSERT_TRUE(md5.hashFile(path, digest));
    const QString counted = files.writeSparse(QStringLiteral("counted"), 268'435'392);
    EXPECT_EQ(digest, peerDigests(QStringLiteral("md5sum"), {counted}).value(0));
}

TEST_F(Md5File, OnlyABigFileTurnsTheLoopAtItsEnd) {
    for (const std::size_t size : {102'399U, 102'400U, 102'401U}) {
        int raised = 0;
        md5.DisplayProgress = [&](float) { ++raised; };
        host.turns = 0;
        ASSERT_TRUE(md5.hashFile(files.write(QStringLiteral("f"), noise(size)), digest));
        const std::vector<float> expected = expectedProgress(size);
        // Each step turns it once; what is raised again below 100 at the very end does not.
        const bool repeats = expected.back() < 100.0F;
        ASSERT_EQ(raised, static_cast<int>(expected.size()));
        EXPECT_EQ(host.turns, raised - (repeats ? 1 : 0) + (size >= 102'400 ? 1 : 0)) << size;
    }
}

}  // namespace
}  // namespace keeper
