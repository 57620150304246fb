// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/widgets/key_edit.h"

#include <QClipboard>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>

#include "crypto/secure_wipe.h"

namespace keeper {

KeyEdit::KeyEdit(QWidget* parent) : QLineEdit(parent) {
    setEchoMode(Password);
    setDragEnabled(false);
    setAcceptDrops(false);
    applyInputMethod();
}

KeyEdit::~KeyEdit() {
    const QSignalBlocker quiet(this);
    wipe();
}

void KeyEdit::setInputMethodAllowed(bool isAllowed) {
    m_isInputMethodAllowed = isAllowed;
    applyInputMethod();
}

void KeyEdit::setShown(bool isShown) {
    setEchoMode(isShown ? Normal : Password);
    // The toolkit switches the input method on again with each change of the echo.
    applyInputMethod();
}

void KeyEdit::applyInputMethod() {
    Qt::InputMethodHints hints =
        Qt::ImhSensitiveData | Qt::ImhNoPredictiveText | Qt::ImhNoAutoUppercase;
    // Input methods take "hidden text" as the wish to be left out, so it must go with the switch.
    if (!m_isInputMethodAllowed) {
        hints |= Qt::ImhHiddenText;
    }
    setInputMethodHints(hints);
    setAttribute(Qt::WA_InputMethodEnabled, m_isInputMethodAllowed);
    if (hasFocus()) {
        QGuiApplication::inputMethod()->reset();
        QGuiApplication::inputMethod()->update(Qt::ImQueryAll);
    }
}

void KeyEdit::wipe() {
    // Text in the clear has one owner more, the layout that paints it.
    const bool wasShown = isShown();
    if (wasShown) {
        setShown(false);
    }
    // text() shares the edit's own buffer, so writing through it without detaching reaches the
    // original. Two owners are the edit and this variable; a third one still needs the text, and a
    // buffer without a header lies in read-only memory.
    QString shared = text();
    const auto* header = shared.data_ptr().d_ptr();
    if (header != nullptr && header->ref_.loadRelaxed() == 2) {
        secureWipe(const_cast<QChar*>(shared.constData()),
                   static_cast<std::size_t>(shared.size()) * sizeof(QChar));
    }
    clear();
    setText(QString());  // unlike clear(), also drops the list of undone changes
    if (wasShown) {
        setShown(true);
    }
}

QVariant KeyEdit::inputMethodQuery(Qt::InputMethodQuery query) const {
    if (!m_isInputMethodAllowed) {
        if (query == Qt::ImEnabled) {
            return false;
        }
        if (query == Qt::ImSurroundingText || query == Qt::ImCurrentSelection ||
            query == Qt::ImTextBeforeCursor || query == Qt::ImTextAfterCursor) {
            return {};
        }
    }
    return QLineEdit::inputMethodQuery(query);
}

bool KeyEdit::event(QEvent* event) {
    if (event->type() == QEvent::ShortcutOverride) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (key->matches(QKeySequence::Copy) || key->matches(QKeySequence::Cut)) {
            event->accept();  // ours, so that no menu's copy acts instead
            return true;
        }
    }
    return QLineEdit::event(event);
}

void KeyEdit::keyPressEvent(QKeyEvent* event) {
    // "Delete to the end of the line" copies what it deletes, as the other two do.
    if (event->matches(QKeySequence::Copy) || event->matches(QKeySequence::Cut) ||
        event->matches(QKeySequence::DeleteEndOfLine) ||
        event->matches(QKeySequence::DeleteCompleteLine)) {
        event->accept();
        return;
    }
    QLineEdit::keyPressEvent(event);
}

void KeyEdit::inputMethodEvent(QInputMethodEvent* event) {
    if (!m_isInputMethodAllowed) {
        event->ignore();
        return;
    }
    QLineEdit::inputMethodEvent(event);
}

void KeyEdit::mouseReleaseEvent(QMouseEvent* event) {
    // The left release hands the selected text to every middle click on the desktop.
    if (event->button() == Qt::LeftButton) {
        event->accept();
        return;
    }
    QLineEdit::mouseReleaseEvent(event);
}

void KeyEdit::contextMenuEvent(QContextMenuEvent* event) {
    QMenu menu(this);
    QAction* paste = menu.addAction(QStringLiteral("粘贴(&P)"), this, &QLineEdit::paste);
    paste->setEnabled(!isReadOnly() &&
                      !QGuiApplication::clipboard()->text(QClipboard::Clipboard).isEmpty());
    QAction* all = menu.addAction(QStringLiteral("全选(&A)"), this, &QLineEdit::selectAll);
    all->setEnabled(!text().isEmpty());
    QAction* empty = menu.addAction(QStringLiteral("清空(&D)"), this, &KeyEdit::wipe);
    empty->setEnabled(!isReadOnly() && !text().isEmpty());
    menu.exec(event->globalPos());
}

void KeyEdit::focusInEvent(QFocusEvent* event) {
    QLineEdit::focusInEvent(event);
    Q_EMIT focusChanged();
}

void KeyEdit::focusOutEvent(QFocusEvent* event) {
    QLineEdit::focusOutEvent(event);
    Q_EMIT focusChanged();
}

}  // namespace keeper
