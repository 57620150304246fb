// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

// The program as scripts and people meet it: a process, its exit status, its two outputs, and a
// terminal.

#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QDir>
#include <QProcess>
#include <csignal>

#include "support/test_files.h"

namespace keeper {
namespace {

struct Outcome {
    int status = -1;
    QByteArray out;
    QByteArray error;
};

class MorvaneCli : public testing::Test {
  protected:
    TestFiles files;
    const QString plain = files.path(QStringLiteral("plain"));
    const QString sealed = files.path(QStringLiteral("sealed.aes"));
    const QString back = files.path(QStringLiteral("back"));
    const QString keyFile = files.path(QStringLiteral("key"));
    const Bytes data = noise(5000);

    void SetUp() override {
        files.write(QStringLiteral("plain"), data);
        files.write(QStringLiteral("key"), Bytes{'s', 'e', 'c', 'r', 'e', 't', '\n'});
    }

    static Outcome run(const QStringList& arguments, const QByteArray& input = {}) {
        QProcess process;
        process.start(QStringLiteral(MORVANE_CLI), arguments);
        process.write(input);
        process.closeWriteChannel();
        EXPECT_TRUE(process.waitForFinished());
        return {process.exitCode(), process.readAllStandardOutput(),
                process.readAllStandardError()};
    }
    Outcome withKey(const QString& command, const QStringList& rest) const {
        return run(QStringList{command, QStringLiteral("--key-file"), keyFile} + rest);
    }
    QStringList names() const {
        return QDir(files.path(QStringLiteral(".")))
            .entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }
    static void expectOneLine(const Outcome& outcome, int status) {
        EXPECT_EQ(outcome.status, status) << outcome.error.toStdString();
        EXPECT_EQ(outcome.error.count('\n'), 1) << outcome.error.toStdString();
        EXPECT_TRUE(outcome.error.startsWith("morvane-cli: "));
    }
};

TEST_F(MorvaneCli, AesGoesThereAndBackByTheEnding) {
    const Outcome there = withKey(QStringLiteral("encrypt"), {plain, sealed});
    EXPECT_EQ(there.status, 0);
    EXPECT_TRUE(there.error.isEmpty()) << "no bar where there is no terminal";
    EXPECT_EQ(files.read(QStringLiteral("sealed.aes")).size(), 5008U);
    // The key from standard input; its one line end is no part of it.
    const Outcome again = run({QStringLiteral("decrypt"), QStringLiteral("--key-file=-"),
                               QStringLiteral("--delete-source"), sealed, back},
                              "secret\r\n");
    EXPECT_EQ(again.status, 0);
    EXPECT_EQ(files.read(QStringLiteral("back")), data);
    EXPECT_FALSE(files.exists(QStringLiteral("sealed.aes")));
}

TEST_F(MorvaneCli, XorConsumesItsSourceAndSaysSo) {
    const QString target = files.path(QStringLiteral("sealed.xor"));
    const Outcome there = withKey(QStringLiteral("encrypt"), {plain, target});
    expectOneLine(there, 0);
    EXPECT_TRUE(there.error.contains("xor"));
    EXPECT_FALSE(files.exists(QStringLiteral("plain")));
    EXPECT_EQ(withKey(QStringLiteral("decrypt"), {target, plain}).status, 0);
    EXPECT_EQ(files.read(QStringLiteral("plain")), data);
}

TEST_F(MorvaneCli, AnExistingTargetStaysUnlessForced) {
    files.write(QStringLiteral("sealed.aes"), Bytes(9000, 7));
    expectOneLine(withKey(QStringLiteral("encrypt"), {plain, sealed}), 1);
    EXPECT_EQ(files.read(QStringLiteral("sealed.aes")), Bytes(9000, 7));
    EXPECT_EQ(withKey(QStringLiteral("encrypt"), {QStringLiteral("--force"), plain, sealed}).status,
              0);
    EXPECT_EQ(files.read(QStringLiteral("sealed.aes")).size(), 5008U) << "no tail is left";
}

TEST_F(MorvaneCli, FailuresAreOneLineAndLeaveNothingBehind) {
    const QStringList before = names();
    const QString missing = files.path(QStringLiteral("missing"));
    expectOneLine(withKey(QStringLiteral("encrypt"), {missing, sealed}), 1);
    expectOneLine(withKey(QStringLiteral("decrypt"), {plain + u'/', sealed + u'x'}), 2);
    expectOneLine(
        withKey(QStringLiteral("encrypt"), {plain, files.path(QStringLiteral("no/folder.aes"))}),
        1);
    expectOneLine(withKey(QStringLiteral("encrypt"),
                          {QStringLiteral("--cipher=xor"), QStringLiteral("--force"), plain,
                           files.path(QStringLiteral("./plain"))}),
                  1);
    expectOneLine(
        run({QStringLiteral("encrypt"), QStringLiteral("--key-file"), missing, plain, sealed}), 1);
    expectOneLine(
        run({QStringLiteral("encrypt"), QStringLiteral("--key-file=-"), plain, sealed}, "\n"), 1);
    EXPECT_EQ(names(), before);
    EXPECT_EQ(files.read(QStringLiteral("plain")), data);
}

TEST_F(MorvaneCli, NoWrongKeyPassesWhateverItsLengthByteSays) {
    ASSERT_EQ(withKey(QStringLiteral("encrypt"), {plain, sealed}).status, 0);
    const QStringList before = names();
    // One wrong key in sixteen deciphers to a length that could be right.
    for (int i = 0; i < 48; ++i) {
        expectOneLine(run({QStringLiteral("decrypt"), QStringLiteral("--key-file=-"),
                           QStringLiteral("--delete-source"), sealed, back},
                          "wrong" + QByteArray::number(i)),
                      1);
    }
    EXPECT_EQ(names(), before);
}

TEST_F(MorvaneCli, TextsGoThroughPipes) {
    const QByteArray text = "密码 abc\n第二行";
    const QStringList key{QStringLiteral("--key-file"), keyFile};
    const Outcome hidden = run(QStringList{QStringLiteral("encrypt-text")} + key, text);
    ASSERT_EQ(hidden.status, 0);
    EXPECT_TRUE(hidden.out.endsWith('\n'));
    const Outcome shown = run(QStringList{QStringLiteral("decrypt-text")} + key, hidden.out);
    EXPECT_EQ(shown.out, text);
    expectOneLine(run(QStringList{QStringLiteral("encrypt-text")} + key, "smile \U0001F600"), 1);
    expectOneLine(run(QStringList{QStringLiteral("encrypt-text")} + key, "\xFF\xFE"), 1);
    expectOneLine(run(QStringList{QStringLiteral("decrypt-text")} + key, "0102"), 1);
}

TEST_F(MorvaneCli, NoByteOfATextIsDroppedInSilence) {
    const QStringList key{QStringLiteral("--key-file"), keyFile};
    const QStringList encrypt = QStringList{QStringLiteral("encrypt-text")} + key;
    const QStringList decrypt = QStringList{QStringLiteral("decrypt-text")} + key;
    for (const QByteArray& text : {QByteArray("abc\xE5"), QByteArray("abc\xE5\xAF"),
                                   QByteArray("\xEF\xBB\xBF"
                                              "abc"),
                                   QByteArray("a\0b", 3)}) {
        const Outcome outcome = run(encrypt, text);
        expectOneLine(outcome, 1);
        EXPECT_TRUE(outcome.out.isEmpty());
    }
    expectOneLine(run(decrypt, "no cipher: zzz"), 1);
    EXPECT_EQ(run(decrypt, " \r\n").status, 0);
    for (const QByteArray& badKey : {QByteArray("k\xE5"), QByteArray("\xEF\xBB\xBFk")}) {
        expectOneLine(
            run({QStringLiteral("encrypt"), QStringLiteral("--key-file=-"), plain, sealed}, badKey),
            1);
    }
    EXPECT_FALSE(files.exists(QStringLiteral("sealed.aes")));
}

TEST_F(MorvaneCli, TheErrorLineNamesTheFileThatIsToBlame) {
    const QString missing = files.path(QStringLiteral("missing"));
    for (const QString& ending : {QStringLiteral(".aes"), QStringLiteral(".xor")}) {
        const QString target = files.path(QStringLiteral("no/x")) + ending;
        const Outcome noFolder = withKey(QStringLiteral("encrypt"), {plain, target});
        EXPECT_EQ(QString::fromUtf8(noFolder.error),
                  QStringLiteral("morvane-cli: %1：路径未找到。\n").arg(target));
        const Outcome noSource =
            withKey(QStringLiteral("encrypt"), {missing, files.path(QStringLiteral("x")) + ending});
        EXPECT_EQ(QString::fromUtf8(noSource.error),
                  QStringLiteral("morvane-cli: %1：文件未找到。\n").arg(missing));
    }
    files.write(QStringLiteral("empty"), {});
    const Outcome empty =
        withKey(QStringLiteral("encrypt"), {files.path(QStringLiteral("empty")), sealed});
    expectOneLine(empty, 1);
    EXPECT_TRUE(empty.error.contains(files.path(QStringLiteral("empty")).toUtf8()));
}

TEST_F(MorvaneCli, DecipheredFilesArePrivateAndPathsMayBeginWithADash) {
    ASSERT_EQ(::chmod(qPrintable(plain), 0644), 0);
    ASSERT_EQ(withKey(QStringLiteral("encrypt"), {QStringLiteral("--"), plain, sealed}).status, 0);
    QProcess process;
    process.setWorkingDirectory(files.path(QString()));
    process.start(QStringLiteral(MORVANE_CLI),
                  {QStringLiteral("decrypt"), QStringLiteral("--key-file"), QStringLiteral("key"),
                   QStringLiteral("--"), QStringLiteral("sealed.aes"), QStringLiteral("-back")});
    ASSERT_TRUE(process.waitForFinished());
    EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
    EXPECT_EQ(files.read(QStringLiteral("-back")), data);
    const auto modeOf = [this](const QString& name) {
        struct stat status {};
        EXPECT_EQ(::stat(qPrintable(files.path(name)), &status), 0);
        return status.st_mode & 0777U;
    };
    EXPECT_EQ(modeOf(QStringLiteral("sealed.aes")) & 0077U,
              modeOf(QStringLiteral("plain")) & 0077U);
    EXPECT_EQ(modeOf(QStringLiteral("-back")), 0600U);
}

TEST_F(MorvaneCli, DigestsAreOneLineAFileAndAMissingOneDoesNotStopTheRest) {
    files.write(QStringLiteral("abc"), Bytes{'a', 'b', 'c'});
    const QString abc = files.path(QStringLiteral("abc"));
    const Outcome sha1 = run({QStringLiteral("digest"), QStringLiteral("--algorithm=sha1"),
                              files.path(QStringLiteral("missing")), abc});
    expectOneLine(sha1, 1);
    EXPECT_EQ(sha1.out, "A9993E364706816ABA3E25717850C26C9CD0D89D  " + abc.toUtf8() + "\n");
    const Outcome md5 = run({QStringLiteral("digest"), abc});
    EXPECT_EQ(md5.out, "900150983CD24FB0D6963F7D28E17F72  " + abc.toUtf8() + "\n");
}

TEST_F(MorvaneCli, WrongUsageIsStatusTwo) {
    for (const QString& line :
         {QString(), QStringLiteral("frob"), QStringLiteral("encrypt a"),
          QStringLiteral("encrypt a b"), QStringLiteral("encrypt --cipher des a b.aes"),
          QStringLiteral("encrypt --algorithm md5 a b.aes"), QStringLiteral("digest"),
          QStringLiteral("digest --key-file k f"), QStringLiteral("encrypt a b.aes --key-file"),
          QStringLiteral("encrypt-text --key-file -"), QStringLiteral("encrypt-text a")}) {
        expectOneLine(run(line.split(u' ', Qt::SkipEmptyParts)), 2);
    }
    EXPECT_EQ(run({QStringLiteral("--help")}).status, 0);
    EXPECT_TRUE(run({QStringLiteral("encrypt"), QStringLiteral("--help")}).out.contains("SOURCE"));
    EXPECT_TRUE(run({QStringLiteral("--version")}).out.startsWith("morvane-cli "));
}

/// The program on a terminal of its own.
class Terminal {
  public:
    /// `ignored`: a signal that is ignored when the program starts, as nohup does.
    explicit Terminal(const QStringList& arguments, int ignored = 0) {
        m_child = ::forkpty(&m_master, nullptr, nullptr, nullptr);
        if (m_child == 0) {
            if (ignored != 0) {
                ::signal(ignored, SIG_IGN);
            }
            std::vector<QByteArray> words{MORVANE_CLI};
            for (const QString& argument : arguments) {
                words.push_back(argument.toUtf8());
            }
            std::vector<char*> argv;
            for (QByteArray& word : words) {
                argv.push_back(word.data());
            }
            argv.push_back(nullptr);
            ::execv(argv[0], argv.data());
            ::_exit(127);
        }
    }
    ~Terminal() { ::close(m_master); }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    void type(const QByteArray& text) const {
        EXPECT_EQ(::write(m_master, text.constData(), static_cast<std::size_t>(text.size())),
                  text.size());
    }
    /// Reads until `text` has come; false at the end of the output or after ten seconds.
    bool waitFor(const QByteArray& text) {
        while (!screen.contains(text)) {
            if (!readMore()) {
                return false;
            }
        }
        return true;
    }
    int finish() {
        while (readMore()) {
        }
        int status = 0;
        ::waitpid(m_child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    pid_t child() const { return m_child; }

    QByteArray screen;

  private:
    bool readMore() {
        pollfd source{m_master, POLLIN, 0};
        char buffer[4096];
        if (::poll(&source, 1, 10'000) != 1) {
            return false;
        }
        const ssize_t got = ::read(m_master, buffer, sizeof buffer);
        screen.append(buffer, got > 0 ? got : 0);
        return got > 0;
    }

    int m_master = -1;
    pid_t m_child = -1;
};

/// Until the process holds the ending signals back: one before that meets a program that only
/// starts.
void waitUntilItWatches(pid_t child) {
    const QString path = QStringLiteral("/proc/%1/status").arg(child);
    constexpr quint64 termination = quint64{1} << (SIGTERM - 1);
    for (int i = 0; i < 1000; ++i) {
        QFile file(path);
        const QByteArray text = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        const QByteArray blocked = text.mid(text.indexOf("SigBlk:") + 7, 17).trimmed();
        if ((blocked.toULongLong(nullptr, 16) & termination) != 0) {
            return;
        }
        ::poll(nullptr, 0, 10);
    }
    FAIL() << "the program does not watch its signals";
}

TEST_F(MorvaneCli, TheTerminalIsAskedTwiceWithoutEchoAndShowsABar) {
    Terminal terminal({QStringLiteral("encrypt"), plain, sealed});
    ASSERT_TRUE(terminal.waitFor("密钥："));
    terminal.type("secret\n");
    ASSERT_TRUE(terminal.waitFor("再次输入密钥："));
    terminal.type("secret\n");
    EXPECT_EQ(terminal.finish(), 0);
    EXPECT_FALSE(terminal.screen.contains("secret")) << terminal.screen.toStdString();
    EXPECT_TRUE(terminal.screen.contains("100%"));
    EXPECT_EQ(withKey(QStringLiteral("decrypt"), {sealed, back}).status, 0);
    EXPECT_EQ(files.read(QStringLiteral("back")), data);
}

TEST_F(MorvaneCli, TwoDifferentEntriesEncipherNothing) {
    Terminal terminal({QStringLiteral("encrypt"), plain, sealed});
    ASSERT_TRUE(terminal.waitFor("密钥："));
    terminal.type("secret\n");
    ASSERT_TRUE(terminal.waitFor("再次输入密钥："));
    terminal.type("secert\n");
    EXPECT_EQ(terminal.finish(), 1);
    EXPECT_FALSE(files.exists(QStringLiteral("sealed.aes")));
}

TEST_F(MorvaneCli, CtrlCAtTheQuestionEndsWith130) {
    Terminal terminal({QStringLiteral("decrypt"), QStringLiteral("--cipher=aes"), plain, sealed});
    ASSERT_TRUE(terminal.waitFor("密钥："));
    terminal.type("\x03");
    EXPECT_EQ(terminal.finish(), 130);
}

/// Standard input is the terminal here, and the key a pipe that nobody writes.
TEST_F(MorvaneCli, SignalsEndTheWaitForInput) {
    const QString pipe = files.path(QStringLiteral("pipe"));
    ASSERT_EQ(::mkfifo(qPrintable(pipe), 0600), 0);
    for (const QString& key : {keyFile, pipe}) {
        Terminal text({QStringLiteral("encrypt-text"), QStringLiteral("--key-file"), key});
        text.type("typed so far\n");
        ASSERT_TRUE(text.waitFor("typed so far"));
        waitUntilItWatches(text.child());
        text.type("\x03");
        EXPECT_EQ(text.finish(), 130);
    }
    Terminal stubborn({QStringLiteral("encrypt-text"), QStringLiteral("--key-file"), keyFile},
                      SIGHUP);
    waitUntilItWatches(stubborn.child());
    ::kill(stubborn.child(), SIGHUP);
    stubborn.type("a\n\x04");
    EXPECT_EQ(stubborn.finish(), 0);
    EXPECT_FALSE(files.exists(QStringLiteral("sealed.aes")));
}

TEST_F(MorvaneCli, CtrlCInTheMiddleLeavesTheSourceAndNothingElse) {
    for (const QString& target : {QStringLiteral("big.aes"), QStringLiteral("big.xor")}) {
        const QString big = files.writeSparse(QStringLiteral("big"), qint64{600} << 20);
        const QStringList before = names();
        Terminal terminal({QStringLiteral("encrypt"), QStringLiteral("--key-file"), keyFile, big,
                           files.path(target)});
        // The bar proves that the work has begun; the rest takes far longer than a signal.
        ASSERT_TRUE(terminal.waitFor("%"));
        ::kill(terminal.child(), SIGINT);
        EXPECT_EQ(terminal.finish(), 130);
        EXPECT_EQ(names(), before);
    }
}

TEST_F(MorvaneCli, CtrlCWhileDecipheringLeavesNoPlaintext) {
    const QString big = files.writeSparse(QStringLiteral("zeros"), qint64{600} << 20);
    ASSERT_EQ(
        withKey(QStringLiteral("encrypt"), {QStringLiteral("--delete-source"), big, sealed}).status,
        0);
    const QStringList before = names();
    Terminal terminal(
        {QStringLiteral("decrypt"), QStringLiteral("--key-file"), keyFile, sealed, back});
    ASSERT_TRUE(terminal.waitFor("%"));
    ::kill(terminal.child(), SIGTERM);
    EXPECT_EQ(terminal.finish(), 143);
    EXPECT_EQ(names(), before);
}

}  // namespace
}  // namespace keeper
