// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/linux/linux_files.h"

#include <fcntl.h>
#include <unistd.h>

#include <QFile>
#include <cerrno>
#include <filesystem>
#include <system_error>

#include "platform/unique_fd.h"

namespace keeper {
namespace {

/// What passes, and says nothing about the file.
bool isShortage(int error) {
    switch (error) {
        case EMFILE:
        case ENFILE:
        case ENOMEM:
        case ENOBUFS:
        case EAGAIN:
        case ETIMEDOUT:
            return true;
        default:
            return false;
    }
}

/// No such file, or one for others only.
bool isAbsence(int error) {
    return error == ENOENT || error == ENOTDIR || error == EACCES || error == EPERM;
}

[[noreturn]] void fail(int error, const QString& path) {
    throw std::system_error(error, std::generic_category(),
                            "reading the machine's identity: " + path.toStdString());
}

/// The beginning of a file. `error` is 0 when it could be read, and what came before an error is
/// no content.
QByteArray beginningOf(const QString& path, int& error) {
    constexpr qsizetype kMost = 65536;
    error = 0;
    const UniqueFd file(
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file.isValid()) {
        error = errno;
        return {};
    }
    QByteArray content(kMost, Qt::Uninitialized);
    qsizetype size = 0;
    while (size < kMost) {
        const ssize_t got =
            ::read(file.get(), content.data() + size, static_cast<std::size_t>(kMost - size));
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            error = errno;
            return {};
        }
        if (got == 0) {
            break;
        }
        size += got;
    }
    content.truncate(size);
    return content;
}

}  // namespace

QByteArray readSmallFile(const QString& path) {
    int error = 0;
    QByteArray content = beginningOf(path, error);
    if (isShortage(error)) {
        fail(error, path);
    }
    return content;
}

QByteArray readIdFile(const QString& path) {
    int error = 0;
    QByteArray content = beginningOf(path, error);
    if (error != 0 && !isAbsence(error)) {
        fail(error, path);
    }
    return content;
}

QStringList namesIn(const QString& folder) {
    QStringList names;
    std::error_code error;
    std::filesystem::directory_iterator entry(QFile::encodeName(folder).toStdString(), error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        names << QFile::decodeName(entry->path().filename().c_str());
    }
    if (isShortage(error.value())) {
        fail(error.value(), folder);
    }
    names.sort();
    return names;
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
