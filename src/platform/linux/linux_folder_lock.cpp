// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/linux/linux_folder_lock.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/inotify.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <exception>

#include "platform/durable_file.h"

namespace keeper {
namespace {

/// Between two attempts to give files back that somebody goes on deleting.
constexpr std::chrono::milliseconds kFirstRetry{50};
constexpr std::chrono::milliseconds kLongestRetry{10'000};

}  // namespace

LinuxFolderLock::LinuxFolderLock(const QString& stateFolder, QString watchdog)
    : m_stateFolder(stateFolder), m_watchdog(std::move(watchdog)) {
    m_mending.setSingleShot(true);
    QObject::connect(&m_mending, &QTimer::timeout, [this] { mend(); });
}

LinuxFolderLock::~LinuxFolderLock() {
    unlock();
}

bool LinuxFolderLock::lock(const QString& folder) {
    if (m_pin) {
        return m_name == folder;
    }
    try {
        // A journal left by an older lock must not be overwritten before it was obeyed.
        if (!FolderPin::heal(journalOf(folder))) {
            return false;
        }
        const QString journal = journalOf(folder);
        // Through a link as the last step: the folder itself is pinned.
        const QString real = QFileInfo(folder).canonicalFilePath();
        m_folder = real.isEmpty() ? folder : real;
        ensurePrivateFolder(m_stateFolder);
        m_links.emplace(FolderPin::mirrorOf(journal));
        if (!QFileInfo::exists(journal)) {
            m_links->remove();  // of a lock that was cut short before it had begun
        }
        m_links->make(m_folder);
        m_pin.emplace(m_folder, journal);
    } catch (const std::exception&) {
        if (m_links && !m_pin) {
            m_links->remove();
        }
        return false;
    }
    m_name = folder;
    watch();
    startWatchdog();
    return true;
}

void LinuxFolderLock::unlock() {
    m_notifier.reset();
    m_events.reset();
    if (m_pin) {
        if (!m_links->isWhole(whereNow())) {
            mend();
            m_notifier.reset();
            m_events.reset();
        }
        m_mending.stop();
        if (m_links->isWhole(whereNow())) {
            m_links->remove();
        } else {
            m_pin->keepJournal();  // the next start tries again
        }
    }
    m_pin.reset();
    stopWatchdog();
}

QString LinuxFolderLock::journalOf(const QString& folder) const {
    const QByteArray name =
        QCryptographicHash::hash(folder.toUtf8(), QCryptographicHash::Sha1).toHex().first(16);
    return m_stateFolder + QStringLiteral("/folder-lock-") + QString::fromLatin1(name) +
           QStringLiteral(".json");
}

void LinuxFolderLock::heal() const {
    const QDir state(m_stateFolder);
    for (const QString& name : state.entryList({QStringLiteral("folder-lock-*.json")})) {
        try {
            FolderPin::heal(state.filePath(name));
        } catch (const std::exception&) {
            // An unreadable journal of one folder must not keep the others locked.
        }
    }
}

void LinuxFolderLock::watch() {
    m_events = UniqueFd(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
    if (!m_events.isValid()) {
        return;  // the pin itself stands
    }
    for (const int folder : m_pin->descriptors()) {
        // Through the descriptor: a path may lead elsewhere by now.
        const QByteArray path = QStringLiteral("/proc/self/fd/%1").arg(folder).toLocal8Bit();
        ::inotify_add_watch(
            m_events.get(), path.constData(),
            IN_MOVE_SELF | IN_ATTRIB | IN_DELETE | IN_DELETE_SELF | IN_MOVED_FROM | IN_ONLYDIR);
    }
    m_notifier = std::make_unique<QSocketNotifier>(m_events.get(), QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, [this] { drain(); });
}

void LinuxFolderLock::drain() {
    alignas(inotify_event) std::array<char, 4096> events{};
    while (::read(m_events.get(), events.data(), events.size()) > 0) {
    }
    // In this order: a folder without the right to write cannot be moved to another parent.
    putBack();
    if (m_links->isWhole(whereNow())) {
        m_pin->renew();
    } else {
        m_retry = kFirstRetry;
        m_mending.start(0);  // which makes the notifier anew that calls here
    }
}

/// It may have moved with a folder above it, which nothing tells and nobody can forbid.
QString LinuxFolderLock::whereNow() const {
    const QString path =
        QFile::symLinkTarget(QStringLiteral("/proc/self/fd/%1").arg(m_pin->descriptor()));
    return QFileInfo(path).isDir() ? path : m_folder;
}

/// Somebody was quick enough to delete files.
void LinuxFolderLock::mend() {
    bool isTaken = false;
    try {
        m_pin->takeAnew(whereNow(), [this] { m_links->restore(whereNow()); });
        watch();
        isTaken = true;
    } catch (const std::exception&) {
        // A folder has gone between two looks, and will come back with the next ones.
    }
    if (!isTaken || !m_links->isWhole(whereNow())) {
        m_mending.start(m_retry);
        m_retry = std::min(m_retry * 2, kLongestRetry);
    }
}

void LinuxFolderLock::putBack() const {
    const QString here =
        QFile::symLinkTarget(QStringLiteral("/proc/self/fd/%1").arg(m_pin->descriptor()));
    if (here.isEmpty() || here == m_folder) {
        return;
    }
    ::renameat2(AT_FDCWD, QFile::encodeName(here).constData(), AT_FDCWD,
                QFile::encodeName(m_folder).constData(), RENAME_NOREPLACE);
}

void LinuxFolderLock::startWatchdog() {
    std::array<int, 2> ends{};
    if (m_watchdog.isEmpty() ||
        ::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
        return;
    }
    const UniqueFd readEnd(ends[0]);
    m_lifeline = UniqueFd(ends[1]);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, readEnd.get(), STDIN_FILENO);
    posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    // A session of its own: what ends the program's whole group must leave it alive.
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
    QByteArray program = QFile::encodeName(m_watchdog);
    QByteArray option(kWatchdogOption);
    QByteArray journal = QFile::encodeName(journalOf(m_folder));
    const std::array<char*, 4> arguments{program.data(), option.data(), journal.data(), nullptr};
    if (::posix_spawn(&m_watchdogProcess, program.constData(), &actions, &attributes,
                      arguments.data(), environ) != 0) {
        m_watchdogProcess = -1;
        m_lifeline.reset();
    }
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
}

void LinuxFolderLock::stopWatchdog() {
    if (m_watchdogProcess < 0) {
        return;
    }
    // It has nothing to do any more, and somebody may have stopped it.
    ::kill(m_watchdogProcess, SIGKILL);
    while (::waitpid(m_watchdogProcess, nullptr, 0) < 0 && errno == EINTR) {
    }
    m_watchdogProcess = -1;
    m_lifeline.reset();
}

int LinuxFolderLock::watchdogMain(const char* journal) {
    char nothing = 0;
    // Until the other end is closed by the death of the program.
    while (::read(STDIN_FILENO, &nothing, 1) < 0 && errno == EINTR) {
    }
    try {
        return FolderPin::heal(QFile::decodeName(journal)) ? 0 : 1;
    } catch (const std::exception&) {
        return 1;
    }
}

}  // namespace keeper
