// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QtGlobal>

namespace keeper {

/// A count or seed that a long campaign hands to a test; `fallback` is the sample that always runs.
inline int campaignSetting(const char* name, int fallback) {
    bool isNumber = false;
    const int value = qEnvironmentVariableIntValue(name, &isNumber);
    return isNumber ? value : fallback;
}

}  // namespace keeper
