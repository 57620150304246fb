// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <gtest/gtest.h>

#include <QDir>
#include <QTemporaryDir>
#include <array>

namespace keeper {

/// A fresh home with its own XDG folders for the life of the object; the old environment comes
/// back.
class TempHome {
  public:
    TempHome() {
        EXPECT_TRUE(m_dir.isValid());
        for (std::size_t i = 0; i < kVariables.size(); ++i) {
            m_old.at(i) = qgetenv(kVariables.at(i).name);
            const QString folder = m_dir.filePath(QString::fromLatin1(kVariables.at(i).folder));
            QDir().mkpath(folder);
            qputenv(kVariables.at(i).name, folder.toUtf8());
        }
    }
    ~TempHome() {
        for (std::size_t i = 0; i < kVariables.size(); ++i) {
            if (m_old.at(i).isNull()) {
                qunsetenv(kVariables.at(i).name);
            } else {
                qputenv(kVariables.at(i).name, m_old.at(i));
            }
        }
    }
    TempHome(const TempHome&) = delete;
    TempHome& operator=(const TempHome&) = delete;

    [[nodiscard]] QString path(const QString& name = {}) const {
        return name.isEmpty() ? m_dir.path() : m_dir.filePath(name);
    }

  private:
    struct Variable {
        const char* name;
        const char* folder;
    };
    static constexpr std::array<Variable, 6> kVariables{{{"HOME", "home"},
                                                         {"XDG_CONFIG_HOME", "home/.config"},
                                                         {"XDG_DATA_HOME", "home/.local/share"},
                                                         {"XDG_STATE_HOME", "home/.local/state"},
                                                         {"XDG_CACHE_HOME", "home/.cache"},
                                                         {"XDG_RUNTIME_DIR", "run"}}};
    QTemporaryDir m_dir;
    std::array<QByteArray, kVariables.size()> m_old;
};

}  // namespace keeper
