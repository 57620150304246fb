// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "workspace/session_end.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStorageInfo>
#include <algorithm>
#include <limits>
#include <utility>

#include "app/file_operator.h"
#include "app/system.h"
#include "platform/clock.h"
#include "platform/durable_file.h"
#include "platform/prompt.h"
#include "store/connecting_display.h"
#include "store/failure.h"
#include "store/sealed_database.h"
#include "store/sealed_file.h"
#include "store/sys_logs.h"

namespace keeper {
namespace {

// Statuses of the system log.
constexpr int kExitNormal = 13;
constexpr int kExitAutomatic = 14;
constexpr int kExitShutDown = 15;
constexpr int kExitUndefined = 54;

/// What the sealing writes beside the copy is small, but it must not take the last of the space.
constexpr qint64 kSpareBytes = 64 * 1024;

}  // namespace

SessionEnd::SessionEnd(Ports ports) : m_ports(std::move(ports)) {}

bool SessionEnd::requestClose(CloseReason reason, AutoExit autoExit) {
    if (m_ports.system.p_isLogouted()) {
        return true;
    }
    bool asksAboutEditing = false;
    switch (reason) {
        case CloseReason::User:
            if (m_ports.system.settings().p_close2Tray()) {
                if (m_ports.hideToTray()) {
                    m_ports.showBalloon(QString(),
                                        QStringLiteral("管理器已隐藏到托盘，单击图标还原管理器。"));
                }
                return false;
            }
            asksAboutEditing = true;
            m_status = kExitNormal;
            break;
        case CloseReason::Program:
            asksAboutEditing = autoExit == AutoExit::None;
            m_status = autoExit == AutoExit::None    ? kExitNormal
                       : autoExit == AutoExit::Close ? kExitAutomatic
                                                     : kExitShutDown;
            break;
        case CloseReason::SessionEnds:
            m_status = kExitShutDown;
            break;
        case CloseReason::Killed:
            m_ports.database.DiscardWorkingCopy();
            m_isDiscarded = true;
            m_status = kExitUndefined;
            break;
        case CloseReason::Other:
            m_status = kExitUndefined;
            break;
    }
    if (asksAboutEditing) {
        bool cancel = false;
        ConfirmLeaveEditing(cancel);
        // The question may have been overtaken by the end of the desktop's session.
        if (m_ports.system.p_isLogouted()) {
            return true;
        }
        if (cancel) {
            return false;
        }
    }
    (void)guardedRun(
        m_ports.prompt, QStringLiteral("frmMain.Form_QueryUnload"), [this] { end(); },
        Prompt::Icon::Exclamation);
    return true;
}

void SessionEnd::ConfirmLeaveEditing(bool& cancel) {
    cancel = m_ports.isEditing() &&
             m_ports.prompt.messageBox(QStringLiteral("你目前处于编辑状态，确定不保存就退出吗？"),
                                       Prompt::Icon::Exclamation,
                                       Prompt::Buttons::OkCancel) != Prompt::Answer::Ok;
}

void SessionEnd::end() {
    m_ports.system.p_isLogouted(true);
    m_ports.showBalloon(QString(), QStringLiteral("再见，%1！").arg(m_ports.system.p_userName()));
    m_ports.stopFill();
    if (m_ports.system.settings().p_clearClpbrd()) {
        m_ports.clearClipboard();
    }
    m_ports.unlockFolder();
    m_ports.system.CloseForms();
    if (!m_isDiscarded) {
        writeLog();
    }
    m_ports.stopRunTime();
    if (m_isDiscarded) {
        // Nothing is open any more: the sealed file stands as at the last clean exit.
        writeUser();
    } else {
        m_hasBackup = IsBackupDue(m_backupPath);
        m_ports.system.WriteDB(/*isNew=*/false);
        seal();
    }
    m_ports.removeTray();
}

void SessionEnd::writeLog() {
    SysLog log;
    log.m_dateTime = m_ports.clock.now();
    log.m_statusNo = m_status;
    log.m_lCount = static_cast<std::int32_t>(
        std::min<qint64>(m_runSeconds, std::numeric_limits<std::int32_t>::max()));
    m_ports.logs.Add(log);
}

void SessionEnd::seal() {
    CryptMode mode = CryptMode::Seal;
    if (m_hasBackup) {
        mode = CryptMode::SealAndBackUp;
    } else if (!m_backupPath.isEmpty()) {
        mode = CryptMode::SealAfterFailedBackup;
    }
    const bool isSealed =
        m_ports.database.CryptKVDB(false, static_cast<int>(mode), /*closeDialog=*/true, QString());
    if (!isSealed) {
        // The record keeps the path of the working copy, and the next login heals the session.
        return;
    }
    if (m_hasBackup) {
        copyBackup();
    }
    writeUser();
    if (mode == CryptMode::SealAfterFailedBackup) {
        tellFailedBackup();
    }
    if (!m_ports.database.p_foreignFile().isEmpty()) {
        tell(QStringLiteral("密码数据库"), foreignFileText(m_ports.database.p_foreignFile()));
    }
}

/// The sealing is over before anybody can read it in its window, and a balloon goes with the icon.
void SessionEnd::tellFailedBackup() {
    const QString title = QStringLiteral("退出备份失败");
    const QString text =
        (QFileInfo(m_backupPath).isDir() ? QStringLiteral("指定备份路径不能写入或空间不足：%1")
                                         : QStringLiteral("指定备份路径无效：%1"))
            .arg(m_backupPath);
    tell(title, text);
}

void SessionEnd::tell(const QString& title, const QString& text) {
    if (m_status == kExitNormal) {
        m_ports.prompt.messageBox(text, Prompt::Icon::Exclamation, Prompt::Buttons::Ok, title);
    } else {
        m_ports.showBalloon(title, text);  // nobody may be there to answer a box
    }
}

void SessionEnd::writeUser() {
    User& user = m_ports.system.user();
    user.p_activeFile(QString());
    user.p_activeTime(m_ports.clock.now());
    user.p_sealedMark(m_ports.database.p_sealedMark());
    m_ports.system.WriteUser();
}

void SessionEnd::copyBackup() {
    (void)guardedRun(
        m_ports.prompt, QStringLiteral("frmMain.Form_QueryUnload"),
        [this] {
            // An older backup of the same name stays whole until the new one stands.
            constexpr qint64 kLargestSealedFile = qint64{1} << 31;
            const auto content = readWholeFile(m_ports.database.p_kvdbFile(), kLargestSealedFile);
            if (!content) {
                throw KeeperError(2, QString(), QStringLiteral("退出备份失败"));
            }
            replaceFile(m_backupPath, *content);
        },
        Prompt::Icon::Exclamation);
}

bool SessionEnd::isPeriodOver() const {
    const Settings& settings = m_ports.system.settings();
    const int days = settings.p_backupDays();
    const QDate start = settings.p_backupStart().date();
    return days >= 1 && start.isValid() && start.addDays(days) <= m_ports.clock.today();
}

void SessionEnd::startNextPeriod() {
    Settings& settings = m_ports.system.settings();
    const int days = settings.p_backupDays();
    QDate start = settings.p_backupStart().date();
    // Missed periods do not pile up: the next backup is due behind today, in step with the first.
    while (start.addDays(days) <= m_ports.clock.today()) {
        start = start.addDays(days);
    }
    settings.p_backupStart(start.startOfDay());
}

bool SessionEnd::IsBackupDue(QString& path) {
    path.clear();
    const Settings& settings = m_ports.system.settings();
    const QString folder = m_ports.files.ResolvePath(settings.p_backupPath(), /*withSlash=*/false);
    if (folder.isEmpty() || (settings.p_backupPeriod() && !isPeriodOver())) {
        return false;
    }
    // Asked here, where the period has not been moved on yet: that is sealed before the copying.
    const QFileInfo place(folder);
    const qint64 size = QFileInfo(m_ports.system.p_tmpFile()).size();
    if (!place.isDir() || !place.isWritable() ||
        QStorageInfo(folder).bytesAvailable() < size + kSpareBytes) {
        path = folder;
        return false;
    }
    if (settings.p_backupPeriod()) {
        startNextPeriod();
    }
    path = m_ports.files.GetBackupFilePath(settings.p_backupType(), folder);
    return true;
}

}  // namespace keeper
