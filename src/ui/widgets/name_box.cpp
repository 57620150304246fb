// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/widgets/name_box.h"

#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QWheelEvent>
#include <algorithm>

#include "store/schema.h"

namespace keeper {
namespace {

bool isIndication(const QString& text) {
    return text == kCustomName || text == QStringLiteral("(无密码)") ||
           text == QStringLiteral("(无号码)");
}

}  // namespace

void NameBox::present(const QString& text) {
    m_isIndicating = isIndication(text);
    setEditText(text);
    lineEdit()->setCursorPosition(0);
}

QString NameBox::takeEdit(const QString& shown, const QString& text) {
    if (!m_isIndicating) {
        return text;
    }
    const auto head = std::mismatch(shown.begin(), shown.end(), text.begin(), text.end());
    const auto kept = head.first - shown.begin();
    const bool isInserted =
        text.size() > shown.size() && text.endsWith(QStringView(shown).mid(kept));
    QString typed = isInserted ? text.mid(kept, text.size() - shown.size()) : text;
    m_isIndicating = false;
    setEditText(typed);
    return typed;
}

void NameBox::showPopup() {
    if (!isReader()) {
        QComboBox::showPopup();
    }
}

void NameBox::keyPressEvent(QKeyEvent* event) {
    const bool isWalking = event->key() == Qt::Key_Up || event->key() == Qt::Key_Down ||
                           event->key() == Qt::Key_PageUp || event->key() == Qt::Key_PageDown;
    if (isWalking && isReader()) {
        event->ignore();
        return;
    }
    const bool isEdit = (!event->text().isEmpty() && event->text().front().isPrint()) ||
                        event->key() == Qt::Key_Backspace || event->key() == Qt::Key_Delete ||
                        event->matches(QKeySequence::Paste);
    if (isEdit) {
        giveWay();
    }
    QComboBox::keyPressEvent(event);
}

void NameBox::inputMethodEvent(QInputMethodEvent* event) {
    if (!event->preeditString().isEmpty() || !event->commitString().isEmpty()) {
        giveWay();
    }
    QComboBox::inputMethodEvent(event);
}

/// A wheel that passes over the pane must not change what an entry is bound to.
void NameBox::wheelEvent(QWheelEvent* event) {
    event->ignore();
}

bool NameBox::isReader() const {
    return lineEdit()->isReadOnly();
}

void NameBox::giveWay() {
    if (m_isIndicating && !isReader()) {
        lineEdit()->selectAll();
        m_isIndicating = false;
    }
}

}  // namespace keeper
