// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/program_info.h"

namespace keeper {

QString programTitle() {
    return QStringLiteral("Morvane Keeper");
}

QString programVersion() {
    return QStringLiteral(KEEPER_VERSION);
}

}  // namespace keeper
