// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "store/sealed_database.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "store/sealed_file.h"
#include "support/vault.h"

namespace keeper {
namespace {

const QString kUnreadable = QStringLiteral("{-2147467259}数据库不可识别。");

class SealedDatabaseTest : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(m_folder.isValid());
        VaultSession first(m_folder.path());
        ASSERT_TRUE(first.build());
        first.addRow(1);
        ASSERT_TRUE(first.seal());
        m_sealed = contentOf(first.keys.file);
    }

    QTemporaryDir m_folder;
    QByteArray m_sealed;
};

TEST_F(SealedDatabaseTest, ASessionLeavesOneSealedFileAndNothingInClear) {
    VaultSession session(m_folder.path());
    ASSERT_TRUE(session.open()) << session.message.toStdString();
    EXPECT_EQ(session.rows(), 1);
    const QString working = session.vault.p_tmpFile();
    EXPECT_TRUE(working.startsWith(session.stateFolder));
    EXPECT_EQ(QFile::permissions(working) & 0x77, 0) << "group and others have no right";
    EXPECT_FALSE(contentOf(working).contains(QStringLiteral("密文检查").toUtf8()));
    session.addRow(2);
    ASSERT_TRUE(session.seal());
    EXPECT_EQ(session.filesIn(session.stateFolder), QStringList());
    EXPECT_EQ(session.filesIn(m_folder.filePath(QStringLiteral("private"))),
              QStringList(QStringLiteral("某人.kvdb")));
    EXPECT_EQ(session.display.modes, (std::vector{CryptMode::Unseal, CryptMode::Seal}));
    EXPECT_EQ(session.display.closed, 2);
    EXPECT_EQ(session.display.progress.back(), 100);
    VaultSession next(m_folder.path());
    ASSERT_TRUE(next.open());
    EXPECT_EQ(next.rows(), 2);
    EXPECT_EQ(next.prompt.takeTexts(), QStringList());
}

TEST_F(SealedDatabaseTest, AnotherKeyOpensNothingUnderEitherScheme) {
    VaultSession session(m_folder.path());
    session.keys.plain = QStringLiteral("wrong key");
    EXPECT_FALSE(session.vault.CryptKVDB(false, 0, false, {}));
    EXPECT_FALSE(session.vault.CryptKVDB(true, 0, false, {}));
    EXPECT_EQ(session.vault.trouble(), SealedDatabase::Trouble::WrongKey);
    EXPECT_EQ(session.filesIn(session.stateFolder), QStringList());
    EXPECT_EQ(session.prompt.takeTexts(), QStringList());
    EXPECT_EQ(session.display.closed, 0);
    EXPECT_EQ(contentOf(session.keys.file), m_sealed);
}

TEST_F(SealedDatabaseTest, ANewLoginKeyHoldsFromTheNextSealing) {
    VaultSession session(m_folder.path());
    ASSERT_TRUE(session.open());
    EXPECT_TRUE(session.vault.CheckLgnKey(session.keys.plain));
    ASSERT_TRUE(session.vault.SetLgnKey(false, QStringLiteral("new key")));
    EXPECT_FALSE(session.vault.CheckLgnKey(QStringLiteral("New key")));
    EXPECT_EQ(session.keys.plain, QStringLiteral("new key"));
    EXPECT_EQ(contentOf(session.keys.file), m_sealed);
    ASSERT_TRUE(session.seal());
    VaultSession next(m_folder.path());
    EXPECT_FALSE(next.open());
    next.keys.plain = QStringLiteral("new key");
    EXPECT_TRUE(next.open());
    next.database.close();
    EXPECT_FALSE(next.vault.SetLgnKey(false, QStringLiteral("third"))) << "nothing is open";
    EXPECT_TRUE(next.prompt.takeTexts().value(0).startsWith(
        QStringLiteral("[21]cSystem.SetAccessDBSec:\r\n")));
    EXPECT_EQ(next.keys.plain, QStringLiteral("new key"));
}

TEST_F(SealedDatabaseTest, AFileThatTookThePlaceOfTheSealedOneIsKept) {
    VaultSession session(m_folder.path());
    const QString aside = m_folder.filePath(QStringLiteral("private/某人（另存 1）.kvdb"));
    ASSERT_TRUE(session.open());
    ASSERT_TRUE(session.seal());
    EXPECT_EQ(session.vault.p_foreignFile(), QString());
    const QString mark = session.vault.p_sealedMark();

    ASSERT_TRUE(session.open());
    session.addRow(2);
    ASSERT_TRUE(QFile::remove(session.keys.file));
    putContent(session.keys.file, m_sealed);
    ASSERT_TRUE(session.seal());
    EXPECT_EQ(session.vault.p_foreignFile(), aside);
    EXPECT_EQ(contentOf(aside), m_sealed);

    // The same behind a crash: the record tells which file the session had stood on.
    ASSERT_TRUE(session.open());
    EXPECT_EQ(session.rows(), 2);
    const QString left = session.vault.p_tmpFile();
    session.vault.KeepWorkingCopy();
    session.database.close();
    session.vault.GetResumeTempFile(left);
    ASSERT_TRUE(session.connectUnder(session.keys.plain));
    session.vault.p_sealedMark(mark);
    ASSERT_TRUE(session.seal());
    EXPECT_TRUE(session.vault.p_foreignFile().endsWith(QStringLiteral("（另存 2）.kvdb")));
    EXPECT_TRUE(isSameKeyByMark(mark, session.vault.p_sealedMark()));
}

