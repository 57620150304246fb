// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "cli/key_entry.h"

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <QFile>
#include <array>
#include <cerrno>
#include <cstring>

#include "cli/console.h"
#include "cli/signal_watch.h"
#include "crypto/secure_wipe.h"

namespace keeper::cli {

namespace {

constexpr qsizetype kLongestKey = 64 * 1024;

void wipe(QByteArray& bytes) {
    secureWipe(bytes.data(), static_cast<std::size_t>(bytes.size()));
}

QString keyFromBytes(QByteArray bytes, const QString& where) {
    std::optional<QString> key = exactText(bytes);
    wipe(bytes);
    if (!key) {
        throw Exit(kFailed, QStringLiteral("%1 的密钥不是 UTF-8 文本").arg(where));
    }
    if (key->isEmpty()) {
        throw Exit(kFailed, QStringLiteral("%1 的密钥是空的").arg(where));
    }
    if (key->startsWith(QChar::ByteOrderMark)) {
        // An editor's doing. Nobody could type it, so nothing else would open what it closed.
        secureWipe(*key);
        throw Exit(kFailed, QStringLiteral("%1 的密钥以字节顺序标记（BOM）开头").arg(where));
    }
    return *std::move(key);
}

class Descriptor {
  public:
    Descriptor(const QByteArray& path, int flags)
        : m_value(::open(path.constData(), flags | O_CLOEXEC | O_NOCTTY)) {}
    ~Descriptor() {
        if (m_value >= 0) {
            ::close(m_value);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    [[nodiscard]] int get() const { return m_value; }

  private:
    int m_value;
};

QString keyFromFile(const QString& path, SignalWatch& signalWatch) {
    QByteArray bytes;
    QString name = path;
    if (path == u"-") {
        name = QStringLiteral("标准输入");
        bytes = readAll(STDIN_FILENO, name, kLongestKey, signalWatch);
    } else {
        // A named pipe is waited for in readAll(), where a signal is seen.
        const Descriptor file(QFile::encodeName(path), O_RDONLY | O_NONBLOCK);
        if (file.get() < 0) {
            throw Exit(kFailed, QStringLiteral("无法打开密钥文件 %1：%2")
                                    .arg(path, QString::fromLocal8Bit(std::strerror(errno))));
        }
        bytes = readAll(file.get(), name, kLongestKey, signalWatch);
    }
    if (bytes.endsWith('\n')) {
        bytes.chop(bytes.endsWith("\r\n") ? 2 : 1);
    }
    return keyFromBytes(std::move(bytes), name);
}

/// Switches the echo off while it lives.
class NoEcho {
  public:
    explicit NoEcho(int terminal) : m_terminal(terminal) {
        ::tcgetattr(m_terminal, &m_before);
        termios quiet = m_before;
        quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        quiet.c_lflag |= ICANON | ISIG;
        ::tcsetattr(m_terminal, TCSAFLUSH, &quiet);
    }
    ~NoEcho() { ::tcsetattr(m_terminal, TCSAFLUSH, &m_before); }
    NoEcho(const NoEcho&) = delete;
    NoEcho& operator=(const NoEcho&) = delete;

  private:
    int m_terminal;
    termios m_before{};
};

/// One line from the terminal. The signals are held back, so that the echo is never left off.
QByteArray typedLine(int terminal, const QString& prompt, SignalWatch& signalWatch) {
    QByteArray line;
    {
        const NoEcho quiet(terminal);
        // Not before: who types at once would be seen, and lose what the switch flushes.
        writeAll(terminal, prompt.toUtf8());
        std::array<char, 4096> buffer{};
        while (!line.endsWith('\n')) {
            std::array<pollfd, 2> sources = {
                {{terminal, POLLIN, 0}, {signalWatch.descriptor(), POLLIN, 0}}};
            ::poll(sources.data(), sources.size(), -1);
            if (signalWatch.pending() != 0) {
                break;
            }
            const ssize_t got = ::read(terminal, buffer.data(), buffer.size());
            if (got == 0 || (got < 0 && errno != EINTR && errno != EAGAIN)) {
                break;
            }
            line.append(buffer.data(), got > 0 ? got : 0);
        }
        secureWipe(buffer.data(), buffer.size());
    }
    writeAll(terminal, "\n");
    if (signalWatch.pending() != 0) {
        wipe(line);
        throw Exit(128 + signalWatch.pending());
    }
    if (line.endsWith('\n')) {
        line.chop(1);
    }
    return line;
}

QString keyFromTerminal(bool twice, SignalWatch& signalWatch) {
    const Descriptor terminal("/dev/tty", O_RDWR);
    if (terminal.get() < 0) {
        throw Exit(kFailed, QStringLiteral("没有终端可以询问密钥，请用 --key-file"));
    }
    const QString where = QStringLiteral("终端");
    QString key =
        keyFromBytes(typedLine(terminal.get(), QStringLiteral("密钥："), signalWatch), where);
    if (twice) {
        QByteArray again = typedLine(terminal.get(), QStringLiteral("再次输入密钥："), signalWatch);
        std::optional<QString> second = exactText(again);
        wipe(again);
        const bool isSame = second == key;
        if (second) {
            secureWipe(*second);
        }
        if (!isSame) {
            secureWipe(key);
            throw Exit(kFailed, QStringLiteral("两次输入的密钥不同"));
        }
    }
    return key;
}

}  // namespace

QString obtainKey(const std::optional<QString>& keyFile, bool twice, SignalWatch& signalWatch) {
    return keyFile ? keyFromFile(*keyFile, signalWatch) : keyFromTerminal(twice, signalWatch);
}

}  // namespace keeper::cli
