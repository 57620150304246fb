// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>

namespace keeper {

/// A passing note by the desktop's notification service. Waits for nothing; without a service the
/// note is lost. The text is shown as it is, never as markup.
void notifyDesktop(const QString& title, const QString& text);

}  // namespace keeper
