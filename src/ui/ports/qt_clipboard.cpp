// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/ports/qt_clipboard.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

namespace keeper {

void QtClipboard::setText(const QString& text, Kind kind) {
    auto* data = new QMimeData;
    data->setText(text);
    if (kind == Kind::Secret) {
        // The one hint that clipboard histories agree on.
        data->setData(QStringLiteral("x-kde-passwordManagerHint"), QByteArrayLiteral("secret"));
    }
    QGuiApplication::clipboard()->setMimeData(data, QClipboard::Clipboard);
}

QString QtClipboard::text() const {
    return QGuiApplication::clipboard()->text(QClipboard::Clipboard);
}

bool QtClipboard::isOwned() const {
    return QGuiApplication::clipboard()->ownsClipboard();
}

bool QtClipboard::clear() {
    if (!isOwned()) {
        return false;
    }
    QGuiApplication::clipboard()->clear(QClipboard::Clipboard);
    return true;
}

void QtClipboard::clearSelection() {
    if (QGuiApplication::clipboard()->ownsSelection()) {
        QGuiApplication::clipboard()->clear(QClipboard::Selection);
    }
}

}  // namespace keeper
