// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "store/sys_log_sentences.h"

namespace keeper {

namespace {

using enum LogCondition;

// One row a line, so that the vocabulary can be read as a table.
// clang-format off
constexpr LogSentence kSentences[] = {
    {1, Always, 0, u"分机有效期结束，在【{1}】上登录失败；{addr}"},
    {2, Always, 0, u"【{1}】上的日期时间被非法修改，管理器拒绝登录；{addr}"},
    {3, Always, 0, u"在【{1}】上正常登录；{addr}"},
    {4, Always, 0, u"在【{1}】上尝试登录失败{abs}次；{addr}"},
    {5, Always, 0, u"在【{1}】上尝试登录{abs}次均失败，密码数据库在24小时内被禁止登录；{addr}"},
    {6, Always, 0, u"程序非正常退出，管理器成功恢复后在【{1}】上重新登录；{addr}"},
    {7, Always, 0, u"独立密码的{#}次尝试机会全部用完。"},
    {8, CountIs, -2, u"设置自动保护机制：关闭自动锁定"},
    {8, CountIs, -1, u"设置自动保护机制：开启自动锁定"},
    {8, CountIs, 0, u"设置自动保护机制：关闭自动退出"},
    {8, CountIs, 1, u"设置自动保护机制：定时自动关闭"},
    {8, CountIs, 2, u"设置自动保护机制：定时关机退出"},
    {8, Always, 0, u"设置自动保护机制：（记录出错）"},
    {9, Always, 0, u"手动锁定管理器，运行时长：{dur}"},
    {10, Always, 0, u"自动锁定管理器，运行时长：{dur}"},
    {11, Always, 0, u"解除锁定管理器，运行时长：{dur}"},
    {12, CountIs, 0, u"在【{1}】上限定/解除限定密码数据库；{addr}"},
    {12, CountOdd, 0, u"限定密码数据库到【{1}】上；{addr}"},
    {12, Always, 0, u"解除密码数据库在【{1}】上的限定；{addr}"},
    {13, Always, 0, u"正常退出，运行时长：{dur}"},
    {14, Always, 0, u"自动退出，运行时长：{dur}"},
    {15, Always, 0, u"关机退出，运行时长：{dur}"},
    {16, Always, 0, u"把用户名【{1}】修改为【{2}】"},
    {17, CountIs, -1, u"修改登录密钥提示"},
    {17, Always, 0, u"修改登录密钥"},
    {18, CountIs, -1, u"修改独立密码提示"},
    {18, Always, 0, u"修改独立密码"},
    {19, CountIs, 0, u"设置二级权限，全部无需验证独立密码"},
    {19, Always, 0, u"设置二级权限，{bits}项需要验证独立密码"},
    {20, CountIs, -1, u"开启元级加密"},
    {20, CountIs, 1, u"关闭元级加密"},
    {20, Always, 0, u"设置元级加密"},
    {21, Always, 0, u"设置安全问题{#}个"},
    {22, Always, 0, u"验证{#}个安全问题通过"},
    {23, Always, 0, u"查看系统日志，查看时长：{dur}"},
    {24, Always, 0, u"清空系统日志，共删除{#}条"},
    {25, Always, 0, u"查看条目[{1}]【{2}】的密码日志"},
    {26, Always, 0, u"删除条目[{1}]【{2}】的密码日志，共删除{#}条"},
    {27, Always, 0, u"清空所有条目的密码日志，共清空{#}条"},
    {28, Always, 0, u"添加关联号码【{1}】"},
    {29, ValuesDiffer, 0, u"把关联号码【{1}】修改为【{2}】"},
    {29, CountIs, 1, u"修改关联号码【{1}】的号码内容"},
    {29, Always, 0, u"修改关联号码【{1}】的其它信息"},
    {30, Always, 0, u"删除关联号码[{1}]【{2}】，原相关条目重新绑定到[{3}]"},
    {31, Always, 0, u"添加关联密码【{1}】"},
    {32, ValuesDiffer, 0, u"把关联密码【{1}】修改为【{2}】"},
    {32, CountIs, 1, u"修改关联密码【{1}】的密码内容"},
    {32, Always, 0, u"修改关联密码【{1}】的其它信息"},
    {33, Always, 0, u"删除关联密码[{1}]及其相关条目"},
    {34, ValuesEmpty, 0, u"退出备份数据库（每x天执行一次）；文件备份到【（目标路径）】"},
    {34, CountIs, 0, u"退出备份数据库（每次都执行）；文件备份到【{1}】"},
    {34, Always, 0, u"退出备份数据库（每{#}天执行一次）；文件备份到【{1}】"},
    {35, Always, 0, u"创建目录[{1}]【{2}】"},
    {36, Always, 0, u"把目录[{1}]【{2}】重命名为【{3}】"},
    {37, CountIs, 1, u"删除目录[{1}]【{2}】"},
    {37, CountIs, -1, u"清空目录[{1}]【{2}】"},
    {37, Always, 0, u"删除/清空目录[{1}]【{2}】"},
    {38, Always, 0, u"添加条目[{1}]【{2}】"},
    {39, Always, 0, u"修改条目[{1}]【{2}】"},
    {40, Always, 0, u"删除网络类条目[{1}]【{2}】"},
    {41, CountIs, 0, u"删除文件类条目[(某文件条目编号)]【(该文件路径)】"},
    {41, CountAbove, 0, u"删除文件类条目[{1}]及其对应文件【{2}】"},
    {41, Always, 0, u"删除文件类条目[{1}]【{2}】，没有删除对应文件"},
    {42, CountAbove, 0, u"把条目[{1}]【{2}】的文件解密为【{3}】"},
    {42, CountBelow, 0, u"把条目[{1}]【{2}】的文件加密为【{3}】"},
    {42, Always, 0, u"把条目[{1}]【{2}】的文件加密/解密为【{3}】"},
    {43, Always, 0, u"分派数据库到【{1}】，存活期为{#}天"},
    {44, Always, 0, u"同步系统日志和密码日志；源数据库：【{1}】，共插入系统日志{2}条、条目日志{3}条"},
    {45, Always, 0, u"导出条目{#}条"},
    {46, Always, 0, u"导出关联号码{#}条"},
    {47, Always, 0, u"导出关联密码{#}条"},
    {48, Always, 0, u"导出系统日志{#}条"},
    {49, Always, 0, u"打开条目[{1}]【{2}】"},
    {50, CountIs, 1, u"废弃条目[{1}]【{2}】"},
    {50, CountIs, 2, u"激活条目[{1}]【{2}】"},
    {50, Always, 0, u"废弃/激活条目[{1}]【{2}】"},
    {51, CountIs, 1, u"使用条目[{1}]【{2}】的号码"},
    {51, CountIs, 2, u"复制条目[{1}]【{2}】的号码"},
    {51, CountIs, 3, u"显示条目[{1}]【{2}】的号码"},
    {51, Always, 0, u"使用/复制/显示条目[{1}]【{2}】的号码"},
    {52, CountIs, 1, u"使用条目[{1}]【{2}】的密码"},
    {52, CountIs, 2, u"复制条目[{1}]【{2}】的密码"},
    {52, CountIs, 3, u"显示条目[{1}]【{2}】的密码"},
    {52, Always, 0, u"使用/复制/显示条目[{1}]【{2}】的密码"},
    {53, Always, 0, u"在分机【{1}】上交换主副机器；{addr}"},
    {54, ValuesEmpty, 0, u"未定义状态"},
    {54, Always, 0, u"{1}"},
};

constexpr QStringView kMachine =
    u"(计算机名)\tIP(已联网):【(IP地址)】/MAC(未联网):【(MAC地址)】";
constexpr QStringView kEntry = u"(条目编号)\t(条目标题)";

constexpr LogPlaceholders kPlaceholders[] = {
    {1, kMachine},
    {2, kMachine},
    {3, kMachine},
    {4, kMachine},
    {5, kMachine},
    {6, kMachine},
    {12, kMachine},
    {16, u"(旧用户名)\t(新用户名)"},
    {25, kEntry},
    {26, kEntry},
    {28, u"(号码标题)"},
    {29, u"(旧号码标题)\t(新号码标题)"},
    {30, u"(旧号码标题)\t(旧号码内容)\t(新号码标题)"},
    {31, u"(密码标题)"},
    {32, u"(旧密码标题)\t(新密码标题)"},
    {33, u"(密码标题)\t(密码内容)"},
    {35, u"(目录编号)\t(目录名称)"},
    {36, u"(目录编号)\t(旧目录名称)\t(新目录名称)"},
    {37, u"(目录编号)\t(目录名称)"},
    {38, kEntry},
    {39, kEntry},
    {40, kEntry},
    {41, u"(某文件条目编号)\t(该文件路径)"},
    {42, u"(条目编号)\t(条目标题)\t(文件路径)"},
    {43, u"(文件路径)"},
    {44, u"(源数据库文件标题)\t0\t0"},
    {49, kEntry},
    {50, kEntry},
    {51, kEntry},
    {52, kEntry},
    {53, kMachine},
};
// clang-format on

}  // namespace

std::span<const LogSentence> logSentences() {
    return kSentences;
}

std::span<const LogPlaceholders> logPlaceholders() {
    return kPlaceholders;
}

}  // namespace keeper
