// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

namespace keeper {

/// Proves in a few milliseconds that the linked engine is the encrypting one and works: a small
/// database in `folder` (deleted again) must not show its content in clear, must open under its
/// password and must refuse another. An empty text means that all is well, else what is not.
[[nodiscard]] QString databaseSelfTest(const QString& folder);

}  // namespace keeper
