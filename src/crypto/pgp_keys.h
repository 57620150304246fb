// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <array>

#include "crypto/cryptor4.h"

namespace keeper {

/// Made once by generate-pgp-keys. Stored data depends on each number.
extern const std::array<Cryptor4::Key, 50> kPgpKeys;

}  // namespace keeper
