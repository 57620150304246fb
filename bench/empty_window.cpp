// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

// The least that a program of this toolkit does up to a painted window: the peer of the start.

#include <QApplication>
#include <QLabel>

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QLabel label(QStringLiteral("window"));
    label.setWindowTitle(QStringLiteral("empty window"));
    label.resize(400, 300);
    label.show();
    return QApplication::exec();
}
