// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "cli/console.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

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

QByteArray readAll(int descriptor, const QString& name, qsizetype limit) {
    QByteArray content;
    // One byte more than allowed tells a long content from one that just fits.
    content.reserve(limit + 1);
    for (;;) {
        const qsizetype before = content.size();
        content.resize(limit + 1);
        const ssize_t got = ::read(descriptor, content.data() + before,
                                   static_cast<std::size_t>(content.size() - before));
        content.resize(before + (got > 0 ? got : 0));
        if (got == 0) {
            return content;
        }
        if (got < 0 && errno != EINTR) {
            throw Exit(kFailed, QStringLiteral("无法读取 %1：%2")
                                    .arg(name, QString::fromLocal8Bit(std::strerror(errno))));
        }
        if (content.size() > limit) {
            throw Exit(kFailed, QStringLiteral("%1 的内容太长").arg(name));
        }
    }
}

QString withoutTag(const QString& message) {
    const qsizetype end = message.indexOf(u"\r\n");
    return message.startsWith(u'[') && end >= 0 ? message.mid(end + 2) : message;
}

}  // namespace keeper::cli
