// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "cli/progress_bar.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <QByteArray>
#include <algorithm>

namespace keeper::cli {

namespace {

constexpr int kWidest = 50;
/// Brackets, blanks and the number.
constexpr int kAroundTheBar = 9;

void toTerminal(const QByteArray& bytes) {
    // A bar that cannot be drawn is no reason to end the work.
    [[maybe_unused]] const ssize_t written =
        ::write(STDERR_FILENO, bytes.constData(), static_cast<std::size_t>(bytes.size()));
}

}  // namespace

ProgressBar::ProgressBar() {
    if (::isatty(STDERR_FILENO) == 1) {
        winsize size{};
        const bool isKnown = ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
        m_columns = std::clamp((isKnown ? size.ws_col : 80) - kAroundTheBar, 0, kWidest);
    }
}

ProgressBar::~ProgressBar() {
    if (m_shown >= 0) {
        toTerminal("\r\033[K");
    }
}

void ProgressBar::show(float percent) {
    const int whole = std::clamp(static_cast<int>(percent), 0, 100);
    if (m_columns == 0 || whole == m_shown) {
        return;
    }
    m_shown = whole;
    const int filled = m_columns * whole / 100;
    toTerminal("\r[" + QByteArray(filled, '#') + QByteArray(m_columns - filled, ' ') + "] " +
               QByteArray::number(whole).rightJustified(3) + "%");
}

}  // namespace keeper::cli
