// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/private_folder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <system_error>

#include "platform/durable_file.h"
#include "platform/file_tree.h"
#include "store/failure.h"

namespace keeper::privatefolder {
namespace {

QString lastStep(const QString& path) {
    qsizetype end = path.size();
    while (end > 0 && path.at(end - 1) == u'/') {
        --end;
    }
    return path.left(end).section(u'/', -1);
}

/// A name of the icon theme loses its last part until the theme has it, so "folder" is the least.
void decorate(const QString& folder, const QString& icon, const QString& tip) {
    const QString path = folder + QStringLiteral("/.directory");
    if (QFile::exists(path)) {
        return;
    }
    try {
        replaceFile(path, QStringLiteral("[Desktop Entry]\nType=Directory\nIcon=%1\nComment=%2\n")
                              .arg(icon, tip)
                              .toUtf8());
    } catch (const std::system_error&) {
        // The folder serves without its icon; the next repair tries again.
    }
}

}  // namespace

QString prefix() {
    return QStringLiteral("MORV - ");
}

QString userNameOf(const QString& path) {
    const QString name = lastStep(path);
    return name.startsWith(prefix()) ? name.mid(prefix().size()) : QString();
}

bool isInPlace(const QString& databaseFile) {
    const QFileInfo file(databaseFile);
    return lastStep(file.absolutePath()) == prefix() + file.completeBaseName();
}

QString misplacedText() {
    return QStringLiteral("密码数据库未有正确处于前缀名为“%1”的私人文件夹中，不能登录！")
        .arg(prefix());
}

QString databaseExtension() {
    return QStringLiteral(".kvdb");
}

QString databaseOf(const QString& folder) {
    return folder + u'/' + userNameOf(folder) + databaseExtension();
}

QString backupsOf(const QString& folder) {
    return folder + QStringLiteral("/我的备份");
}

QString backgroundsOf(const QString& folder) {
    return folder + QStringLiteral("/背景图片");
}

QString encryptedOf(const QString& folder) {
    return folder + QStringLiteral("/加密文件");
}

void repair(const QString& folder) {
    ensurePrivateFolder(folder);
    decorate(folder, QStringLiteral("folder-locked"), QStringLiteral("私人文件夹"));
    const auto repairPart = [](const QString& part, const QString& icon, const QString& tip) {
        ensurePrivateFolder(part);
        decorate(part, icon, tip);
    };
    repairPart(backupsOf(folder), QStringLiteral("folder-backup"),
               QStringLiteral("KVDB备份文件夹"));
    repairPart(backgroundsOf(folder), QStringLiteral("folder-pictures"),
               QStringLiteral("主界面背景图片"));
    repairPart(encryptedOf(folder), QStringLiteral("folder-encrypted"),
               QStringLiteral("加密的用户文件"));
}

bool isSamePlace(const QString& one, const QString& other) {
    if (QDir::cleanPath(one) == QDir::cleanPath(other)) {
        return true;
    }
    // Empty for each of two places that are away, such as two drives.
    const QString reached = QFileInfo(one).canonicalFilePath();
    return !reached.isEmpty() && reached == QFileInfo(other).canonicalFilePath();
}

void destroy(const QString& folder) {
    // A damaged record must never lead the deletion to a home folder.
    if (!folder.startsWith(u'/') || userNameOf(folder).isEmpty()) {
        throw KeeperError(76, QStringLiteral("ClearUser"),
                          QStringLiteral("不是私人文件夹：%1").arg(folder));
    }
    const QStringList left = removeTree(folder);
    if (!left.isEmpty()) {
        throw KeeperError(75, QStringLiteral("ClearUser"),
                          QStringLiteral("以下内容未能删除：\r\n") +
                              left.mid(0, 10).join(QStringLiteral("\r\n")));
    }
}

}  // namespace keeper::privatefolder
