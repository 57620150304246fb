// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "cli/arguments.h"

#include <array>
#include <utility>

#include "cli/console.h"

namespace keeper::cli {

namespace {

[[noreturn]] void wrongUsage(const QString& message) {
    throw Exit(kWrongUsage, message + QStringLiteral("（用法见 morvane-cli --help）"));
}

struct CommandName {
    QStringView name;
    Command command;
};

constexpr std::array<CommandName, 9> kCommands = {{{u"encrypt", Command::Encrypt},
                                                   {u"decrypt", Command::Decrypt},
                                                   {u"encrypt-text", Command::EncryptText},
                                                   {u"decrypt-text", Command::DecryptText},
                                                   {u"digest", Command::Digest},
                                                   {u"users", Command::Users},
                                                   {u"ls", Command::Ls},
                                                   {u"info", Command::Info},
                                                   {u"verify", Command::Verify}}};

bool isFileCommand(Command command) {
    return command == Command::Encrypt || command == Command::Decrypt;
}

bool isTextCommand(Command command) {
    return command == Command::EncryptText || command == Command::DecryptText;
}

bool takesKey(Command command) {
    return isFileCommand(command) || isTextCommand(command) || command == Command::Ls ||
           command == Command::Verify;
}

bool takesDatabase(Command command) {
    return command == Command::Ls || command == Command::Info || command == Command::Verify;
}

/// Walks the words once: options anywhere, "--option=value" as well as two words, "--" ends them.
class Parser {
  public:
    explicit Parser(QStringList words) : m_words(std::move(words)) {}

    Arguments parse() {
        takeCommand();
        bool optionsEnded = false;
        while (!m_words.isEmpty() && !m_wantsHelp) {
            const QString word = m_words.takeFirst();
            if (!optionsEnded && word == u"--") {
                optionsEnded = true;
            } else if (!optionsEnded && word.startsWith(u"-") && word != u"-") {
                takeOption(word);
            } else {
                m_result.paths << word;
            }
        }
        if (m_wantsHelp) {
            m_result.command = Command::Help;
        } else {
            check();
        }
        return m_result;
    }

  private:
    void takeCommand();
    void takeOption(const QString& word);
    void check();
    void guessCipher();

    QString value(const QString& option, const std::optional<QString>& attached) {
        if (attached) {
            return *attached;
        }
        if (m_words.isEmpty()) {
            wrongUsage(QStringLiteral("选项 %1 缺少值").arg(option));
        }
        return m_words.takeFirst();
    }

