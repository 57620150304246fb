// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <sys/stat.h>

#include <QString>
#include <cstdint>
#include <span>

namespace keeper {

/// An open file that owns its descriptor. Every failure throws CryptorError with one of the numbers
/// below and a Chinese description; interrupted calls are taken up again.
class PosixFile {
  public:
    enum Failure : std::int32_t {
        FileNotFound = 53,
        DeviceError = 57,
        AlreadyExists = 58,
        DiskFull = 61,
        PastTheEnd = 62,
        AccessRefused = 70,
        NotAFile = 75,
        PathNotFound = 76,
    };

    /// A regular file for reading from start to end.
    [[nodiscard]] static PosixFile openSource(const QString& path);
    /// A regular file for writing from its start. What it holds already is not cut off. A new one
    /// gets the permissions `mode`, less the process's mask.
    [[nodiscard]] static PosixFile openTarget(const QString& path, mode_t mode);
    /// A new file for its owner alone, in the folder of `target`; `path` becomes its path. Fails
    /// with NotAFile where a folder or a device stands at `target`.
    [[nodiscard]] static PosixFile createBeside(const QString& target, QString& path);

    PosixFile() = default;
    ~PosixFile();
    PosixFile(PosixFile&& other) noexcept;
    PosixFile& operator=(PosixFile&& other) noexcept;

    [[nodiscard]] bool isOpen() const { return m_descriptor >= 0; }
    [[nodiscard]] std::int64_t size() const { return m_status.st_size; }
    [[nodiscard]] mode_t mode() const { return m_status.st_mode; }
    /// Also true through links.
    [[nodiscard]] bool isSameFileAs(const PosixFile& other) const;
    [[nodiscard]] bool isAt(const QString& path) const;

    /// Fills `bytes` or fails with PastTheEnd.
    void read(std::span<std::uint8_t> bytes);
    void readAt(std::int64_t offset, std::span<std::uint8_t> bytes);
    void write(std::span<const std::uint8_t> bytes);
    /// Asks the system to fetch a stretch soon; returns at once.
    void readAhead(std::int64_t offset, std::int64_t length);
    /// Asks the system to begin to write a stretch to the disk; returns at once.
    void beginWriteBack(std::int64_t offset, std::int64_t length);
    /// Reports what the file system found out only now.
    void close();
    /// What was written survives a power cut when this has returned; its name need not.
    void flush();
    /// Closes without a word, on the way out of a failure.
    void abandon() noexcept;

    /// Deletes the file that this object had opened from `path`, also through a symbolic link.
    /// Leaves devices alone, and another file that stands there meanwhile.
    void remove(const QString& path) noexcept;

    /// True for a regular file of at least one byte.
    [[nodiscard]] static bool isUsable(const QString& path);
    /// Contents and name of the file survive a power cut when this has returned.
    static void flushToDisk(const QString& path);
    /// The name of the file survives a power cut when this has returned.
    static void flushFolderOf(const QString& path);
    static void deleteFile(const QString& path);
    /// In one step. With `keepExisting` a file that stands at `to` is AlreadyExists.
    static void moveFile(const QString& from, const QString& to, bool keepExisting);
    /// Permissions `mode`, less the process's mask.
    static void setPermissions(const QString& path, mode_t mode);

  private:
    PosixFile(const QString& path, int flags, mode_t mode, Failure whenMissing);

    int m_descriptor = -1;
    struct stat m_status {};
};

}  // namespace keeper
