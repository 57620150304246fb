// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "cli/console.h"

#include <poll.h>
#include <unistd.h>

#include <QStringDecoder>
#include <array>
#include <cerrno>
#include <cstring>

#include "cli/signal_watch.h"
#include "crypto/secure_wipe.h"

namespace keeper::cli {

void printError(const QString& message) {
    const QByteArray line = "morvane-cli: " + message.simplified().toUtf8() + '\n';
    // Nothing is left to do when standard error itself is gone.
    [[maybe_unused]] const ssize_t written =
        ::write(STDERR_FILENO, line.constData(), static_cast<std::size_t>(line.size()));
}

void writeAll(int descriptor, const QByteArray& bytes) {
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t put = ::write(descriptor, bytes.constData() + done,
                                    static_cast<std::size_t>(bytes.size() - done));
        if (put >= 0) {
            done += put;
        } else if (errno != EINTR) {
            throw Exit(kFailed, QStringLiteral("无法写出结果：%1")
                                    .arg(QString::fromLocal8Bit(std::strerror(errno))));
        }
    }
}

void printLines(const QStringList& lines) {
    QByteArray bytes;
    for (const QString& line : lines) {
        bytes += line.toUtf8() + '\n';
    }
    writeAll(STDOUT_FILENO, bytes);
}

QString printable(QString text) {
    for (QChar& unit : text) {
        if (unit.category() == QChar::Other_Control) {
            unit = u' ';
        }
    }
    return text;
}

QByteArray readAll(int descriptor, const QString& name, qsizetype limit, SignalWatch& signalWatch) {
    QByteArray content;
    const auto fail = [&content](int status, const QString& message = {}) {
        secureWipe(content.data(), static_cast<std::size_t>(content.size()));
        throw Exit(status, message);
    };
    // One byte more than allowed tells a long content from one that just fits.
    content.reserve(limit + 1);
    for (;;) {
        // The signals are held back: a plain read would wait for its input through any Ctrl-C.
        std::array<pollfd, 2> sources = {
            {{descriptor, POLLIN, 0}, {signalWatch.descriptor(), POLLIN, 0}}};
        ::poll(sources.data(), sources.size(), -1);
        if (signalWatch.pending() != 0) {
            fail(128 + signalWatch.pending());
        }
        if (sources[0].revents == 0) {
            continue;
        }
        const qsizetype before = content.size();
        content.resize(limit + 1);
        const ssize_t got = ::read(descriptor, content.data() + before,
                                   static_cast<std::size_t>(content.size() - before));
        const int error = errno;
        content.resize(before + (got > 0 ? got : 0));
        if (got == 0) {
            return content;
        }
        if (got < 0 && error != EINTR && error != EAGAIN) {
            fail(kFailed, QStringLiteral("无法读取 %1：%2")
                              .arg(name, QString::fromLocal8Bit(std::strerror(error))));
        }
        if (content.size() > limit) {
            fail(kFailed, QStringLiteral("%1 的内容太长").arg(name));
        }
    }
}

std::optional<QString> exactText(const QByteArray& utf8) {
    // With a state, a character cut at the end would wait for more bytes and vanish.
    using Flag = QStringDecoder::Flag;
    QStringDecoder decoder(QStringDecoder::Utf8, Flag::Stateless | Flag::ConvertInitialBom);
    QString text = decoder.decode(utf8);
    if (decoder.hasError()) {
        secureWipe(text);
        return std::nullopt;
    }
    return text;
}

QString withoutTag(const QString& message) {
    const qsizetype end = message.indexOf(u"\r\n");
    return message.startsWith(u'[') && end >= 0 ? message.mid(end + 2) : message;
}

int numberInTag(const QString& message) {
    return message.startsWith(u'[') ? QStringView(message).mid(1, message.indexOf(u']') - 1).toInt()
                                    : 0;
}

}  // namespace keeper::cli
