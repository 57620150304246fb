// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/users.h"

#include "crypto/code_page.h"
#include "crypto/cryptor1.h"

namespace keeper {
namespace {

QString listKey() {
    return QStringLiteral("SOFTWARE\\Tarnvalle\\Morvane Keeper\\Users");
}

QString consequenceFor(const QString& whose) {
    return QStringLiteral(
               "现在打开%1密码数据库无法预先核对密钥：密钥错误时，密码数据库及私人文件夹会被"
               "紧急销毁。")
        .arg(whose);
}

}  // namespace

QString UserKeyPrefix() {
    return QStringLiteral("SOFTWARE\\Tarnvalle\\Morvane Keeper\\Records\\");
}

Users::Users(const UserServices& services, EventLoop& eventLoop)
    : m_services(services), m_eventLoop(eventLoop) {}

void Users::InitUsers() {
    m_users.clear();
    m_unreadable.clear();
    m_defaultUserName.clear();
    Regedit& regedit = m_services.regedit;
    if (!regedit.openKey(kMachineRoot, listKey())) {
        return;
    }
    m_defaultUserName = regedit.getString(QString());
    const QStringList listed = regedit.getEnumString();
    regedit.closeKey();
    for (const QString& name : listed) {
        if (!name.isEmpty()) {
            const auto user = makeUser();
            if (user->ReadRegistry(name)) {
                m_users.insert_or_assign(name, user);
            } else if (regedit.openKey(kMachineRoot, UserKeyPrefix() + GetHashUserTitle(name))) {
                m_unreadable << name;
                regedit.closeKey();
            }
            m_eventLoop.turn();
        }
    }
}

QStringList Users::faults() const {
    QStringList told;
    if (const QString fault = m_services.regedit.fault(); !fault.isEmpty()) {
        told << QStringLiteral("%1\r\n因此看不到本机的用户。%2请先修复或恢复这个文件。")
                    .arg(fault, consequenceFor(QString()));
    }
    if (const QStringList files = m_services.regedit.damagedFiles(); !files.isEmpty()) {
        told << QStringLiteral(
                    "用户注册文件曾经损坏，当时的内容另存为：\r\n%1\r\n只记录在其中的用户，"
                    "本机已看不到他们的密钥核对、登录限制和异常退出标记。%2\r\n"
                    "请修复它并以原名“registry”放回；不再需要时，把它移到别处，即不再提示。")
                    .arg(files.join(QStringLiteral("\r\n")),
                         consequenceFor(QStringLiteral("他们的")));
    }
    for (const QString& name : m_unreadable) {
        told << QStringLiteral(
                    "用户【%1】的注册记录无法读取，可能已损坏或由更高版本的程序写入。%2\r\n"
                    "登录时会写入新的记录，此前整个用户注册文件会先另存为“registry.record-”"
                    "加当时的时间。")
                    .arg(name, consequenceFor(QStringLiteral("其")));
    }
    return told;
}

bool Users::DeleteUser(const QString& name) {
    Regedit& regedit = m_services.regedit;
    const bool forgotten = regedit.atomically([&] {
        if (!regedit.deleteKey(kMachineRoot, UserKeyPrefix() + GetHashUserTitle(name)) ||
            !regedit.createKey(kMachineRoot, listKey())) {
            return false;
        }
        const bool isDefault = regedit.getString(QString()) == name;
        return (!isDefault || regedit.setString(QString(), QString())) && regedit.deleteValue(name);
    });
    regedit.closeKey();
    try {
        m_services.autostart.remove(GetHashUserTitle(name));
        return forgotten;
    } catch (const std::exception&) {
        return false;
    }
}

QString Users::GetHashUserTitle(const QString& name) {
    // A digest sees ANSI bytes: names that differ only in what the code page lacks must not share
    // one record.
    QString exact;
    for (const QChar unit : name) {
        exact += ansiText(ansiBytes(QStringView(&unit, 1))) == unit
                     ? QString(unit)
                     : QStringLiteral("\\u%1").arg(unit.unicode(), 4, 16, QLatin1Char('0'));
    }
    return Cryptor1::hashString(QString(QStringLiteral("QEV#") + exact));
}

bool Users::AddUserAsDefault(const QString& name) {
    if (name.isEmpty()) {
        return false;
    }
    Regedit& regedit = m_services.regedit;
    const bool added = regedit.atomically([&] {
        return regedit.createKey(kMachineRoot, listKey()) && regedit.setString(QString(), name) &&
               regedit.setString(name, QString());
    });
    regedit.closeKey();
    if (added) {
        m_defaultUserName = name;
    }
    return added;
}

bool Users::Exists(const QString& name) const {
    return m_users.contains(name);
}

std::shared_ptr<User> Users::GetUser(const QString& name) const {
    const auto found = m_users.find(name);
    return found == m_users.end() ? nullptr : found->second;
}

void Users::AddNewUser(const std::shared_ptr<User>& user) {
    m_users.insert_or_assign(user->p_userName(), user);
}

void Users::RemoveUser(const std::shared_ptr<User>& user) {
    const QString name = user->p_userName();
    if (m_defaultUserName == name) {
        m_defaultUserName.clear();
    }
    m_users.erase(name);
}

QStringList Users::names() const {
    QStringList all;
    for (const auto& [name, user] : m_users) {
        all.append(name);
    }
    return all;
}

std::shared_ptr<User> Users::makeUser() const {
    return std::make_shared<User>(m_services);
}

}  // namespace keeper
