// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later
//
// Damaged sealed files. A plain run takes a sample; scripts/vault_campaign.sh takes any number.

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "support/campaign_setting.h"
#include "support/vault.h"

namespace keeper {
namespace {

class SealedDamageTest : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(m_session.build());
        // Deleted rows leave pages that no table uses; damage in them must be found, too.
        for (int i = 0; i < 20; ++i) {
            m_session.addRow(i);
        }
        m_session.database.execute("DELETE FROM tb_SysLog WHERE lCount>2");
        ASSERT_TRUE(m_session.seal());
        m_good = contentOf(m_session.keys.file);
    }
    bool opens() {
        const bool opened = m_session.open(false) || m_session.open(true);
        m_session.vault.DiscardWorkingCopy();
        return opened;
    }

    int below(int bound) { return static_cast<int>(m_generator() % static_cast<unsigned>(bound)); }

    /// One way in which disks, cables and copy programs spoil a file.
    QByteArray damaged() {
        QByteArray bytes = m_good;
        const int size = static_cast<int>(bytes.size());
        const int length = 1 + below(200);
        const int from = below(size - length);
        const int to = below(size - length);
        switch (below(7)) {
            case 0:
                bytes[from] = static_cast<char>(bytes[from] ^ (1 << below(8)));
                break;
            case 1:
                std::generate_n(bytes.begin() + from, length,
                                [this] { return static_cast<char>(below(256)); });
                break;
            case 2:
                bytes.replace(from, length, QByteArray(length, '\0'));
                break;
            case 3:  // blocks are enciphered one by one, so a moved one deciphers well
                bytes.replace(to / 32 * 32, 32, m_good.mid(from / 32 * 32, 32));
                break;
            case 4:  // a whole page in the place of another
                bytes.replace(below(size / 4096) * 4096, 4096,
                              m_good.mid(below(size / 4096) * 4096, 4096));
                break;
            case 5:
                bytes.truncate(from);
                break;
            default:  // the block behind the last page
                bytes[size - 1 - below(32)] = static_cast<char>(below(256));
                break;
        }
        return bytes;
    }

    QTemporaryDir m_folder;
    VaultSession m_session{m_folder.path()};
    QByteArray m_good;
    std::mt19937 m_generator{static_cast<unsigned>(campaignSetting("KEEPER_DAMAGE_SEED", 1))};
};

TEST_F(SealedDamageTest, NoCorruptionOpens) {
    const int count = campaignSetting("KEEPER_DAMAGE_COUNT", 150);
    for (int i = 0; i < count; ++i) {
        const QByteArray bytes = damaged();
        if (bytes == m_good) {
            continue;
        }
        putContent(m_session.keys.file, bytes);
        ASSERT_FALSE(opens()) << "corruption " << i;
    }
    putContent(m_session.keys.file, m_good);
    EXPECT_TRUE(opens());
}

TEST_F(SealedDamageTest, NoTruncationOpens) {
    const int step = campaignSetting("KEEPER_DAMAGE_STEP", 499);
    QFile file(m_session.keys.file);
    for (qint64 size = m_good.size() - 1; size >= 0; --size) {
        // Sizes at the seams of pages and blocks are always tried.
        if (size % step != 0 && size % 4096 > 33) {
            continue;
        }
        ASSERT_TRUE(file.resize(size));
        ASSERT_FALSE(opens()) << size << " of " << m_good.size();
    }
}

TEST_F(SealedDamageTest, TellsARightKeyFromASoundFile) {
    QByteArray bytes = m_good;
    bytes[10'000] = static_cast<char>(bytes[10'000] ^ 1);
    putContent(m_session.keys.file, bytes);
    EXPECT_FALSE(m_session.open());
    EXPECT_EQ(m_session.vault.trouble(), SealedDatabase::Trouble::Damaged);
    EXPECT_TRUE(m_session.seal()) << "goes back as it was";
    EXPECT_EQ(contentOf(m_session.keys.file), bytes);

    // The end proves the key; damage there, or a file that a power cut left as zeros, is no wrong
    // key.
    QByteArray end = m_good;
    end[end.size() - 1] = static_cast<char>(end[end.size() - 1] ^ 1);
    QByteArray zeroEnd = m_good;
    zeroEnd.replace(zeroEnd.size() - 4096, 4096, QByteArray(4096, '\0'));
    QByteArray longEnd = m_good + m_good.first(4096);
    for (const QByteArray& spoiled : {end, zeroEnd, longEnd, QByteArray(m_good.size(), '\0')}) {
        putContent(m_session.keys.file, spoiled);
        for (const bool scheme : {false, true}) {
            EXPECT_FALSE(m_session.open(scheme));
            if (!scheme || spoiled.at(0) == '\0') {
                EXPECT_EQ(m_session.vault.trouble(), SealedDatabase::Trouble::Damaged);
            }
        }
    }
    // The same behind a failed upgrade: the password inside is still that of the other scheme.
    putContent(m_session.keys.file, m_good);
    ASSERT_TRUE(m_session.open());
    m_session.database.rekey(SealedDatabase::GetAccessDBSec(false, m_session.keys.plain),
                             SealedDatabase::GetAccessDBSec(true, m_session.keys.plain),
                             m_session.vault.p_tmpFile() + QStringLiteral(".rekeyed"));
    ASSERT_TRUE(m_session.seal());
    QByteArray mixed = contentOf(m_session.keys.file);
    mixed[mixed.size() - 1] = static_cast<char>(mixed[mixed.size() - 1] ^ 1);
    putContent(m_session.keys.file, mixed);
    EXPECT_FALSE(m_session.open());
    EXPECT_EQ(m_session.vault.trouble(), SealedDatabase::Trouble::Damaged);

    putContent(m_session.keys.file, m_good);
    m_session.keys.p_plainLgnKey(QStringLiteral("another key"));
    EXPECT_FALSE(m_session.open());
    EXPECT_EQ(m_session.vault.trouble(), SealedDatabase::Trouble::WrongKey);
    ASSERT_TRUE(QFile::remove(m_session.keys.file));
    EXPECT_FALSE(m_session.open());
    EXPECT_EQ(m_session.vault.trouble(), SealedDatabase::Trouble::System);
    EXPECT_EQ(m_session.filesIn(m_session.stateFolder), QStringList());
}

}  // namespace
}  // namespace keeper
