// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

namespace keeper {

/// Rejects all modal dialogs and boxes, and closes menus: what waits for them goes on with a
/// refusal, level by level of the event loop.
void closeModalWindows();

}  // namespace keeper
