// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

namespace keeper::cli {

/// A bar on standard error when that is a terminal, nothing otherwise. Gone when it is destroyed.
class ProgressBar {
  public:
    ProgressBar();
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void show(float percent);

  private:
    int m_columns = 0;
    int m_shown = -1;
};

}  // namespace keeper::cli