    QStringList m_words;
    Arguments m_result;
    bool m_cipherGiven = false;
    bool m_wantsHelp = false;
};

void Parser::takeCommand() {
    if (m_words.isEmpty()) {
        wrongUsage(QStringLiteral("缺少命令"));
    }
    const QString word = m_words.takeFirst();
    if (word == u"--help" || word == u"-h" || word == u"help") {
        m_wantsHelp = true;
        return;
    }
    if (word == u"--version") {
        m_result.command = Command::Version;
        return;
    }
    for (const CommandName& entry : kCommands) {
        if (word == entry.name) {
            m_result.command = entry.command;
            return;
        }
    }
    wrongUsage(QStringLiteral("没有命令 %1").arg(word));
}

void Parser::takeOption(const QString& word) {
    const qsizetype equals = word.indexOf(u'=');
    const QString option = word.left(equals);
    const auto attached = equals < 0 ? std::nullopt : std::optional(word.mid(equals + 1));
    const Command command = m_result.command;
    if ((option == u"--help" || option == u"-h") && !attached) {
        m_wantsHelp = true;
    } else if (option == u"--cipher" && isFileCommand(command)) {
        const QString name = value(option, attached);
        if (name != u"aes" && name != u"xor") {
            wrongUsage(QStringLiteral("没有算法 %1，可选 aes 或 xor").arg(name));
        }
        m_result.cipher = name == u"aes" ? Cipher::Aes : Cipher::Xor;
        m_cipherGiven = true;
    } else if (option == u"--algorithm" && command == Command::Digest) {
        const QString name = value(option, attached);
        if (name != u"md5" && name != u"sha1") {
            wrongUsage(QStringLiteral("没有摘要算法 %1，可选 md5 或 sha1").arg(name));
        }
        m_result.algorithm = name == u"md5" ? Algorithm::Md5 : Algorithm::Sha1;
    } else if (option == u"--key-file" && takesKey(command)) {
        m_result.keyFile = value(option, attached);
    } else if (option == u"--delete-source" && !attached && isFileCommand(command)) {
        m_result.deleteSource = true;
    } else if (option == u"--force" && !attached && isFileCommand(command)) {
        m_result.force = true;
    } else {
        wrongUsage(QStringLiteral("这里没有选项 %1").arg(word));
    }
}

void Parser::check() {
    const Command command = m_result.command;
    if (isFileCommand(command)) {
        if (m_result.paths.size() != 2) {
            wrongUsage(QStringLiteral("需要源文件和目标文件两个路径"));
        }
        if (!m_cipherGiven) {
            guessCipher();
        }
    } else if (command == Command::Digest) {
        if (m_result.paths.isEmpty()) {
            wrongUsage(QStringLiteral("缺少文件"));
        }
    } else if (takesDatabase(command)) {
        if (m_result.paths.size() != 1) {
            wrongUsage(QStringLiteral("需要一个密码数据库的路径"));
        }
    } else if (!m_result.paths.isEmpty()) {
        wrongUsage(QStringLiteral("多余的参数 %1").arg(m_result.paths.first()));
    }
    if (isTextCommand(command) && m_result.keyFile == u"-") {
        wrongUsage(QStringLiteral("标准输入是文本，密钥不能也来自标准输入"));
    }
}

/// By the ending of the enciphered file.
void Parser::guessCipher() {
    const QString& sealed = m_result.paths[m_result.command == Command::Encrypt ? 1 : 0];
    if (sealed.endsWith(u".aes", Qt::CaseInsensitive)) {
        m_result.cipher = Cipher::Aes;
    } else if (sealed.endsWith(u".xor", Qt::CaseInsensitive)) {
        m_result.cipher = Cipher::Xor;
    } else {
        wrongUsage(QStringLiteral("%1 不以 .aes 或 .xor 结尾，请用 --cipher 指明算法").arg(sealed));
    }
}

}  // namespace

Arguments parseArguments(const QStringList& words) {
    return Parser(words).parse();
}

QString usageText() {
    return QStringLiteral(
        "用法：\n"
        "  morvane-cli encrypt [--cipher aes|xor] [--key-file FILE] [--delete-source] [--force]"
        " SOURCE TARGET\n"
        "  morvane-cli decrypt [--cipher aes|xor] [--key-file FILE] [--delete-source] [--force]"
        " SOURCE TARGET\n"
        "  morvane-cli encrypt-text [--key-file FILE]\n"
        "  morvane-cli decrypt-text [--key-file FILE]\n"
        "  morvane-cli digest [--algorithm md5|sha1] FILE...\n"
        "  morvane-cli users\n"
        "  morvane-cli ls [--key-file FILE] DATABASE.kvdb\n"
        "  morvane-cli info DATABASE.kvdb\n"
        "  morvane-cli verify [--key-file FILE] DATABASE.kvdb\n"
        "  morvane-cli --help | --version\n"
        "\n"
        "  --cipher         算法；不给出时由密文文件的结尾 .aes 或 .xor 决定\n"
        "  --key-file FILE  密钥是该文件的内容（UTF-8，至多 64 KiB，去掉末尾的一个换行），"
        "\"-\" 为标准输入；\n"
        "                   不给出时在终端上询问，不回显\n"
        "  --delete-source  成功后删除源文件（xor 总是删除）\n"
        "  --force          覆盖已有的目标文件\n"
        "  --algorithm      摘要算法，默认 md5\n"
        "  users            本机的用户；默认用户前有 *\n"
        "  ls               每个条目的编号、类别和标题，不含任何密码\n"
        "  info             不需要密钥就能知道的情况\n"
        "  verify           检查密码数据库，不作任何改动，也不计入登录尝试次数\n"
        "  encrypt-text 的文本至多 16 MiB；md5 的文件至多 256 MiB\n"
        "\n"
        "退出状态：0 完成；1 失败；2 用法错误；130 被 Ctrl-C 中断。\n");
}

}  // namespace keeper::cli