TEST_F(SealedDatabaseTest, DispatchSealsACopyAndLeavesTheSession) {
    VaultSession session(m_folder.path());
    ASSERT_TRUE(session.open());
    session.addRow(2);
    const QString copy = m_folder.filePath(QStringLiteral("copy.kvdb"));
    ASSERT_TRUE(session.vault.CryptKVDB(false, 2, false, copy));
    EXPECT_EQ(contentOf(session.keys.file), m_sealed);
    ASSERT_TRUE(session.connectUnder(session.keys.plain));
    EXPECT_EQ(session.rows(), 2);
    session.keys.file = copy;
    ASSERT_TRUE(session.seal());
    EXPECT_EQ(session.display.modes.at(1), CryptMode::SealForDispatch);
}

TEST_F(SealedDatabaseTest, OnlyAProvenWorkingCopyReplacesTheSealedFile) {
    VaultSession refused(m_folder.path());
    ASSERT_TRUE(refused.vault.CryptKVDB(false, 0, false, {}));
    EXPECT_TRUE(refused.seal()) << "never connected: the sealed file has the content already";
    EXPECT_FALSE(QFileInfo::exists(refused.vault.p_tmpFile()));
    EXPECT_EQ(contentOf(refused.keys.file), m_sealed);

    ASSERT_TRUE(refused.open());
    refused.database.close();
    QByteArray oneBit = contentOf(refused.vault.p_tmpFile());
    oneBit[oneBit.size() - 100] = static_cast<char>(oneBit.at(oneBit.size() - 100) ^ 1);
    const QString left = m_folder.filePath(QStringLiteral("left.tmp"));
    for (const QByteArray& spoiled : {QByteArray(8192, 'x'), oneBit}) {
        putContent(left, spoiled);
        VaultSession resumed(m_folder.path());
        resumed.vault.GetResumeTempFile(left);
        EXPECT_FALSE(resumed.connectUnder(resumed.keys.plain));
        EXPECT_FALSE(resumed.seal());
        EXPECT_TRUE(QFileInfo::exists(left));
        EXPECT_EQ(contentOf(resumed.keys.file), m_sealed);
    }

    VaultSession session(m_folder.path());
    ASSERT_TRUE(session.open());
    EXPECT_FALSE(session.vault.CryptKVDB(false, 5, false, {})) << "no such mode";
    EXPECT_TRUE(QFileInfo::exists(session.vault.p_tmpFile()));
    EXPECT_EQ(contentOf(session.keys.file), m_sealed);

    // The disk spoils a page behind the session's back.
    const QString working = session.vault.p_tmpFile();
    ASSERT_TRUE(session.connectUnder(session.keys.plain));
    putContent(working, oneBit);
    for (const char* state : {"connected", "closed"}) {
        EXPECT_FALSE(session.seal()) << state;
        EXPECT_EQ(session.vault.trouble(), SealedDatabase::Trouble::Damaged);
        EXPECT_EQ(contentOf(working), oneBit);
        EXPECT_EQ(contentOf(session.keys.file), m_sealed);
    }
}

TEST_F(SealedDatabaseTest, AKeyThatTheUserCannotTakeIsTakenBack) {
    VaultSession session(m_folder.path());
    ASSERT_TRUE(session.open());
    session.keys.refusesKeys = true;
    EXPECT_FALSE(session.vault.SetLgnKey(false, QStringLiteral("new key")));
    EXPECT_EQ(session.prompt.takeTexts().size(), 1);
    session.addRow(2);
    ASSERT_TRUE(session.seal());
    VaultSession next(m_folder.path());
    ASSERT_TRUE(next.open());
    EXPECT_EQ(next.rows(), 2);
}

