// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later
//
// One session on a sealed file as a whole process, for scripts/bench_processes.py.
//   vault_process make FILE KEY COUNT    seals a new database; its entries go out as XML that
//                                        password managers import
//   vault_process list FILE KEY          all titles
//   vault_process show FILE KEY NUMBER   one entry
//   vault_process add FILE KEY NUMBER    one more entry, sealed again

#include <QTemporaryDir>
#include <QXmlStreamWriter>
#include <cstdio>
#include <stdexcept>

#include "bench_entries.h"
#include "bench_ports.h"
#include "crypto/cryptor3.h"
#include "platform/clock.h"
#include "platform/random.h"
#include "store/column_cipher.h"
#include "store/companions.h"
#include "store/entries.h"
#include "store/key_holder.h"
#include "store/sealed_database.h"
#include "store/sealed_file.h"

namespace keeper {
namespace {

class OneKey final : public KeyHolder {
  public:
    OneKey(QString file, QString key) : m_file(std::move(file)), m_key(std::move(key)) {}
    [[nodiscard]] QString p_plainLgnKey() const override { return m_key; }
    void p_plainLgnKey(const QString& key) override { m_key = key; }
    bool takeLgnKey(const QString&, const QString&, const QString&) override { return false; }
    [[nodiscard]] QString p_hashLgnKey() const override { return {}; }
    [[nodiscard]] QString p_idpPwdHashCode() const override { return {}; }
    [[nodiscard]] QString p_kvdbFile() const override { return m_file; }

  private:
    QString m_file;
    QString m_key;
};

class NoDisplay final : public ConnectingDisplay {
  public:
    void SetMsg(CryptMode /*mode*/) override {}
    void setProgress(int /*percent*/) override {}
    void close() override {}
};

void require(bool isDone) {
    if (!isDone) {
        throw std::runtime_error("the operation failed");
    }
}

struct Process {
    Process(const QString& file, const QString& key) : keys(file, key) {}

    void open() {
        QString message;
        require(
            vault.CryptKVDB(false, 0, true, {}) &&
            vault.ConnAccess(SealedDatabase::GetAccessDBSec(false, keys.p_plainLgnKey()), message));
    }
    void list() {
        open();
        entries.Display([](const EntryLine& line) { std::puts(std::string(line.title).c_str()); });
    }
    void show(const QString& number) {
        open();
        const Web web = webs.Search(number);
        require(!web.m_Title.isEmpty());
        for (const QString& value :
             {web.m_Title, web.m_customNum, web.m_customPwd, web.m_Address}) {
            std::puts(value.toUtf8().constData());
        }
    }
    void add(const QString& number) {
        open();
        Web web;
        web.p_No(number);
        web.m_Title = QStringLiteral("新条目");
        web.m_pwdName = web.m_numName = kCustomName;
        require(webs.Add(web) && vault.CryptKVDB(false, 1, true, {}));
    }
    void make(int count) {
        const QString key = keys.p_plainLgnKey();
        const QString plain = folder.filePath(QStringLiteral("new.db"));
        buildDatabase(database, plain, SealedDatabase::GetAccessDBSec(false, key), count);
        writeXml();
        database.close();
        sealFile(cipher, plain, keys.p_kvdbFile(), vault.GetCryptLgnKey(false, key), random);
    }

  private:
    void writeXml() {
        QByteArray text;
        QXmlStreamWriter xml(&text);
        xml.writeStartDocument();
        xml.writeStartElement(QStringLiteral("KeePassFile"));
        xml.writeEmptyElement(QStringLiteral("Meta"));
        xml.writeStartElement(QStringLiteral("Root"));
        Statement rows(database,
                       "select e.dirPath, e.Title, n.customNum, e.customPwd, n.Location, e.Remarks"
                       " from tb_Entry as e join tb_Net as n"
                       " on n.dirPath = e.dirPath and n.entNo = e.entNo"
                       " order by e.dirPath, e.entNo");
        const char* const names[] = {"Title", "UserName", "Password", "URL", "Notes"};
        xml.writeStartElement(QStringLiteral("Group"));
        xml.writeTextElement(QStringLiteral("Name"), QStringLiteral("Root"));
        QString group;
        while (rows.step()) {
            if (rows.text(0) != group) {
                if (!group.isEmpty()) {
                    xml.writeEndElement();
                }
                group = rows.text(0);
                xml.writeStartElement(QStringLiteral("Group"));
                xml.writeTextElement(QStringLiteral("Name"), group);
            }
            xml.writeStartElement(QStringLiteral("Entry"));
            for (int i = 0; i < 5; ++i) {
                xml.writeStartElement(QStringLiteral("String"));
                xml.writeTextElement(QStringLiteral("Key"), QString::fromLatin1(names[i]));
                xml.writeTextElement(QStringLiteral("Value"), rows.text(i + 1));
                xml.writeEndElement();
            }
            xml.writeEndElement();
        }
        xml.writeEndDocument();
        std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), stdout);
    }

    QTemporaryDir folder;
    OneKey keys;
    FatalPrompt prompt;
    FatalHost host;
    Cryptor3 cipher{host};
    SystemRandom random;
    SystemClock clock;
    NoDisplay display;
    Database database;
    SealedDatabase vault{keys, cipher, database, prompt, random, display, folder.path()};
    PlainColumns columnKey;
    ColumnCipher columns{columnKey, cipher};
    StoreContext context{database, prompt, clock, columns};
    Entries entries{context};
    Webs webs{context, entries};
};

int run(const QStringList& arguments) {
    if (arguments.size() < 4) {
        std::fputs("usage: vault_process make|list|show|add FILE KEY [COUNT|NUMBER]\n", stderr);
        return 2;
    }
    Process process(arguments.at(2), arguments.at(3));
    const QString& command = arguments.at(1);
    const QString last = arguments.value(4);
    if (command == u"make") {
        process.make(last.toInt());
    } else if (command == u"list") {
        process.list();
    } else if (command == u"show") {
        process.show(last);
    } else {
        process.add(last);
    }
    return 0;
}

}  // namespace
}  // namespace keeper

int main(int count, char** arguments) {
    QStringList texts;
    for (int i = 0; i < count; ++i) {
        texts.append(QString::fromLocal8Bit(arguments[i]));
    }
    try {
        return keeper::run(texts);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
