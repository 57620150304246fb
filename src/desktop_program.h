// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QApplication>
#include <memory>

namespace keeper {

/// The desktop program's objects, made once and handed down by reference.
class DesktopProgram {
  public:
    DesktopProgram();
    ~DesktopProgram();
    DesktopProgram(const DesktopProgram&) = delete;
    DesktopProgram& operator=(const DesktopProgram&) = delete;

    /// Runs checks, login and session to their end; the exit status of the process.
    int run(const QString& commandLine);

  private:
    struct Graph;
    std::unique_ptr<Graph> m_graph;
};

}  // namespace keeper
