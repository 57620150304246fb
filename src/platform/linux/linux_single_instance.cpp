// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/linux/linux_single_instance.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <array>
#include <cstring>
#include <stdexcept>

namespace keeper {
namespace {

// One letter tells the messages of later versions apart; the rest is a path in UTF-8.
constexpr char raiseLetter = 'R';
constexpr std::size_t longestMessage = 1 + 4096;

/// False when the path is too long for the kernel: then there is no talk, only the lock.
bool fillAddress(const QString& path, sockaddr_un& address) {
    const QByteArray name = QFile::encodeName(path);
    address.sun_family = AF_UNIX;
    if (static_cast<std::size_t>(name.size()) >= sizeof address.sun_path) {
        return false;
    }
    std::memcpy(address.sun_path, name.constData(), static_cast<std::size_t>(name.size()) + 1);
    return true;
}

UniqueFd datagramSocket() {
    return UniqueFd(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

/// A folder that belongs to this user alone.
bool isPrivateFolder(const QString& path) {
    struct stat status {};
    return ::lstat(QFile::encodeName(path).constData(), &status) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == ::geteuid() && (status.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

}  // namespace

LinuxSingleInstance::LinuxSingleInstance(const QString& folder) : m_folder(folder) {}

LinuxSingleInstance::~LinuxSingleInstance() {
    m_notifier.reset();
    if (m_socket.isValid()) {
        // Before the lock goes: afterwards the name may belong to the next holder.
        QFile::remove(socketPath());
    }
}

QString LinuxSingleInstance::defaultFolder(const QString& configuration) {
    QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (runtime.isEmpty()) {
        // Started from outside the session the variable is missing, and the lock must be the same.
        runtime = QStringLiteral("/run/user/%1").arg(::geteuid());
    }
    return (isPrivateFolder(runtime) ? runtime : configuration) + QStringLiteral("/morvane-keeper");
}

QString LinuxSingleInstance::socketPath() const {
    return m_folder + QStringLiteral("/instance.sock");
}

SingleInstance::Outcome LinuxSingleInstance::acquire() {
    if (m_lock) {
        return Outcome::Holder;
    }
    QDir().mkpath(QFileInfo(m_folder).absolutePath());
    ::mkdir(QFile::encodeName(m_folder).constData(), S_IRWXU);
    auto lock = std::make_unique<QLockFile>(m_folder + QStringLiteral("/instance.lock"));
    lock->setStaleLockTime(0);  // age proves nothing: a session may last for weeks
    if (!lock->tryLock()) {
        if (lock->error() == QLockFile::LockFailedError) {
            return Outcome::AlreadyRunning;
        }
        throw std::runtime_error("instance.lock: the folder refuses the lock file");
    }
    m_lock = std::move(lock);
    listen();
    return Outcome::Holder;
}

void LinuxSingleInstance::listen() {
    sockaddr_un address{};
    if (!fillAddress(socketPath(), address)) {
        return;
    }
    UniqueFd socket = datagramSocket();
    QFile::remove(socketPath());  // left by a crash; the lock says that nobody listens on it
    if (!socket.isValid() ||
        ::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        return;  // raising a window is a convenience; the lock stands
    }
    ::chmod(address.sun_path, S_IRUSR | S_IWUSR);
    m_socket = std::move(socket);
    m_notifier = std::make_unique<QSocketNotifier>(m_socket.get(), QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &LinuxSingleInstance::receive);
}

void LinuxSingleInstance::receive() {
    std::array<char, longestMessage> buffer{};
    const ssize_t size = ::recv(m_socket.get(), buffer.data(), buffer.size(), 0);
    if (size < 1 || buffer.front() != raiseLetter) {
        return;
    }
    Q_EMIT raiseRequested(QString::fromUtf8(buffer.data() + 1, size - 1));
}

bool LinuxSingleInstance::askHolder(const QString& path) {
    sockaddr_un address{};
    const UniqueFd socket = datagramSocket();
    QByteArray message(1, raiseLetter);
    message += path.toUtf8();
    if (!socket.isValid() || static_cast<std::size_t>(message.size()) > longestMessage ||
        !fillAddress(socketPath(), address)) {
        return false;
    }
    // Without blocking: a holder that hangs must not hang the second start.
    return ::sendto(socket.get(), message.constData(), static_cast<std::size_t>(message.size()),
                    MSG_NOSIGNAL, reinterpret_cast<const sockaddr*>(&address),
                    sizeof address) == message.size();
}

}  // namespace keeper
