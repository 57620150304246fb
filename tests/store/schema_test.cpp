// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "store/schema.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "platform/database.h"

namespace keeper {
namespace {

class SchemaTest : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(m_folder.isValid());
        m_database.create(m_folder.filePath(QStringLiteral("a.db")), QStringLiteral("key"));
        createSchema(m_database, QDateTime(QDate(2026, 5, 20), QTime(12, 0)));
        m_database.execute(
            "INSERT INTO tb_Directory VALUES('0105','01','a'),('010501','0105','b'),"
            "('01050107','010501','c');"
            "INSERT INTO tb_AssPwd VALUES('邮箱','x',1,NULL,1);"
            "INSERT INTO tb_AssNum VALUES('手机','x','','',1);"
            "INSERT INTO tb_Entry VALUES('01050107','03','t','邮箱','','',0,1,0,NULL,NULL,NULL,0);"
            "INSERT INTO tb_Net VALUES('01050107','03','手机','','');"
            "INSERT INTO tb_EntLog VALUES('01050107','03','2026-05-20T12:00:00',1,NULL,NULL);");
    }

    bool accepts(const char* sql) {
        Transaction transaction(m_database);
        try {
            m_database.execute(sql);
            transaction.commit();
            return true;
        } catch (const DatabaseError&) {
            return false;
        }
    }
    QString answer(const QString& sql) {
        Statement statement(m_database, sql.toUtf8().constData());
        return statement.step() ? statement.text(0) : QStringLiteral("(no row)");
    }

    QTemporaryDir m_folder;
    Database m_database{{.keyRounds = 10}};
};

TEST_F(SchemaTest, NewDatabaseHoldsTheFixedRows) {
    const auto count = [this](const char* table) {
        return answer(QStringLiteral("SELECT count(*) FROM ") + QString::fromUtf8(table)).toInt();
    };
    EXPECT_EQ(count("tb_SecureQuestion WHERE Effective=0"), 6);
    EXPECT_EQ(count("tb_SWProtect WHERE \"10\" IS NULL"), 1);
    EXPECT_EQ(count("tb_Directory WHERE dirPath=parentDir"), 3);
    EXPECT_EQ(answer(QStringLiteral("SELECT group_concat(Title) FROM tb_Directory WHERE dirPath IN"
                                    " ('01','02','03')")),
              QStringLiteral("网络对象,应用程序,用户文件"));
    EXPECT_EQ(count("tb_AssPwd WHERE Name='自定义' AND Content IS NULL AND Effective"), 1);
    EXPECT_EQ(count("tb_EntLog"), 1) << "the one of this test's own";
    EXPECT_EQ(count("tb_AssNum WHERE Name='自定义' AND Content IS NULL AND Effective"), 1);
    for (const char* table : {"tb_TypeBoolean", "tb_TypeByte", "tb_TypeInteger", "tb_TypeLong",
                              "tb_TypeDate", "tb_TypeText", "tb_SysLog"}) {
        EXPECT_EQ(count(table), 0) << table;
    }
    EXPECT_EQ(answer(QStringLiteral("SELECT filePath FROM tb_Fil NATURAL JOIN tb_Entry")),
              QStringLiteral("MORV - Demo/加密文件/软件说明.txt"));
    EXPECT_EQ(m_database.checkIntegrity(), QString());
}

TEST_F(SchemaTest, ASubtreeMovesWholeOrNotAtAll) {
    EXPECT_FALSE(accepts("UPDATE tb_Directory SET dirPath='0209' WHERE dirPath='0105'"));
    EXPECT_FALSE(
        accepts("UPDATE tb_Directory SET dirPath='0209',parentDir='02' WHERE dirPath='0105'"))
        << "its subdirectories would be left behind";
    ASSERT_TRUE(
        accepts("UPDATE tb_Directory SET dirPath='02090107',parentDir='020901'"
                " WHERE dirPath='01050107';"
                "UPDATE tb_Directory SET dirPath='020901',parentDir='0209' WHERE dirPath='010501';"
                "UPDATE tb_Directory SET dirPath='0209',parentDir='02' WHERE dirPath='0105';"));
    EXPECT_EQ(answer(QStringLiteral("SELECT dirPath FROM tb_Net")), QStringLiteral("02090107"));
    EXPECT_EQ(answer(QStringLiteral("SELECT dirPath FROM tb_EntLog")), QStringLiteral("01050107"));
    EXPECT_FALSE(accepts("INSERT INTO tb_Directory VALUES('0301','01','x')"));
    EXPECT_FALSE(accepts("INSERT INTO tb_Directory VALUES('030405','0304','x')"));
    EXPECT_EQ(m_database.checkIntegrity(), QString());
}

TEST_F(SchemaTest, RefusesValuesOutsideTheirTypes) {
    const char* const kRefused[] = {
        "INSERT INTO tb_TypeByte VALUES(1,256)",
        "INSERT INTO tb_TypeByte VALUES(1,-1)",
        "INSERT INTO tb_TypeInteger VALUES(1,32768)",
        "INSERT INTO tb_TypeLong VALUES(1,2147483648)",
        "INSERT INTO tb_TypeLong VALUES(1,'x')",
        "INSERT INTO tb_TypeBoolean VALUES(1,2)",
        "INSERT INTO tb_TypeDate VALUES(1,'2026-05-20')",
        "INSERT INTO tb_TypeDate VALUES(1,'2026-19-20T00:00:00')",
        "INSERT INTO tb_TypeDate VALUES(1,'2026-02-30T00:00:00')",
        "INSERT INTO tb_TypeDate VALUES(1,'2026-02-03T24:00:00')",
        "INSERT INTO tb_TypeText VALUES(32768,'x')",
        "INSERT INTO tb_TypeText VALUES(0,'x')",
        "INSERT INTO tb_TypeText VALUES(1,x'41')",
        "UPDATE tb_Entry SET Title=x'41'",
        "UPDATE tb_SWProtect SET \"28\"=x'41'",
        "INSERT INTO tb_Directory VALUES('04','04','x')",
        "INSERT INTO tb_Fil VALUES('01050107','03','','',0)",
        "INSERT INTO tb_Net VALUES('03','01','手机','','')",
        "UPDATE tb_Entry SET entNo='00'",
        "UPDATE tb_Entry SET entNo='1'",
        "UPDATE tb_Entry SET usedTimes=1.5",
        "UPDATE tb_Entry SET pwdName='missing'",
        "INSERT INTO tb_Directory VALUES('010','01','x')",
        "INSERT INTO tb_AssPwd VALUES('x',NULL,0,NULL,1)",
    };
    for (const char* sql : kRefused) {
        EXPECT_FALSE(accepts(sql)) << sql;
    }
    EXPECT_TRUE(
        accepts("INSERT INTO tb_TypeByte VALUES(1,255); INSERT INTO tb_TypeDate"
                " VALUES(1,NULL),(2,'0100-01-01T00:00:00')"));
}

}  // namespace
}  // namespace keeper
