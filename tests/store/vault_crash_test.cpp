// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later
//
// Kills and failing disks. A plain run takes a sample; scripts/vault_campaign.sh takes everything.

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QDirIterator>
#include <array>
#include <csignal>
#include <cstdio>
#include <random>

#include "support/campaign_setting.h"
#include "support/killed_child.h"
#include "support/vault.h"
#if defined(__x86_64__)
#include "support/failing_system_call.h"
#endif

namespace keeper {
namespace {

const QString kOldKey = QStringLiteral("登录key-123");
const QString kNewKey = QStringLiteral("second key");

/// What the parent must know of a child that dies: rows whose writing was answered, and the key
/// and the path that the user's record would hold.
struct Shared {
    int acknowledged;
    bool hasNewKey;
    std::array<char, 512> activeFile;
};

class VaultCrashTest : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(m_folder.isValid());
        for (const char* name : {"HOME", "TMPDIR", "SQLITE_TMPDIR"}) {
            const QString place = m_folder.filePath(QString::fromLatin1(name));
            ASSERT_TRUE(QDir().mkpath(place));
            qputenv(name, place.toUtf8());
        }
        m_shared = static_cast<Shared*>(::mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE,
                                               MAP_SHARED | MAP_ANONYMOUS, -1, 0));
        VaultSession session(m_folder.path());
        ASSERT_TRUE(session.build());
        session.addRow(1);
        ASSERT_TRUE(session.seal());
        m_oldSealed = contentOf(session.keys.file);
        ASSERT_TRUE(session.open());
        session.addRow(2);
        session.database.close();
        m_working = contentOf(session.vault.p_tmpFile());
        session.vault.DiscardWorkingCopy();
    }
    void TearDown() override { ::munmap(m_shared, sizeof(Shared)); }

    QString left() const { return m_folder.filePath(QStringLiteral("state/left.tmp")); }
    QString sealed() const { return m_folder.filePath(QStringLiteral("private/某人.kvdb")); }

    /// The state of a session that was left with two rows in its working copy.
    void restore() {
        for (const char* name : {"state", "private"}) {
            QDir folder(m_folder.filePath(QString::fromLatin1(name)));
            for (const QString& file : folder.entryList(QDir::Files | QDir::Hidden)) {
                folder.remove(file);
            }
        }
        putContent(sealed(), m_oldSealed);
        if (!m_working.isEmpty()) {
            putContent(left(), m_working);
        }
        remember(m_working.isEmpty() ? QString() : left());
        m_shared->hasNewKey = false;
        m_shared->acknowledged = 2;
    }
    void remember(const QString& path) const {
        const QByteArray bytes = path.toUtf8();
        std::snprintf(m_shared->activeFile.data(), m_shared->activeFile.size(), "%s",
                      bytes.constData());
    }
    bool resume(VaultSession& session) {
        session.keys.onTaken = [this](const QString& key, const QString& copy) {
            m_shared->hasNewKey = key == kNewKey;
            remember(copy);
        };
        session.vault.GetResumeTempFile(left());
        return session.connectUnder(session.keys.plain);
    }

    /// What the next start finds; -1 when it finds nothing that opens.
    int rowsFound() {
        const QString active = QString::fromUtf8(m_shared->activeFile.data());
        VaultSession session(m_folder.path());
        session.keys.plain = m_shared->hasNewKey ? kNewKey : kOldKey;
        bool isOpen = false;
        if (!active.isEmpty() && QFileInfo::exists(active)) {
            session.vault.GetResumeTempFile(active);
            isOpen = session.connectUnder(session.keys.plain);
        } else {
            isOpen = session.open();
        }
        if (!isOpen) {
            return -1;
        }
        EXPECT_EQ(session.database.checkIntegrity(), QString());
        return session.rows();
    }
    /// Looks at all that the child could write: state and private folder, home and temporary files.
    void expectNothingInClear() {
        const QString text = QStringLiteral("密文检查");
        QDirIterator walk(m_folder.path(), QDir::Files | QDir::Hidden,
                          QDirIterator::Subdirectories);
        while (walk.hasNext()) {
            const QString file = walk.next();
            const QByteArray content = contentOf(file);
            EXPECT_FALSE(content.contains("SQLite format") || content.contains("CREATE TABLE") ||
                         content.contains(text.toUtf8()))
                << file.toStdString();
        }
    }
    /// What a kill left behind does not outlive the next session that compacts and seals.
    void expectLeftoversGo() {
        VaultSession session(m_folder.path());
        session.keys.plain = m_shared->hasNewKey ? kNewKey : kOldKey;
        const QString active = QString::fromUtf8(m_shared->activeFile.data());
        session.vault.GetResumeTempFile(active);
        ASSERT_TRUE(QFileInfo::exists(active) ? session.connectUnder(session.keys.plain)
                                              : session.open());
        ASSERT_TRUE(session.vault.CompactDB(false) && session.seal());
        EXPECT_EQ(session.filesIn(session.stateFolder), QStringList());
        EXPECT_EQ(session.filesIn(m_folder.filePath(QStringLiteral("private"))).size(), 1);
    }

    /// Kills `work` at one system call after another until it ends by itself.
    void killAtEachCall(const std::function<bool()>& work, const std::function<void(int)>& check) {
        const int step = campaignSetting("KEEPER_CRASH_STEP", 23);
        int call = 1;
        for (bool killed = true; killed && !HasFailure(); call += step) {
            restore();
            killed = killedAtSystemCall(call, [&] {
                if (!work()) {
                    ::_exit(1);
                }
            });
            check(call);
            expectNothingInClear();
        }
        EXPECT_GT(call, 2 * step);
        RecordProperty("calls", call);
    }
    /// The same in a session that a record names, with one row more.
    void killRecordedSession(const std::function<bool(VaultSession&)>& operation) {
        killAtEachCall(
            [&] {
                VaultSession session(m_folder.path());
                if (!resume(session)) {
                    return false;
                }
                session.addRow(3);
                m_shared->acknowledged = 3;
                return operation(session);
            },
            [this](int call) {
                const int rows = rowsFound();
                EXPECT_GE(rows, m_shared->acknowledged) << "killed at call " << call;
                EXPECT_LE(rows, 3);
                expectLeftoversGo();
            });
    }
    /// A sealed file of the older scheme, and nothing else.
    void sealUnderOldScheme() {
        VaultSession session(m_folder.path());
        ASSERT_TRUE(session.open());
        session.database.rekey(SealedDatabase::GetAccessDBSec(false, kOldKey),
                               SealedDatabase::GetAccessDBSec(true, kOldKey),
                               m_folder.filePath(QStringLiteral("moving")));
        ASSERT_TRUE(session.seal(true));
        m_oldSealed = contentOf(sealed());
        m_working.clear();
    }

    QTemporaryDir m_folder;
    QByteArray m_oldSealed;
    QByteArray m_working;
    Shared* m_shared = nullptr;
};

