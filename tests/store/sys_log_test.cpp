// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "store/sys_log.h"

#include <gtest/gtest.h>

#include <limits>

#include "store/sys_log_sentences.h"

namespace keeper {
namespace {

using namespace Qt::StringLiterals;

QString sentence(std::int32_t status, std::int32_t count, const QString& values) {
    SysLog log;
    log.m_statusNo = status;
    log.m_lCount = count;
    log.m_Description = values;
    return log.p_Status();
}

TEST(SysLogSentence, TellsTheKindOfAddressByTheSignOfTheCount) {
    EXPECT_EQ(sentence(3, 1, u"HOST\t10.0.0.2"_s), u"在【HOST】上正常登录；IP:【10.0.0.2】"_s);
    EXPECT_EQ(sentence(3, -1, u"HOST\t10.0.0.2"_s), u"在【HOST】上正常登录；MAC:【10.0.0.2】"_s);
    EXPECT_EQ(sentence(3, 0, u"HOST\t10.0.0.2"_s), u"在【HOST】上正常登录；10.0.0.2"_s);
    EXPECT_EQ(sentence(4, -3, u"HOST\tAA:BB"_s), u"在【HOST】上尝试登录失败3次；MAC:【AA:BB】"_s);
    EXPECT_EQ(sentence(4, std::numeric_limits<std::int32_t>::min(), u"H\tM"_s),
              u"在【H】上尝试登录失败2147483648次；MAC:【M】"_s);
    EXPECT_EQ(sentence(12, 1, u"H\tA"_s), u"限定密码数据库到【H】上；IP:【A】"_s);
    EXPECT_EQ(sentence(12, -1, u"H\tA"_s), u"限定密码数据库到【H】上；MAC:【A】"_s);
    EXPECT_EQ(sentence(12, -2, u"H\tA"_s), u"解除密码数据库在【H】上的限定；MAC:【A】"_s);
    EXPECT_EQ(sentence(12, 0, u"H\tA"_s), u"在【H】上限定/解除限定密码数据库；A"_s);
}

TEST(SysLogSentence, ChoosesVariantsByTheCount) {
    EXPECT_EQ(sentence(8, -2, {}), u"设置自动保护机制：关闭自动锁定"_s);
    EXPECT_EQ(sentence(8, 3, {}), u"设置自动保护机制：（记录出错）"_s);
    EXPECT_EQ(sentence(13, 3725, {}), u"正常退出，运行时长：01小时02分05秒"_s);
    EXPECT_EQ(sentence(23, 360000, {}), u"查看系统日志，查看时长：100小时00分00秒"_s);
    EXPECT_EQ(sentence(14, -5, {}), u"自动退出，运行时长：00小时00分00秒"_s);
    EXPECT_EQ(sentence(17, -1, {}), u"修改登录密钥提示"_s);
    EXPECT_EQ(sentence(17, 1, {}), u"修改登录密钥"_s);
    EXPECT_EQ(sentence(19, 0, {}), u"设置二级权限，全部无需验证独立密码"_s);
    EXPECT_EQ(sentence(19, 0b1000'0000'0000'0000'0101, {}),
              u"设置二级权限，1,3,20项需要验证独立密码"_s);
    EXPECT_EQ(sentence(20, 0, {}), u"设置元级加密"_s);
    EXPECT_EQ(sentence(34, 0, u"/备份"_s), u"退出备份数据库（每次都执行）；文件备份到【/备份】"_s);
    EXPECT_EQ(sentence(34, 7, {}),
              u"退出备份数据库（每x天执行一次）；文件备份到【（目标路径）】"_s);
    EXPECT_EQ(sentence(37, 0, u"0105\t银行"_s), u"删除/清空目录[0105]【银行】"_s);
    EXPECT_EQ(sentence(41, 1, u"030101\t/a"_s), u"删除文件类条目[030101]及其对应文件【/a】"_s);
    EXPECT_EQ(sentence(41, -1, u"030101\t/a"_s),
              u"删除文件类条目[030101]【/a】，没有删除对应文件"_s);
    EXPECT_EQ(sentence(41, 0, {}), u"删除文件类条目[(某文件条目编号)]【(该文件路径)】"_s);
    EXPECT_EQ(sentence(52, 2, u"010101\t邮箱"_s), u"复制条目[010101]【邮箱】的密码"_s);
}

TEST(SysLogSentence, TakesValuesAsTheyStand) {
    EXPECT_EQ(sentence(29, 1, u"旧\t旧"_s), u"修改关联号码【旧】的号码内容"_s);
    EXPECT_EQ(sentence(29, 0, u"旧"_s), u"修改关联号码【旧】的其它信息"_s);
    EXPECT_EQ(sentence(32, 1, u"旧\t新"_s), u"把关联密码【旧】修改为【新】"_s);
    EXPECT_EQ(sentence(44, 0, u"db\t12\t3"_s),
              u"同步系统日志和密码日志；源数据库：【db】，共插入系统日志12条、条目日志3条"_s);
    // A value that looks like a mark stays a value, and a cut row can still be read.
    EXPECT_EQ(sentence(38, 5, u"{2}\t{#}{1}"_s), u"添加条目[{2}]【{#}{1}】"_s);
    EXPECT_EQ(sentence(36, 0, u"0105\t旧名"_s), u"把目录[0105]【旧名】重命名为【】"_s);
}

TEST(SysLogSentence, ListsTheWholeVocabularyWithoutRows) {
    EXPECT_EQ(sentence(3, 1, {}),
              u"在【(计算机名)】上正常登录；IP(已联网):【(IP地址)】/MAC(未联网):【(MAC地址)】"_s);
    for (std::int32_t status = 1; status <= SysLog::kLastStatus; ++status) {
        const QString text = sentence(status, 0, {});
        EXPECT_FALSE(text.isEmpty()) << status;
        EXPECT_FALSE(text.contains(u"【】"_s) || text.contains(u"[]"_s)) << status;
        EXPECT_FALSE(text.contains(QLatin1Char('{'))) << text.toStdString();
        EXPECT_NE(text, kRetiredSentence);
    }
    EXPECT_EQ(sentence(0, 1, u"a"_s), QString());
    EXPECT_EQ(sentence(SysLog::kLastStatus + 1, 1, u"a"_s), QString());
}

}  // namespace
}  // namespace keeper
