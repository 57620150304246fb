// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "guard/session_connect.h"

#include <QFileInfo>

#include "app/destruction.h"
#include "app/settings.h"
#include "app/system.h"
#include "crypto/secure_wipe.h"
#include "guard/os_info.h"
#include "guard/sw_protect.h"
#include "platform/clock.h"
#include "platform/database.h"
#include "platform/prompt.h"
#include "store/connecting_display.h"
#include "store/failure.h"
#include "store/sealed_database.h"
#include "store/sealed_file.h"

namespace keeper {
namespace {

// Numbers of the road's own failures; 1, 2, 3, 5 and 6 come from the guard.
constexpr std::int32_t kDatabaseAbnormal = 4;
constexpr std::int32_t kWrongKey = 7;
constexpr std::int32_t kNotConnected = 8;

// Statuses of the system log.
constexpr int kLifetimeEnded = 1;
constexpr int kClockSetBack = 2;

/// What becomes of a database whose tables are not as they must be.
const QString kAbnormalText =
    QStringLiteral("\r\n密码数据库文件已被删除，私人文件夹及其中的备份仍然保留。");

/// What has been told already and ends the login without touching anything.
struct Told {};

/// The independent password was not given: nobody may read on.
struct Locked {
    /// The working copy that the record named before; it may be a crashed one that was passed over.
    QString formerCopy;
};

/// A row of the table of refusals. A type of its own: no failure of the engine or the ciphers,
/// whose numbers overlap, may ever be taken for a verdict that destroys.
struct Refusal {
    std::int32_t number = 0;
    QString source;
    QString description;
};

}  // namespace

bool SessionConnect::ConnectDatabase(bool& resumed) {
    resumed = false;
    m_keySchemeV2 = false;
    try {
        open(resumed);
        if (!resumed) {
            m_ports.display.close();
        }
        return true;
    } catch (const Told&) {
        m_ports.display.close();
        abandon(resumed);
    } catch (const Locked& locked) {
        // What the guard and the count of chances have written must not be had back for a cancel.
        if (resumed) {
            abandon(resumed);
        } else {
            reseal();
            offerAgain(locked.formerCopy);
        }
    } catch (const Refusal& refusal) {
        handle(refusal.number, refusal.source, refusal.description, resumed);
    } catch (...) {
        m_ports.display.close();
        const Failure failure = currentFailure();
        m_ports.prompt.messageBox(failureText(failure, QStringLiteral("mMain.ConnectDatabase")),
                                  Prompt::Icon::Critical, Prompt::Buttons::Ok,
                                  QStringLiteral("未知错误"));
        abandon(resumed);
    }
    m_ports.database.ReleaseSealedFile();
    return false;
}

void SessionConnect::open(bool& resumed) {
    if (!m_ports.database.HoldSealedFile()) {
        // Taken since the login form looked.
        m_ports.prompt.messageBox(
            QStringLiteral("[%1]:该密码数据库已被占用！").arg(m_ports.database.p_kvdbFile()),
            Prompt::Icon::Exclamation);
        throw Told{};
    }
    m_ports.database.ClearUnfinished();
    const QString path = m_ports.system.user().p_activeFile();
    // The copy of an earlier session that could not be sealed is not this one's to delete.
    m_ports.database.GetResumeTempFile(QString());
    resumed = !path.isEmpty() && QFileInfo(path).isFile();
    if (resumed) {
        resumed = resume(path);
    }
    if (resumed && !QFileInfo::exists(m_ports.database.p_kvdbFile())) {
        // The sealing will need the folder again.
        m_ports.system.RepairPrivateFolder();
    }
    if (!resumed) {
        unsealAndConnect();
    }
    readSettings();
    judge();
    unlockColumns();
    upgradeVersion();
}

bool SessionConnect::resume(const QString& path) {
    using Trouble = SealedDatabase::Trouble;
    m_ports.database.GetResumeTempFile(path);
    QString message;
    for (const bool scheme : {false, true}) {
        if (connect(scheme, message)) {
            m_keySchemeV2 = scheme;
            m_ports.database.p_sealedMark(m_ports.system.user().p_sealedMark());
            return true;
        }
        if (m_ports.database.trouble() != Trouble::WrongKey) {
            break;
        }
    }
    // The only copy of what was written since the last clean exit: it is never deleted. One that
    // another program holds, or that the system cannot read now, may open at the next login.
    const Trouble trouble = m_ports.database.trouble();
    if (trouble != Trouble::WrongKey && trouble != Trouble::Damaged) {
        throw Refusal{kNotConnected, QStringLiteral("连接数据库"), message};
    }
    const auto answer = m_ports.prompt.messageBox(
        QStringLiteral("上次异常退出时留下的工作副本无法打开：\r\n%1\r\n%2\r\n"
                       "是否改用上次正常退出时保存的密码数据库登录？工作副本会原样保留。")
            .arg(path, message),
        Prompt::Icon::Critical, Prompt::Buttons::YesNo);
    m_ports.database.GetResumeTempFile(QString());
    if (answer != Prompt::Answer::Yes) {
        throw Told{};
    }
    return false;
}

bool SessionConnect::connect(bool scheme, QString& message) {
    QString key = m_ports.system.user().p_plainLgnKey();
    const WipeGuard wipeKey(key);
    QString password = SealedDatabase::GetAccessDBSec(scheme, key);
    const WipeGuard wipePassword(password);
    return m_ports.database.ConnAccess(password, message);
}

void SessionConnect::unsealAndConnect() {
    for (const bool scheme : {false, true}) {
        m_keySchemeV2 = scheme;
        if (tryScheme(scheme)) {
            return;
        }
    }
    if (m_ports.system.user().p_isKeyChangePending()) {
        // The file may rightly be under the key from before the change, or already under the new.
        m_ports.system.user().acceptFormerKey();
        report(
            QStringLiteral("上次会话修改了登录密钥，但异常退出。密码数据库不能用这个登录密钥打开，"
                           "请改用修改前或修改后的另一个登录密钥登录。没有改动任何文件。"));
        throw Told{};
    }
    throw Refusal{
        kWrongKey, QStringLiteral("解密失败"),
        QStringLiteral(
            "登录密钥错误！\r\n由于您的登录行为异常，本密码数据库及私人文件夹已被紧急销毁。")};
}

bool SessionConnect::tryScheme(bool scheme) {
    using Trouble = SealedDatabase::Trouble;
    const bool isUnsealed = m_ports.database.CryptKVDB(scheme, static_cast<int>(CryptMode::Unseal),
                                                       /*closeDialog=*/false, QString());
    if (!isUnsealed) {
        if (m_ports.database.trouble() != Trouble::WrongKey) {
            // A disk that fails says nothing about the key; CryptKVDB has told what failed.
            throw Told{};
        }
        return false;
    }
    QString message;
    // The file that a session without its upgrade has sealed wears the new scheme outside only.
    for (const bool inner : {scheme, !scheme}) {
        if (connect(inner, message)) {
            m_keySchemeV2 = inner;
            return true;
        }
    }
    const Trouble trouble = m_ports.database.trouble();
    if (trouble != Trouble::WrongKey || scheme) {
        throw Refusal{kNotConnected, QStringLiteral("连接数据库"), message};
    }
    m_ports.database.DiscardWorkingCopy();
    return false;
}

void SessionConnect::readSettings() {
    QString message;
    if (!m_ports.system.settings().ReadDB(message)) {
        if (m_ports.system.settings().p_isUnreadable()) {
            throw Told{};
        }
        throw Refusal{kDatabaseAbnormal, QStringLiteral("数据库异常"), message + kAbnormalText};
    }
    if (!m_ports.guard.ReadDB()) {
        if (m_ports.guard.p_isUnreadable()) {
            throw Told{};
        }
        throw Refusal{kDatabaseAbnormal, QStringLiteral("数据库异常"),
                      QStringLiteral("无法读取数据保护信息。") + kAbnormalText};
    }
}

void SessionConnect::judge() {
    const GuardVerdict machine = m_ports.guard.Initialize();
    if (!machine.ok) {
        throw Refusal{machine.errorNumber, QStringLiteral("安全检测"), machine.message};
    }
}

void SessionConnect::unlockColumns() {
    if (!m_ports.system.settings().p_idpPwdSwitch()) {
        return;
    }
    m_ports.display.close();
    // Whoever kills the program over the question finds this copy again, with the tries used up.
    User& user = m_ports.system.user();
    const QString former = user.p_activeFile();
    user.p_activeFile(m_ports.system.p_tmpFile());
    if (m_ports.system.WriteUser()) {
        m_ports.database.KeepWorkingCopy();
    }
    if (!m_ports.unlockColumns()) {
        throw Locked{former};
    }
}

/// A crashed copy that somebody passed over by a login which came to nothing.
void SessionConnect::offerAgain(const QString& crashedCopy) {
    if (QFileInfo(crashedCopy).isFile()) {
        m_ports.system.user().p_activeFile(crashedCopy);
        m_ports.system.WriteUser();
    }
}

void SessionConnect::upgradeVersion() {
    const GuardVerdict version = m_ports.guard.ExamineDBVersion();
    if (!version.ok) {
        throw Refusal{version.errorNumber, QStringLiteral("数据库版本"), version.message};
    }
    const bool isNewer = !version.message.isEmpty();
    if (!isNewer && !m_keySchemeV2) {
        return;
    }
    QString key = m_ports.system.user().p_plainLgnKey();
    const WipeGuard wipeKey(key);
    // The current version under the earlier password: an upgrade could not change it then.
    const bool isStamped = isNewer && m_ports.guard.SetDBVersionAsApp();
    const bool isRekeyed = m_ports.database.SetLgnKey(m_keySchemeV2, key);
    if (isStamped && isRekeyed) {
        m_ports.prompt.messageBox(version.message, Prompt::Icon::Information);
    }
}

void SessionConnect::handle(std::int32_t number, const QString& source, const QString& description,
                            bool resumed) {
    const QString text =
        QStringLiteral("[%1]%2:\r\n%3").arg(QString::number(number), source, description);
    if (!resumed) {
        m_ports.display.close();
    }
    Prompt::Icon icon = Prompt::Icon::Critical;
    QString title;
    switch (number) {
        case GuardVerdict::kExpired:
            writeLog(kLifetimeEnded, m_ports.machine.addressSign(), m_ports.clock.now());
            reseal();
            icon = Prompt::Icon::Exclamation;
            break;
        case kNotConnected:
            if (resumed) {
                // Never opened, so there is nothing to seal; the copy waits for a better moment.
                abandon(resumed);
            } else {
                reseal();
            }
            icon = Prompt::Icon::Exclamation;
            break;
        case GuardVerdict::kWrongVersion:
            reseal();
            icon = Prompt::Icon::Exclamation;
            break;
        case GuardVerdict::kClockSetBack:
            writeLog(kClockSetBack, m_ports.machine.addressSign(), m_ports.clock.now());
            reseal();
            break;
        case kDatabaseAbnormal:
            condemn(/*deletesFolder=*/false);
            break;
        case GuardVerdict::kWrongMachine:
        case GuardVerdict::kTampered:
        case kWrongKey:
            condemn(/*deletesFolder=*/true);
            break;
        default:
            title = QStringLiteral("未知错误");
            abandon(resumed);
            break;
    }
    const bool isSilent = icon == Prompt::Icon::Exclamation && description.isEmpty();
    if (!isSilent) {
        m_ports.prompt.messageBox(text, icon, Prompt::Buttons::Ok, title);
    }
}

void SessionConnect::reseal() {
    (void)m_ports.database.CryptKVDB(m_keySchemeV2, static_cast<int>(CryptMode::Seal),
                                     /*closeDialog=*/true, QString());
    m_ports.system.user().p_sealedMark(m_ports.database.p_sealedMark());
    if (!m_ports.database.p_foreignFile().isEmpty()) {
        report(foreignFileText(m_ports.database.p_foreignFile()));
    }
}

void SessionConnect::abandon(bool resumed) {
    if (resumed) {
        m_ports.connection.close();
        m_ports.database.GetResumeTempFile(QString());
    } else {
        m_ports.database.DiscardWorkingCopy();
    }
}

void SessionConnect::condemn(bool deletesFolder) {
    m_ports.destruction.destroy(m_ports.system, deletesFolder);
}

}  // namespace keeper