TEST_F(VaultCrashTest, AKillDuringSealingLosesNothing) {
    killRecordedSession([](VaultSession& session) { return session.seal(); });
}

TEST_F(VaultCrashTest, AKillDuringRekeyingLosesNothing) {
    killRecordedSession(
        [](VaultSession& session) { return session.vault.SetLgnKey(false, kNewKey); });
}

TEST_F(VaultCrashTest, AKillDuringCompactionLosesNothing) {
    killRecordedSession([](VaultSession& session) { return session.vault.CompactDB(false); });
}

TEST_F(VaultCrashTest, AKillDuringTheMoveToTheNewSchemeLeavesTheSealedFileGood) {
    sealUnderOldScheme();
    killAtEachCall(
        [this] {
            VaultSession session(m_folder.path());
            return session.open(true) && session.vault.SetLgnKey(true, kOldKey);
        },
        [this](int call) {
            EXPECT_EQ(contentOf(sealed()), m_oldSealed) << "killed at call " << call;
            VaultSession session(m_folder.path());
            session.vault.ClearUnfinished();
            EXPECT_FALSE(session.open(false)) << call;
            EXPECT_TRUE(session.open(true) && session.rows() == 1) << call;
            EXPECT_TRUE(session.vault.SetLgnKey(true, kOldKey) && session.seal() && session.open());
            EXPECT_TRUE(session.seal());
            EXPECT_EQ(session.filesIn(session.stateFolder), QStringList()) << call;
        });
}

TEST_F(VaultCrashTest, AKillAtARandomMomentLosesNothing) {
    const int moments = campaignSetting("KEEPER_CRASH_MOMENTS", 10);
    std::mt19937 generator(static_cast<unsigned>(campaignSetting("KEEPER_CRASH_SEED", 1)));
    std::uniform_int_distribution<int> microseconds(1'000, 400'000);
    for (int i = 0; i < moments && !HasFailure(); ++i) {
        restore();
        const int moment = microseconds(generator);
        const pid_t child = ::fork();
        if (child == 0) {
            VaultSession session(m_folder.path());
            bool isOpen = resume(session);
            for (int round = 0; isOpen; ++round) {
                session.addRow(m_shared->acknowledged + 1);
                ++m_shared->acknowledged;
                isOpen = session.vault.SetLgnKey(false, round % 2 == 0 ? kNewKey : kOldKey) &&
                         session.vault.CompactDB(false) && session.seal() && session.open();
                session.vault.KeepWorkingCopy();
                remember(session.vault.p_tmpFile());
            }
            ::_exit(1);
        }
        EXPECT_TRUE(killedAfter(child, std::chrono::microseconds(moment))) << "failed by itself";
        const int rows = rowsFound();
        EXPECT_GE(rows, m_shared->acknowledged) << "moment " << i;
        EXPECT_LE(rows, m_shared->acknowledged + 1) << "moment " << i;
        expectNothingInClear();
    }
}

