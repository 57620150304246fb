// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "crypto/replacement_file.h"

namespace keeper {

ReplacementFile::ReplacementFile(const QString& target)
    : m_target(target), m_file(PosixFile::createBeside(target, m_path)) {}

ReplacementFile::~ReplacementFile() {
    if (!m_isPlaced) {
        m_file.remove(m_path);
    }
}

void ReplacementFile::replaceTarget(mode_t mode, Flush flush, Existing existing) {
    m_file.close();
    if (flush == Flush::Yes) {
        PosixFile::flushToDisk(m_path);
    }
    PosixFile::setPermissions(m_path, mode);
    PosixFile::moveFile(m_path, m_target, existing == Existing::Keep);
    m_isPlaced = true;
    if (flush == Flush::Yes) {
        PosixFile::flushToDisk(m_target);
    }
}

}  // namespace keeper
