// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "cli/signal_watch.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <system_error>

namespace keeper::cli {

namespace {

/// Without those that the caller had ignored: a run under nohup outlives its terminal.
sigset_t endingSignals() {
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
        struct sigaction current {};
        if (::sigaction(signal, nullptr, &current) == 0 && current.sa_handler != SIG_IGN) {
            sigaddset(&set, signal);
        }
    }
    return set;
}

}  // namespace

SignalWatch::SignalWatch() {
    const sigset_t set = endingSignals();
    m_descriptor = ::signalfd(-1, &set, SFD_NONBLOCK | SFD_CLOEXEC);
    if (m_descriptor < 0 || ::sigprocmask(SIG_BLOCK, &set, nullptr) != 0) {
        throw std::system_error(errno, std::generic_category(), "signalfd");
    }
}

SignalWatch::~SignalWatch() {
    ::close(m_descriptor);
}

int SignalWatch::pending() {
    signalfd_siginfo info{};
    if (m_first == 0 && ::read(m_descriptor, &info, sizeof info) == sizeof info) {
        m_first = static_cast<int>(info.ssi_signo);
    }
    return m_first;
}

}  // namespace keeper::cli
