// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/widgets/modal_windows.h"

#include <QApplication>
#include <QDialog>

namespace keeper {

void closeModalWindows() {
    for (QWidget* window : QApplication::topLevelWidgets()) {
        auto* dialog = qobject_cast<QDialog*>(window);
        if (dialog != nullptr && dialog->isVisible() && dialog->isModal()) {
            dialog->reject();
        }
    }
    while (QWidget* popup = QApplication::activePopupWidget()) {
        popup->close();
    }
}

}  // namespace keeper
