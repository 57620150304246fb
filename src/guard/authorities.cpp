// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "guard/authorities.h"

#include "app/system.h"
#include "platform/clock.h"
#include "platform/database.h"
#include "platform/prompt.h"
#include "store/failure.h"
#include "store/sealed_database.h"
#include "store/sys_logs.h"

namespace keeper {
namespace {

constexpr int kAuthoritiesSet = 19;

constexpr std::array<const char16_t*, Authorities::kNamed> kCaptions{
    u"激活废弃条目", u"恢复原始尺寸", u"查看系统日志", u"清空系统日志",
    u"管理关联号码", u"管理关联密码", u"解密有密文件", u"删除有密文件",
    u"查看密码日志", u"删除密码日志", u"分机登录管理", u"本机登录限定",
    u"导出条目信息", u"导出关联信息", u"导出系统日志", u"分派数据库"};

}  // namespace

QString Authorities::caption(int number) {
    return number > kNamed ? QString()
                           : QString::fromUtf16(kCaptions.at(static_cast<std::size_t>(number - 1)));
}

QString Authorities::toolTip(int number) {
    switch (number) {
        case 2:
            return QStringLiteral("主界面视图切换回原始尺寸");
        case 10:
            return QStringLiteral("包括清空所有条目的密码日志和删除某条条目的密码日志");
        case 12:
            return QStringLiteral("包括限定本机登录和解除本机限定");
        case 14:
            return QStringLiteral("包括关联号码和关联密码");
        default:
            return {};
    }
}

void Authorities::load() {
    for (int number = 1; number <= kCount; ++number) {
        check(number, m_ports.system.GetAuthority(number - 1) != 0);
    }
}

void Authorities::activate() {
    if (m_ports.database.IsIdpPwdNull()) {
        m_ports.prompt.messageBox(
            QStringLiteral("请注意，您当前的独立密码为空！二级权限仅当独立密码非空时才有效。"),
            Prompt::Icon::Exclamation);
    }
}

bool Authorities::isChecked(int number) const {
    return m_isChecked.at(static_cast<std::size_t>(number - 1));
}

void Authorities::check(int number, bool isOn) {
    m_isChecked.at(static_cast<std::size_t>(number - 1)) = isOn;
}

bool Authorities::cmdOK() {
    Settings& settings = m_ports.system.settings();
    const std::int32_t before = settings.p_Authorities();
    SysLog log;
    for (int number = 1; number <= kCount; ++number) {
        settings.SetAuthority(isChecked(number) ? 1 : 0, number - 1);
        log.m_lCount |= isChecked(number) ? 1 << (number - 1) : 0;
    }
    log.m_dateTime = m_ports.clock.now();
    log.m_statusNo = kAuthoritiesSet;
    if (!write(log)) {
        settings.p_Authorities(before);
        return false;
    }
    return true;
}

bool Authorities::write(const SysLog& log) {
    return guarded(m_ports.prompt, QStringLiteral("dlgAuthority.cmdOK_Click"), false, [&] {
        // One with its record: what the log does not tell has not happened.
        Transaction transaction(m_ports.connection);
        if (!m_ports.system.WriteDB(/*isNew=*/false) || !m_ports.logs.Add(log)) {
            return false;
        }
        transaction.commit();
        return true;
    });
}

}  // namespace keeper
