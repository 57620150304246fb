// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/file_hold.h"

#include <fcntl.h>
#include <sys/file.h>

#include <QFile>
#include <cerrno>

namespace keeper {
namespace {

/// Not valid for a file that cannot be opened; `isHeld` tells one that somebody else holds.
UniqueFd claimed(const QString& path, bool& isHeld) {
    const QByteArray name = QFile::encodeName(path);
    // A network file system locks for itself alone what is open for writing.
    UniqueFd file(::open(name.constData(), O_RDWR | O_CLOEXEC));
    if (!file.isValid()) {
        file = UniqueFd(::open(name.constData(), O_RDONLY | O_CLOEXEC));
    }
    isHeld = file.isValid() && ::flock(file.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    return file;
}

}  // namespace

bool FileHold::take(const QString& path) {
    release();
    bool isHeld = false;
    UniqueFd file = claimed(path, isHeld);
    if (!isHeld) {
        m_file = std::move(file);
    }
    return !isHeld;
}

bool isFileHeld(const QString& path) {
    bool isHeld = false;
    static_cast<void>(claimed(path, isHeld));
    return isHeld;
}

}  // namespace keeper
