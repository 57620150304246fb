// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/program_info.h"

namespace keeper {

QString programTitle() {
    return QStringLiteral("Morvane Keeper");
}

QString programVersion() {
    return QStringLiteral(KEEPER_VERSION);
}

QString aboutText() {
    return QStringLiteral(
               "%1 %2\r\n\r\n属于您一个人的密码管理器：数据只保存在本机的加密数据库中。\r\n"
               "自由软件，许可协议：GPL-3.0-or-later")
        .arg(programTitle(), programVersion());
}

}  // namespace keeper