TEST_F(SealedDatabaseTest, AbandonedCopiesGoAndThoseOfSessionsStay) {
    QString kept;
    QString abandoned;
    {
        VaultSession begun(m_folder.path());
        ASSERT_TRUE(begun.open());
        begun.vault.KeepWorkingCopy();
        kept = begun.vault.p_tmpFile();
        VaultSession cut(m_folder.path());
        ASSERT_TRUE(cut.vault.CryptKVDB(false, 0, true, {}));
        abandoned = cut.vault.p_tmpFile();
        VaultSession beside(m_folder.path());
        ASSERT_TRUE(beside.open());
        EXPECT_TRUE(QFileInfo::exists(abandoned)) << "its session still runs";
        EXPECT_TRUE(beside.vault.DiscardWorkingCopy());
    }
    VaultSession next(m_folder.path());
    ASSERT_TRUE(next.open());
    EXPECT_FALSE(QFileInfo::exists(abandoned));
    EXPECT_TRUE(QFileInfo::exists(kept)) << "it may have rows that the sealed file lacks";
    ASSERT_TRUE(next.seal());
    EXPECT_EQ(next.filesIn(next.stateFolder), QStringList(QFileInfo(kept).fileName()));

    VaultSession resumed(m_folder.path());
    putContent(kept + QStringLiteral(".fresh"), {});
    resumed.vault.GetResumeTempFile(kept);
    VaultSession last(m_folder.path());
    ASSERT_TRUE(last.open());
    EXPECT_TRUE(QFileInfo::exists(kept)) << "who resumes a copy keeps it";
}

TEST_F(SealedDatabaseTest, ACopyThatCannotBeDeletedIsTold) {
    VaultSession session(m_folder.path());
    QDir().mkpath(m_folder.filePath(QStringLiteral("stuck.tmp/inside")));
    session.vault.GetResumeTempFile(m_folder.filePath(QStringLiteral("stuck.tmp")));
    EXPECT_FALSE(session.vault.DiscardWorkingCopy());
}

TEST_F(SealedDatabaseTest, ASecondSessionIsRefusedAndTakesNothingAway) {
    VaultSession session(m_folder.path());
    ASSERT_TRUE(session.open());
    VaultSession second(m_folder.path());
    second.vault.GetResumeTempFile(session.vault.p_tmpFile());
    EXPECT_FALSE(second.connectUnder(second.keys.plain));
    EXPECT_EQ(second.message, kUnreadable);
    EXPECT_EQ(second.vault.trouble(), SealedDatabase::Trouble::InUse);
    EXPECT_TRUE(QFileInfo::exists(session.vault.p_tmpFile()));
}

TEST_F(SealedDatabaseTest, CompactionShrinksTheSamePathAndSurvivesAFailure) {
    VaultSession session(m_folder.path());
    ASSERT_TRUE(session.open());
    session.vault.KeepWorkingCopy();
    {
        Transaction transaction(session.database);
        for (int i = 0; i < 300; ++i) {
            session.addRow(i);
        }
        transaction.commit();
    }
    session.database.execute("DELETE FROM tb_SysLog WHERE lCount>9");
    const QString path = session.vault.p_tmpFile();
    const qint64 before = QFileInfo(path).size();
    ASSERT_TRUE(session.vault.CompactDB(false));
    EXPECT_EQ(session.vault.p_tmpFile(), path);
    EXPECT_LT(QFileInfo(path).size(), before);
    EXPECT_EQ(session.rows(), 11);
    EXPECT_EQ(session.filesIn(session.stateFolder).size(), 1);

    // The password of another scheme cannot open the source.
    EXPECT_FALSE(session.vault.CompactDB(true));
    EXPECT_TRUE(
        session.prompt.takeTexts().value(0).contains(QStringLiteral("]cSystem.CompactDB:\r\n")));
    EXPECT_EQ(session.filesIn(session.stateFolder).size(), 1);
    ASSERT_TRUE(session.connectUnder(session.keys.plain));
    EXPECT_EQ(session.rows(), 11);
}

TEST_F(SealedDatabaseTest, ReplacesAFileBehindALinkAndClearsInterruptedRuns) {
    VaultSession session(m_folder.path());
    const QString elsewhere = m_folder.filePath(QStringLiteral("elsewhere.kvdb"));
    ASSERT_TRUE(QFile::rename(session.keys.file, elsewhere));
    ASSERT_TRUE(QFile::link(elsewhere, session.keys.file));
    putContent(m_folder.filePath(QStringLiteral(".elsewhere.kvdb.sealing-00")), "left");
    ASSERT_TRUE(session.open());
    session.addRow(2);
    ASSERT_TRUE(session.seal());
    EXPECT_TRUE(QFileInfo(session.keys.file).isSymLink());
    EXPECT_NE(contentOf(elsewhere), m_sealed);
    EXPECT_EQ(session.filesIn(m_folder.path()), QStringList(QStringLiteral("elsewhere.kvdb")));
}

TEST_F(SealedDatabaseTest, TheIndependentPasswordIsCheckedByItsDigest) {
    VaultSession session(m_folder.path());
    session.keys.idpHash = Cryptor2::hashString(QString());
    EXPECT_TRUE(session.vault.IsIdpPwdNull());
    session.keys.idpHash = Cryptor2::hashString(QStringLiteral("独立"));
    EXPECT_FALSE(session.vault.IsIdpPwdNull());
    EXPECT_TRUE(session.vault.CheckIdpPwd(QStringLiteral("独立")));
    EXPECT_FALSE(session.vault.CheckIdpPwd(QStringLiteral("独立 ")));
}

}  // namespace
}  // namespace keeper
