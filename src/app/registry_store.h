// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <functional>
#include <memory>

#include "app/registry_image.h"
#include "platform/clock.h"

namespace keeper {

/// The registry on disk: the file "registry" in the program's folder (0700, files 0600).
///
/// Invariants:
/// 1. A change is read, applied and written under one lock, so two writers lose nothing.
/// 2. The file holds the old or the new content at every moment, also after a power cut.
/// 3. The bytes of a damaged file are kept under another name before a new one takes its place, and
///    a file that cannot be read, or that a later version wrote, is never replaced.
/// 4. What is written can be read again: an image above 16 MiB is refused.
class RegistryStore {
  public:
    RegistryStore(QString folder, const Clock& clock);

    /// Nothing there yet is an empty registry. Throws std::system_error when the file cannot be
    /// read and KeeperError when it is damaged or of a later version.
    [[nodiscard]] RegistryImage read() const;

    /// Applies `operation` to the current content and writes the outcome when it differs. Nothing
    /// is written when anything throws.
    void change(const std::function<void(RegistryImage&)>& operation);
    /// For an operation that replaces something unreadable: the bytes of the present file are kept
    /// under another name before the change replaces it.
    void keepFormer() { m_keepsFormer = true; }

    [[nodiscard]] QString path() const;
    /// Full paths of what was damaged once and is kept beside the registry.
    [[nodiscard]] QStringList damagedFiles() const;

  private:
    [[nodiscard]] QStringList filesAside(const QString& suffix) const;
    void keepAside(const QByteArray& bytes, const QString& suffix) const;

    QString m_folder;
    const Clock& m_clock;
    bool m_keepsFormer = false;
};

}  // namespace keeper
