// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

namespace keeper {

/// From now on no memory goes back to the heap with its content. To be called before the first
/// secret comes into memory; what stands before that, mostly fonts and pictures, is freed without
/// the wiping, which would take a tenth of the start.
void startWipingHeap();

}  // namespace keeper
