// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/linux/unix_signals.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <system_error>

namespace keeper {
namespace {

constexpr std::array watchedSignals = {SIGTERM, SIGINT, SIGHUP};

// The only way from a handler to an object; set for the lifetime of the one UnixSignals.
std::atomic<int> writeEnd{-1};
std::array<struct sigaction, watchedSignals.size()> formerActions{};

extern "C" void passOn(int signalNumber) {
    const int saved = errno;
    const auto byte = static_cast<unsigned char>(signalNumber);
    // A full socket means that news are waiting already.
    [[maybe_unused]] const ssize_t ignored = ::write(writeEnd.load(), &byte, 1);
    errno = saved;
}

}  // namespace

UnixSignals::UnixSignals() {
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends.data()) != 0) {
        throw std::system_error(errno, std::generic_category(), "socketpair");
    }
    m_readEnd = ends[0];
    writeEnd.store(ends[1]);
    m_notifier = new QSocketNotifier(m_readEnd, QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &UnixSignals::drain);

    struct sigaction action {};
    action.sa_handler = passOn;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    for (std::size_t i = 0; i < watchedSignals.size(); ++i) {
        ::sigaction(watchedSignals.at(i), &action, &formerActions.at(i));
    }
}

UnixSignals::~UnixSignals() {
    for (std::size_t i = 0; i < watchedSignals.size(); ++i) {
        ::sigaction(watchedSignals.at(i), &formerActions.at(i), nullptr);
    }
    ::close(writeEnd.exchange(-1));
    ::close(m_readEnd);
}

void UnixSignals::drain() {
    std::array<unsigned char, 16> bytes{};
    const ssize_t got = ::read(m_readEnd, bytes.data(), bytes.size());
    if (got > 0) {
        // Several at once ask for the same end: one is told.
        Q_EMIT received(bytes.front());
    }
}

}  // namespace keeper
