// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "workspace/workspace.h"

#include "crypto/secure_wipe.h"

namespace keeper {

ShownEntry& ShownEntry::operator=(ShownEntry&& other) noexcept {
    secureWipe(customNum);
    secureWipe(password);
    common = std::move(other.common);
    location = std::move(other.location);
    numName = std::move(other.numName);
    customNum = std::move(other.customNum);
    password = std::move(other.password);
    return *this;
}

ShownEntry::~ShownEntry() {
    secureWipe(customNum);
    secureWipe(password);
}

void Workspace::log(std::int32_t status, const QStringList& values, std::int32_t count) const {
    SysLog row;
    row.m_dateTime = services.clock.now();
    row.m_statusNo = status;
    row.m_lCount = count;
    row.m_Description = values.join(QLatin1Char('\t'));
    // A log that fails shows its own message; what was done stands.
    services.sysLogs.Add(row);
}

namespace workspacetext {

QString browseOnly() {
    return QStringLiteral("请在浏览查找状态下执行！");
}
QString discarded() {
    return QStringLiteral("本条目已废弃！");
}
QString fileInCipher() {
    return QStringLiteral("本条目的文件正在执行加密解密运算，请稍后再试！");
}

}  // namespace workspacetext
}  // namespace keeper
