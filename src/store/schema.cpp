// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "store/schema.h"

#include <string>

#include "platform/database.h"

namespace keeper {
namespace {

// The column order is part of the file format.
constexpr char kTables[] = R"sql(
CREATE TABLE tb_Directory(
  dirPath TEXT NOT NULL PRIMARY KEY
    CHECK(typeof(dirPath)='text' AND dirPath NOT GLOB '*[^0-9]*' AND length(dirPath)>=2
      AND length(dirPath)%2=0 AND substr(dirPath,-2)<>'00'
      AND substr(dirPath,1,2) IN ('01','02','03')),
  parentDir TEXT NOT NULL REFERENCES tb_Directory(dirPath)
    ON UPDATE CASCADE ON DELETE CASCADE DEFERRABLE INITIALLY DEFERRED,
  $string(Title) NOT NULL,
  CHECK(parentDir=CASE length(dirPath) WHEN 2 THEN dirPath
    ELSE substr(dirPath,1,length(dirPath)-2) END)
);
CREATE INDEX ix_Directory_parentDir ON tb_Directory(parentDir);

CREATE TABLE tb_AssPwd(
  $string(Name) NOT NULL PRIMARY KEY,
  $string(Content),
  Length INTEGER CHECK(Length IS NULL OR $int16(Length)),
  updateTime TEXT CHECK($time(updateTime)),
  Effective INTEGER NOT NULL CHECK($flag(Effective)),
  CHECK(Content IS NOT NULL OR Name='自定义')
);
CREATE TABLE tb_AssNum(
  $string(Name) NOT NULL PRIMARY KEY,
  $string(Content),
  $string(Type),
  $string(Comment),
  Effective INTEGER NOT NULL CHECK($flag(Effective)),
  CHECK(Content IS NOT NULL OR Name='自定义')
);

CREATE TABLE tb_Entry(
  dirPath TEXT NOT NULL REFERENCES tb_Directory(dirPath) ON UPDATE CASCADE ON DELETE CASCADE,
  $string(entNo) NOT NULL CHECK(entNo GLOB '[0-9][0-9]' AND entNo<>'00'),
  $string(Title) NOT NULL,
  $string(pwdName) NOT NULL REFERENCES tb_AssPwd(Name) ON UPDATE CASCADE ON DELETE CASCADE,
  $string(customPwd),
  $string(Remarks),
  usedTimes INTEGER NOT NULL CHECK($int32(usedTimes)),
  Effective INTEGER NOT NULL CHECK($flag(Effective)),
  Bookmark INTEGER NOT NULL CHECK($flag(Bookmark)),
  createDate TEXT CHECK($time(createDate)),
  recentUpdate TEXT CHECK($time(recentUpdate)),
  recentModPwd TEXT CHECK($time(recentModPwd)),
  modPwdDays INTEGER NOT NULL CHECK($int16(modPwdDays)),
  PRIMARY KEY(dirPath,entNo)
);
CREATE INDEX ix_Entry_tree ON tb_Entry(dirPath,entNo,Title,Bookmark);
CREATE INDEX ix_Entry_pwdName ON tb_Entry(pwdName);
CREATE INDEX ix_Entry_recentUpdate ON tb_Entry(recentUpdate);
CREATE INDEX ix_Entry_reminder ON tb_Entry(recentModPwd) WHERE modPwdDays<>0;

CREATE TABLE tb_Net(
  dirPath TEXT NOT NULL,
  $string(entNo) NOT NULL,
  $string(numName) NOT NULL REFERENCES tb_AssNum(Name) ON UPDATE CASCADE ON DELETE RESTRICT,
  $string(customNum),
  $string(Location),
  PRIMARY KEY(dirPath,entNo),
  FOREIGN KEY(dirPath,entNo) REFERENCES tb_Entry(dirPath,entNo) ON UPDATE CASCADE ON DELETE CASCADE,
  CHECK(substr(dirPath,1,2) IN ('01','02'))
);
CREATE INDEX ix_Net_numName ON tb_Net(numName);

CREATE TABLE tb_Fil(
  dirPath TEXT NOT NULL,
  $string(entNo) NOT NULL,
  $string(filePath),
  $string(hashCode),
  Encrypted INTEGER NOT NULL CHECK($flag(Encrypted)),
  PRIMARY KEY(dirPath,entNo),
  FOREIGN KEY(dirPath,entNo) REFERENCES tb_Entry(dirPath,entNo) ON UPDATE CASCADE ON DELETE CASCADE,
  CHECK(substr(dirPath,1,2)='03')
);

CREATE TABLE tb_SysLog(
  dateTime TEXT NOT NULL CHECK($time(dateTime)),
  statusNo INTEGER NOT NULL CHECK($int32(statusNo)),
  lCount INTEGER CHECK(lCount IS NULL OR $int32(lCount)),
  $string(Description)
);
CREATE INDEX ix_SysLog_dateTime ON tb_SysLog(dateTime);
CREATE INDEX ix_SysLog_statusNo ON tb_SysLog(statusNo,dateTime);

CREATE TABLE tb_EntLog(
  dirPath TEXT NOT NULL CHECK(typeof(dirPath)='text'),
  $string(entNo) NOT NULL,
  dateTime TEXT NOT NULL CHECK($time(dateTime)),
  statusNo INTEGER NOT NULL CHECK($int32(statusNo)),
  $string(pwdName),
  $string(originalPwd)
);
CREATE INDEX ix_EntLog_entry ON tb_EntLog(dirPath,entNo,dateTime);
CREATE INDEX ix_EntLog_dateTime ON tb_EntLog(dateTime);

CREATE TABLE tb_SecureQuestion(
  $string(Question),
  $string(Answer),
  Effective INTEGER NOT NULL CHECK($flag(Effective))
);

CREATE TABLE tb_SWProtect(
  $string("01"), $string("02"),
  "03" INTEGER NOT NULL DEFAULT 0 CHECK($flag("03")),
  "04" INTEGER NOT NULL DEFAULT 0 CHECK($int16("04")),
  "05" INTEGER NOT NULL DEFAULT 0 CHECK($byte("05")),
  "06" INTEGER NOT NULL DEFAULT 0 CHECK($int16("06")),
  "07" INTEGER NOT NULL DEFAULT 0 CHECK($int16("07")),
  "08" TEXT CHECK($time("08")),
  "09" TEXT CHECK($time("09")),
  "10" TEXT CHECK($time("10")),
  $string("11"), $string("12"), $string("13"), $string("14"), $string("15"), $string("16"),
  $string("17"), $string("18"), $string("19"), $string("20"), $string("21"), $string("22"),
  $string("23"), $string("24"), $string("25"), $string("26"), $string("27"), $string("28")
);

CREATE TABLE tb_TypeBoolean($row(rowNo), value INTEGER NOT NULL CHECK($flag(value)));
CREATE TABLE tb_TypeByte($row(rowNo), value INTEGER NOT NULL CHECK($byte(value)));
CREATE TABLE tb_TypeInteger($row(rowNo), value INTEGER NOT NULL CHECK($int16(value)));
CREATE TABLE tb_TypeLong($row(rowNo), value INTEGER NOT NULL CHECK($int32(value)));
CREATE TABLE tb_TypeDate($row(rowNo), value TEXT CHECK($time(value)));
CREATE TABLE tb_TypeText($row(rowNo), $string(value));
)sql";

constexpr char kFixedRows[] = R"sql(
INSERT INTO tb_Directory VALUES('01','01','网络对象'),('02','02','应用程序'),('03','03','用户文件');
INSERT INTO tb_AssPwd(Name,Effective) VALUES('自定义',1);
INSERT INTO tb_AssNum(Name,Effective) VALUES('自定义',1);
INSERT INTO tb_SWProtect("01","02","11","12","13","14","15","16","17","18","19","20","21","22",
  "23","24","25","26","27","28")
  VALUES('','','','','','','','','','','','','','','','','','','','');
INSERT INTO tb_SecureQuestion VALUES('','',0),('','',0),('','',0),('','',0),('','',0),('','',0);
)sql";

