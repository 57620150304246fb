// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
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
/// 3. A damaged file is kept under another name before a new one is written, and a file that
///    cannot be read, or that a later version wrote, is never replaced.
class RegistryStore {
  public:
    RegistryStore(QString folder, const Clock& clock);

    /// Nothing there yet is an empty registry. Throws std::system_error when the file cannot be
    /// read and KeeperError when it is damaged or of a later version.
    [[nodiscard]] RegistryImage read() const;

    /// Applies `operation` to the current content and writes the outcome when it differs. Nothing
    /// is written when anything throws.
    void change(const std::function<void(RegistryImage&)>& operation);

    [[nodiscard]] QString path() const;

  private:
    [[nodiscard]] RegistryImage readForChange(bool& exists);

    QString m_folder;
    const Clock& m_clock;
};

}  // namespace keeper
