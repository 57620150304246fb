// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "crypto/rijndael.h"

namespace keeper::rijndael {

const Implementation& selectImplementation(unsigned /*allowed*/) {
    return portableImplementation;
}

}  // namespace keeper::rijndael
