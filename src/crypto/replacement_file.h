// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QByteArray>
#include <QString>

#include "crypto/posix_file.h"

namespace keeper {

/// A file that grows under a name of its own beside its target and takes the target's place in one
/// step when it is whole. Given up before that, it vanishes and the target is as it was. Failures
/// throw CryptorError as in PosixFile.
class ReplacementFile {
  public:
    /// Before it takes the target's place: whether its content must be on the disk, because
    /// something else is deleted for it.
    enum class Flush { No, Yes };
    /// What to do with a file that stands at the target.
    enum class Existing { Replace, Keep };

    explicit ReplacementFile(const QString& target);
    ~ReplacementFile();
    ReplacementFile(const ReplacementFile&) = delete;
    ReplacementFile& operator=(const ReplacementFile&) = delete;

    [[nodiscard]] PosixFile& file() { return m_file; }
    /// For those who write by path. Readable by the owner alone until the replacement.
    [[nodiscard]] const QString& path() const { return m_path; }

    /// Gives the file the permissions `mode` less the process's mask, and the target's name.
    /// Throws AlreadyExists where a file stands there that is to be kept.
    void replaceTarget(mode_t mode, Flush flush, Existing existing = Existing::Replace);

  private:
    QString m_target;
    QString m_path;
    PosixFile m_file;
    bool m_isPlaced = false;
};

}  // namespace keeper