struct Domain {
    const char* name;
    const char* condition;
};

constexpr Domain kDomains[] = {
    {"$flag", "(@ IN (0,1))"},
    {"$byte", "(typeof(@)='integer' AND @ BETWEEN 0 AND 255)"},
    {"$int16", "(typeof(@)='integer' AND @ BETWEEN -32768 AND 32767)"},
    {"$int32", "(typeof(@)='integer' AND @ BETWEEN -2147483648 AND 2147483647)"},
    {"$string", "@ TEXT CHECK(typeof(@) IN ('text','null'))"},
    {"$row", "rowNo INTEGER PRIMARY KEY CHECK(@ BETWEEN 1 AND 32767)"},
    // The engine's own calendar: what it does not read back unchanged is no moment. The modifier
    // makes it count the days, or it would let a 30th of February pass.
    {"$time",
     "(@ IS NULL OR (typeof(@)='text' AND "
     "coalesce(strftime('%Y-%m-%dT%H:%M:%S',@,'+0 days'),'')=@))"},
};

/// Writes each "$domain(column)" out as what the domain demands of the column.
std::string expandDomains(std::string sql) {
    for (const Domain& domain : kDomains) {
        const std::string head = std::string(domain.name) + "(";
        for (auto start = sql.find(head); start != std::string::npos; start = sql.find(head)) {
            const auto end = sql.find(')', start);
            const std::string column = sql.substr(start + head.size(), end - start - head.size());
            std::string condition = domain.condition;
            for (auto at = condition.find('@'); at != std::string::npos; at = condition.find('@')) {
                condition.replace(at, 1, column);
            }
            sql.replace(start, end - start + 1, condition);
        }
    }
    return sql;
}

/// New users find one entry to look at. Its path is that of a user named "Demo"; whoever makes a
/// database under another name renames it.
void addExampleEntry(Database& database, const QDateTime& now) {
    Statement entry(database,
                    "INSERT INTO tb_Entry VALUES('03','01',?1,?2,'','',0,1,0,?3,?4,?3,0)");
    entry.bind(1, QStringLiteral("软件说明")).bind(2, kCustomName).bind(3, now.date()).bind(4, now);
    entry.run();
    Statement file(database, "INSERT INTO tb_Fil VALUES('03','01',?1,'',0)");
    file.bind(1, QStringLiteral("MORV - Demo/加密文件/软件说明.txt")).run();
}

}  // namespace

void createSchema(Database& database, const QDateTime& now) {
    Transaction transaction(database);
    database.execute(expandDomains(kTables).c_str());
    database.execute(kFixedRows);
    addExampleEntry(database, now);
    const std::string stamp = "PRAGMA application_id=" + std::to_string(kApplicationId) +
                              ";PRAGMA user_version=" + std::to_string(kSchemaVersion);
    database.execute(stamp.c_str());
    transaction.commit();
}

}  // namespace keeper