#if defined(__x86_64__)

TEST_F(VaultCrashTest, AFailingDiskLeavesTheOldSealedFileAsItWas) {
    int replaced = 0;
    failEachCall({.errors = {ENOSPC, EIO, EROFS, EDQUOT},
                  .step = campaignSetting("KEEPER_CRASH_STEP", 3),
                  .before = [this] { restore(); },
                  .work =
                      [this] {
                          VaultSession session(m_folder.path());
                          return resume(session) && session.seal();
                      },
                  .check =
                      [&](const std::string& at, int answer) {
                          if (answer == 0) {
                              EXPECT_TRUE(QFileInfo::exists(left())) << at;
                              replaced += contentOf(sealed()) == m_oldSealed ? 0 : 1;
                              VaultSession session(m_folder.path());
                              EXPECT_EQ(session.filesIn(QFileInfo(sealed()).path()).size(), 1);
                          }
                          EXPECT_EQ(rowsFound(), 2) << at;
                      }});
    EXPECT_LE(replaced, 4) << "only the flush of the folder comes after the replacement";
}

TEST_F(VaultCrashTest, AFailingDiskDuringTheMoveToTheNewSchemeLeavesOneOfTheTwo) {
    sealUnderOldScheme();
    failEachCall({.errors = {ENOSPC, EIO},
                  .step = campaignSetting("KEEPER_CRASH_STEP", 5),
                  .before = [this] { restore(); },
                  .work =
                      [this] {
                          VaultSession session(m_folder.path());
                          if (!session.open(true)) {
                              ::_exit(2);
                          }
                          const bool isMoved = session.vault.SetLgnKey(true, kOldKey);
                          try {
                              session.addRow(2);
                          } catch (const DatabaseError&) {
                              ::_exit(3);
                          }
                          return session.seal() ? isMoved : (::_exit(3), false);
                      },
                  .check =
                      [this](const std::string& at, int answer) {
                          VaultSession session(m_folder.path());
                          bool isOpen = false;
                          for (const bool scheme : {false, true}) {
                              isOpen = isOpen || (session.vault.CryptKVDB(scheme, 0, true, {}) &&
                                                  (session.connectUnder(kOldKey, scheme) ||
                                                   session.connectUnder(kOldKey, !scheme)));
                          }
                          ASSERT_TRUE(isOpen) << at;
                          EXPECT_EQ(session.database.checkIntegrity(), QString()) << at;
                          EXPECT_GE(session.rows(), answer > 1 ? 1 : 2) << at;
                      }});
}

#endif

/// Gives a folder and all below it to a user whom rights bind, and becomes that user for a while.
class AsOrdinaryUser {
  public:
    explicit AsOrdinaryUser(const QString& folder) : m_isRoot(::geteuid() == 0) {
        if (!m_isRoot) {
            return;
        }
        QDirIterator walk(folder, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden,
                          QDirIterator::Subdirectories);
        give(folder);
        while (walk.hasNext()) {
            give(walk.next());
        }
        EXPECT_EQ(::seteuid(kNobody), 0);
    }
    ~AsOrdinaryUser() {
        if (m_isRoot) {
            EXPECT_EQ(::seteuid(0), 0);
        }
    }
    AsOrdinaryUser(const AsOrdinaryUser&) = delete;
    AsOrdinaryUser& operator=(const AsOrdinaryUser&) = delete;

  private:
    static constexpr uid_t kNobody = 65534;
    static void give(const QString& path) {
        EXPECT_EQ(::chown(QFile::encodeName(path).constData(), kNobody, kNobody), 0);
    }
    bool m_isRoot;
};

TEST_F(VaultCrashTest, AFolderThatCannotBeWrittenIsToldAndChangesNothing) {
    restore();
    const AsOrdinaryUser user(m_folder.path());
    const QString folder = m_folder.filePath(QStringLiteral("private"));
    VaultSession session(m_folder.path());
    ASSERT_TRUE(resume(session));
    QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner);
    EXPECT_FALSE(session.seal());
    QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    EXPECT_TRUE(session.prompt.takeTexts().value(0).contains(QStringLiteral("拒绝访问")));
    EXPECT_EQ(contentOf(sealed()), m_oldSealed);
    EXPECT_EQ(rowsFound(), 2);
}

}  // namespace
}  // namespace keeper
