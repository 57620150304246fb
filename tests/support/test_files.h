// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QFile>
#include <QString>
#include <QTemporaryDir>
#include <cstdint>
#include <random>
#include <span>
#include <string>
#include <vector>

namespace keeper {

using Bytes = std::vector<std::uint8_t>;

/// A folder of the test's own, and the files in it as bytes.
class TestFiles {
  public:
    [[nodiscard]] QString path(const QString& name) const { return m_folder.filePath(name); }

    QString write(const QString& name, std::span<const std::uint8_t> bytes) const {
        QFile file(path(name));
        if (!file.open(QIODevice::WriteOnly) ||
            file.write(reinterpret_cast<const char*>(bytes.data()),
                       static_cast<qsizetype>(bytes.size())) !=
                static_cast<qsizetype>(bytes.size())) {
            throw std::runtime_error("cannot write the test's file");
        }
        return path(name);
    }

    /// A file without disk blocks, for sizes that no test should write.
    QString writeSparse(const QString& name, qint64 size) const {
        QFile file(path(name));
        if (!file.open(QIODevice::WriteOnly) || !file.resize(size)) {
            throw std::runtime_error("cannot size the test's file");
        }
        return path(name);
    }

    [[nodiscard]] Bytes read(const QString& name) const {
        QFile file(path(name));
        if (!file.open(QIODevice::ReadOnly)) {
            throw std::runtime_error("cannot read the test's file");
        }
        const QByteArray content = file.readAll();
        return Bytes(content.begin(), content.end());
    }

    [[nodiscard]] bool exists(const QString& name) const { return QFile::exists(path(name)); }

  private:
    QTemporaryDir m_folder;
};

/// Reproducible bytes without a pattern.
inline Bytes noise(std::size_t count, unsigned seed = 1) {
    std::mt19937 generator(seed);
    Bytes bytes(count);
    for (std::uint8_t& byte : bytes) {
        byte = static_cast<std::uint8_t>(generator());
    }
    return bytes;
}

}  // namespace keeper
