// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "crypto/file_reader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <cerrno>
#include <system_error>

namespace keeper {

FileReader::FileReader(const QString& path) {
    const QByteArray name = QFile::encodeName(path);
    // A pipe without a writer would hold the program at open: only regular files come through.
    m_descriptor = ::open(name.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (m_descriptor < 0) {
        throw std::system_error(errno, std::generic_category());
    }
    struct stat status {};
    const int result = ::fstat(m_descriptor, &status);
    if (result != 0 || !S_ISREG(status.st_mode)) {
        int error = EINVAL;
        if (result != 0) {
            error = errno;
        } else if (S_ISDIR(status.st_mode)) {
            error = EISDIR;
        }
        ::close(m_descriptor);
        throw std::system_error(error, std::generic_category());
    }
    m_size = static_cast<std::uint64_t>(status.st_size);
    ::posix_fadvise(m_descriptor, 0, 0, POSIX_FADV_SEQUENTIAL);
}

FileReader::~FileReader() {
    ::close(m_descriptor);
}

std::size_t FileReader::read(std::span<std::uint8_t> bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t got = ::read(m_descriptor, bytes.data() + done, bytes.size() - done);
        if (got == 0) {
            break;
        }
        if (got > 0) {
            done += static_cast<std::size_t>(got);
        } else if (errno != EINTR) {
            throw std::system_error(errno, std::generic_category());
        }
    }
    return done;
}

}  // namespace keeper
