// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/linux/linux_files.h"

#include <fcntl.h>
#include <unistd.h>

#include <QFile>
#include <cerrno>
#include <system_error>

namespace keeper {
namespace {

bool isShortage(int error) {
    return error == EMFILE || error == ENFILE || error == ENOMEM || error == ENOBUFS;
}

[[noreturn]] void throwShortage(int error) {
    throw std::system_error(error, std::generic_category(), "reading the machine's identity");
}

}  // namespace

QByteArray readSmallFile(const QString& path) {
    constexpr qsizetype kMost = 65536;
    const int file = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (file < 0) {
        if (isShortage(errno)) {
            throwShortage(errno);
        }
        return {};
    }
    QByteArray content(kMost, Qt::Uninitialized);
    qsizetype size = 0;
    int error = 0;
    while (size < kMost) {
        const ssize_t got =
            ::read(file, content.data() + size, static_cast<std::size_t>(kMost - size));
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            error = got < 0 ? errno : 0;
            break;
        }
        size += got;
    }
    ::close(file);
    if (isShortage(error)) {
        throwShortage(error);
    }
    content.truncate(error == 0 ? size : 0);
    return content;
}

QString oneLine(const QByteArray& utf8) {
    constexpr qsizetype kMost = 255;
    QString text = QString::fromUtf8(utf8);
    for (QChar& unit : text) {
        if (!unit.isPrint()) {
            unit = QLatin1Char(' ');
        }
    }
    return text.simplified().left(kMost);
}

}  // namespace keeper
