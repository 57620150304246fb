// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

// The users in the list of the login form: opened from a folder, moved, removed.

#include <QFileInfo>
#include <utility>

#include "app/file_operator.h"
#include "app/private_folder.h"
#include "app/regedit.h"
#include "app/user.h"
#include "app/users.h"
#include "guard/login.h"
#include "platform/durable_file.h"
#include "platform/prompt.h"
#include "store/failure.h"
#include "store/sealed_file.h"

namespace keeper {

void Login::forgetKeyOf(User& user) {
    user.p_autoLogin(false);
    user.p_fingerprint(false);
    user.p_remLgnKey(false);
    user.p_hashLgnKey(QString());
}

bool Login::knowsKeyOfFile() {
    const QString path = m_user->p_kvdbFile();
    if (QFileInfo(m_user->p_activeFile()).isFile() || m_user->p_isKeyChangePending() ||
        isSameKeyByMark(m_user->p_sealedMark(), sealedMark(path))) {
        return true;
    }
    // A key that was right for the former file would destroy this one, and its own be counted as a
    // failed attempt.
    forgetKeyOf(*m_user);
    m_user->p_sealedMark(QString());
    InitUserInterface(1);
    m_ports.prompt.messageBox(QStringLiteral("密码数据库文件已不是本机上次见到的那个，它的登录密钥"
                                             "不同（例如换回了修改登录密钥之前的备份，"
                                             "或在另一台电脑上修改过登录密钥）。\r\n请输入这个文件"
                                             "自己的登录密钥；登录前请确认已有备份。"),
                              Prompt::Icon::Exclamation);
    return false;
}

bool Login::isStillGood() {
    if (followRecord()) {
        return true;
    }
    m_ports.prompt.messageBox(
        QStringLiteral("用户【%1】的登录信息已在别处更改，窗口中显示的是更改后的。请核对后再试。")
            .arg(m_user->p_userName()),
        Prompt::Icon::Exclamation);
    return false;
}

bool Login::followRecord() {
    const QString folder = m_user->p_privateFolder();
    if (!takeOver(*m_user)) {
        return true;
    }
    if (m_state.keyText.isEmpty() && m_user->p_privateFolder() == folder) {
        m_state.keyToolTip = m_user->p_lgnKeyTip();
        showPath();
        return true;
    }
    // What stands for a key may stand for one that was changed.
    InitUserInterface(1);
    return false;
}

bool Login::takeOver(User& user) const {
    const QString name = user.p_userName();
    const auto recorded = m_ports.users.makeUser();
    // A record that is gone says nothing new: whoever changes the key writes one.
    if (user.isAsRecorded() || !recorded->ReadRegistry(name)) {
        return false;
    }
    const QString folder = user.p_privateFolder();
    const bool isForgotten = user.p_hashLgnKey().isEmpty();
    if (!user.ReadRegistry(name) || privatefolder::isSamePlace(folder, user.p_privateFolder()) ||
        !QFileInfo::exists(privatefolder::databaseOf(folder)) ||
        QFileInfo::exists(user.p_activeFile())) {
        return true;
    }
    const bool wasMoved = !QFileInfo::exists(user.p_kvdbFile());
    user.p_privateFolder(folder);
    if (isForgotten || !wasMoved) {
        forgetKeyOf(user);
    }
    return true;
}

bool Login::takeStartFolder() {
    if (m_startFolder.isEmpty()) {
        return true;
    }
    const QString folder = std::exchange(m_startFolder, QString());
    const QString name = FileOperator::GetUserNameByPath(folder);
    if (name.isEmpty() || !QFileInfo(folder).isDir()) {
        m_ports.prompt.messageBox(QStringLiteral("用户【%1】不存在。").arg(name),
                                  Prompt::Icon::Exclamation);
        return false;
    }
    const int user = userAt(name, folder);
    selectUser(user);
    return user >= 0;
}

int Login::userAt(const QString& name, const QString& folder) {
    std::shared_ptr<User> user = m_ports.users.GetUser(name);
    if (user == nullptr) {
        // Known for this run only: its record is written once a login has succeeded.
        user = m_ports.users.makeUser();
        user->p_privateFolder(folder);
        m_ports.users.AddNewUser(user);
    } else {
        takeOver(*user);
        if (!privatefolder::isSamePlace(folder, user->p_privateFolder()) &&
            !moveTo(*user, folder)) {
            return -1;
        }
    }
    if (!m_state.userNames.contains(name)) {
        m_state.userNames << name;
    }
    return static_cast<int>(m_state.userNames.indexOf(name));
}

bool Login::moveTo(User& user, const QString& folder) {
    const auto recorded = m_ports.users.makeUser();
    if (recorded->ReadRegistry(user.p_userName()) &&
        privatefolder::isSamePlace(folder, recorded->p_privateFolder())) {
        // Back from another database of the name: of this one the machine knows the key.
        return user.ReadRegistry(user.p_userName());
    }
    const bool wasMoved = !QFileInfo::exists(user.p_kvdbFile());
    if (QFileInfo::exists(user.p_activeFile())) {
        const QString place =
            user.p_hideDBPath() ? QString() : QStringLiteral("\r\n") + user.p_privateFolder();
        if (!wasMoved) {
            m_ports.prompt.messageBox(
                QStringLiteral("用户【%1】上次异常退出，其工作副本属于另一个私人文件夹：%2\r\n"
                               "请先从那里登录一次，再打开这个密码数据库。")
                    .arg(user.p_userName(), place),
                Prompt::Icon::Exclamation);
            return false;
        }
        // The copy would be sealed over what lies here.
        if (m_ports.prompt.messageBox(
                QStringLiteral("用户【%1】上次异常退出，其私人文件夹已不在原处：%2\r\n"
                               "它是移到这里来了吗？选“是”则登录时恢复上次的改动，并保存到这里。")
                    .arg(user.p_userName(), place),
                Prompt::Icon::Exclamation, Prompt::Buttons::YesNo) != Prompt::Answer::Yes) {
            return false;
        }
    }
    user.p_privateFolder(folder);
    if (!wasMoved) {
        // Another file, perhaps under another key: this machine knows nothing of it.
        forgetKeyOf(user);
    }
    return true;
}

void Login::cmdOpen() {
    const QString filter =
        QStringLiteral("密码数据库(*%1)").arg(privatefolder::databaseExtension());
    const QString path =
        m_ports.files.FileDialog(false, QString(), m_ports.registry.p_defPrivateFolders(), filter);
    if (!path.isEmpty()) {
        lookAt(path);
    }
}

void Login::lookAt(const QString& path) {
    if (!privatefolder::isInPlace(path)) {
        m_ports.prompt.messageBox(privatefolder::misplacedText(), Prompt::Icon::Exclamation);
        return;
    }
    const QFileInfo file(path);
    selectUser(userAt(file.completeBaseName(), file.absolutePath()));
}

void Login::cmdRemove() {
    if (m_user == nullptr) {
        return;
    }
    (void)guardedRun(
        m_ports.prompt, QStringLiteral("frmLogin.cmdRemove_Click"),
        [&] {
            if (!isStillGood()) {
                return;
            }
            const QString folder = m_user->p_privateFolder();
            bool deletesFolder = false;
            m_ports.beep();
            if (m_user->p_hideDBPath() || !QFileInfo(folder).isDir()) {
                if (m_ports.prompt.messageBox(QStringLiteral("您真的要移除此用户吗？"),
                                              Prompt::Icon::Question,
                                              Prompt::Buttons::YesNo) != Prompt::Answer::Yes) {
                    return;
                }
            } else {
                const auto answer = m_ports.prompt.messageBox(
                    QStringLiteral(
                        "即将移除此用户。\r\n检测到私人文件夹存在，您需要连带删除它吗？"),
                    Prompt::Icon::Question, Prompt::Buttons::YesNoCancel);
                if (answer == Prompt::Answer::Cancel) {
                    return;
                }
                deletesFolder = answer == Prompt::Answer::Yes;
            }
            const QString copy = m_user->p_activeFile();
            const bool hasCopy = QFileInfo::exists(copy);
            // Nothing would lead to it any more.
            if (hasCopy &&
                m_ports.prompt.messageBox(
                    QStringLiteral("此用户上次异常退出，其间的改动还在工作副本中：\r\n%1\r\n"
                                   "再登录一次即可恢复；移除用户后不能再恢复。仍要移除吗？")
                        .arg(copy),
                    Prompt::Icon::Exclamation, Prompt::Buttons::YesNo) != Prompt::Answer::Yes) {
                return;
            }
            if (deletesFolder) {
                privatefolder::destroy(folder);
                // Behind the folder: when that stays, the user stays with what can be recovered.
                if (hasCopy) {
                    removeFile(copy);
                    removeFile(copy + QStringLiteral("-journal"));
                }
            }
            DeleteUser();
        },
        Prompt::Icon::Exclamation);
}

void Login::DeleteUser() {
    (void)guardedRun(
        m_ports.prompt, QStringLiteral("frmLogin.DeleteUser"),
        [&] {
            const int index = m_state.currentUser;
            const QString name = m_state.userNames.at(index);
            if (!m_ports.users.DeleteUser(name)) {
                m_ports.prompt.messageBox(
                    QStringLiteral("用户【%1】的记录未能从本机删除，下次启动时可能还会出现。\r\n"
                                   "请检查配置文件夹是否可写、磁盘是否已满，届时再移除一次。")
                        .arg(name),
                    Prompt::Icon::Exclamation);
            }
            m_ports.users.RemoveUser(std::exchange(m_user, nullptr));
            m_state.userNames.removeAt(index);
            m_state.currentUser = -1;
            if (m_state.userNames.isEmpty()) {
                InitUserInterface(0);
            } else {
                selectUser(qMin(index, static_cast<int>(m_state.userNames.size()) - 1));
            }
        },
        Prompt::Icon::Exclamation);
}

}  // namespace keeper
