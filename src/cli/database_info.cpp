// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <QDateTime>
#include <QFileInfo>

#include "app/private_folder.h"
#include "cli/console.h"
#include "cli/database_commands.h"
#include "cli/known_users.h"
#include "platform/file_hold.h"
#include "store/sealed_file.h"
#include "store/time_text.h"

namespace keeper::cli {
namespace {

QString placeOf(const QFileInfo& file) {
    const QString folder = privatefolder::prefix() + file.completeBaseName();
    return QFileInfo(file.absolutePath()).fileName() == folder
               ? QStringLiteral("在它的私人文件夹中")
               : QStringLiteral("不在名为“%1”的私人文件夹中，不能登录").arg(folder);
}

/// What this machine's own record tells of the user whose file this is.
QStringList recordOf(const QString& path) {
    KnownUsers known;
    for (const QString& name : known.users().names()) {
        const auto user = known.users().GetUser(name);
        if (!privatefolder::isSamePlace(user->p_kvdbFile(), path)) {
            continue;
        }
        QStringList lines{
            QStringLiteral("登录尝试机会：%1").arg(user->p_remainedTimes()),
            QStringLiteral("最近活动：%1").arg(Time::ShowMoment(user->p_activeTime()))};
        if (user->p_attackTime().isValid()) {
            lines << QStringLiteral("禁止登录：自 %1 起24小时")
                         .arg(Time::ShowMoment(user->p_attackTime()));
        }
        if (QFileInfo(user->p_activeFile()).isFile()) {
            lines << QStringLiteral("工作副本：有，会话正在进行，或上次异常退出、下次登录时恢复");
        }
        return lines;
    }
    return {QStringLiteral("本机没有这个密码数据库的登录记录")};
}

}  // namespace

int runInfo(const Arguments& arguments) {
    const QFileInfo file(arguments.paths.first());
    if (!file.isFile()) {
        throw Exit(kFailed, QStringLiteral("%1：没有这个文件").arg(arguments.paths.first()));
    }
    const auto pages = pagesOfSealedFile(file.absoluteFilePath());
    QStringList lines{QStringLiteral("路径：") + printable(file.absoluteFilePath()),
                      QStringLiteral("用户名：") + printable(file.completeBaseName()),
                      QStringLiteral("位置：") + printable(placeOf(file)),
                      QStringLiteral("大小：%1字节").arg(file.size()),
                      QStringLiteral("修改时间：") + Time::ShowMoment(file.lastModified()),
                      pages ? QStringLiteral("数据页：%1").arg(*pages)
                            : QStringLiteral("数据页：不完整，文件已损坏，或者不是密码数据库"),
                      isFileHeld(file.absoluteFilePath()) ? QStringLiteral("占用：有会话正在使用")
                                                          : QStringLiteral("占用：无")};
    lines += recordOf(file.absoluteFilePath());
    printLines(lines);
    return pages ? kDone : kFailed;
}

}  // namespace keeper::cli
