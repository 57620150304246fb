// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <cstddef>
#include <cstdint>
#include <span>

namespace keeper {

/// A regular file, open for reading from its start to its end. Throws std::system_error, which
/// tells why: no such file, no permission, not a regular file, a device that fails.
class FileReader {
  public:
    explicit FileReader(const QString& path);
    ~FileReader();
    FileReader(const FileReader&) = delete;
    FileReader& operator=(const FileReader&) = delete;

    /// Length in bytes when the file was opened.
    [[nodiscard]] std::uint64_t size() const { return m_size; }

    /// Fills `bytes`; fewer only at the end of the file.
    [[nodiscard]] std::size_t read(std::span<std::uint8_t> bytes);

  private:
    int m_descriptor = -1;
    std::uint64_t m_size = 0;
};

}  // namespace keeper
