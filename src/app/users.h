// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <QStringList>
#include <map>
#include <memory>

#include "app/user.h"
#include "platform/event_loop.h"

namespace keeper {

/// Path in front of GetHashUserTitle() that makes the key of a user's record.
[[nodiscard]] QString UserKeyPrefix();

/// The users who have logged in on this machine.
class Users {
  public:
    Users(const UserServices& services, EventLoop& eventLoop);

    /// Reads the list and each record in it. A user whose record cannot be read is left out here
    /// and stays in the list on disk.
    void InitUsers();
    /// Why users may be missing, for a person: a registry that cannot be read now, one that was
    /// damaged once and still lies aside, and records that InitUsers() could not read. Each a text
    /// of its own.
    [[nodiscard]] QStringList faults() const;
    /// Forgets the user on disk: record, list and start with the session. False when something
    /// could not be deleted.
    bool DeleteUser(const QString& name);
    /// Name of the key of the user's record, which does not show the user's name.
    [[nodiscard]] static QString GetHashUserTitle(const QString& name);
    /// Puts the user into the list on disk and makes it the default one.
    bool AddUserAsDefault(const QString& name);
    [[nodiscard]] bool Exists(const QString& name) const;
    /// Null for an unknown name.
    [[nodiscard]] std::shared_ptr<User> GetUser(const QString& name) const;
    /// In memory only; takes the place of an earlier user of the name.
    void AddNewUser(const std::shared_ptr<User>& user);
    /// In memory only.
    void RemoveUser(const std::shared_ptr<User>& user);
    /// The user last logged in; empty when there is none.
    [[nodiscard]] const QString& p_defaultUserName() const { return m_defaultUserName; }

    /// Names in ascending order.
    [[nodiscard]] QStringList names() const;
    [[nodiscard]] std::shared_ptr<User> makeUser() const;

  private:
    UserServices m_services;
    EventLoop& m_eventLoop;
    std::map<QString, std::shared_ptr<User>> m_users;
    QStringList m_unreadable;  ///< names of listed users
    QString m_defaultUserName;
};

}  // namespace keeper
