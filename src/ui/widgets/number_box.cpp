// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/widgets/number_box.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <algorithm>
#include <utility>

namespace keeper {

NumberBox::NumberBox(QWidget* parent) : QSpinBox(parent) {
    // The edit is silent about the arrows, and the number about what is not one.
    connect(lineEdit(), &QLineEdit::textChanged, this, &NumberBox::typed);
    connect(this, &QSpinBox::textChanged, this, &NumberBox::typed);
    connect(this, &QSpinBox::editingFinished, this, [this] {
        if (std::exchange(m_isUnfinished, false)) {
            Q_EMIT leftUnfinished();
        }
    });
}

QValidator::State NumberBox::validate(QString& text, int& /*position*/) const {
    const bool isDigits =
        std::all_of(text.cbegin(), text.cend(), [](QChar c) { return c >= u'0' && c <= u'9'; });
    if (!isDigits) {
        return QValidator::Invalid;
    }
    bool isNumber = false;
    const int number = text.toInt(&isNumber);
    return isNumber && number >= minimum() && number <= maximum() ? QValidator::Acceptable
                                                                  : QValidator::Intermediate;
}

void NumberBox::fixup(QString& text) const {
    // An empty box is just filled again.
    m_isUnfinished = !text.isEmpty();
    QSpinBox::fixup(text);
}

void NumberBox::keyPressEvent(QKeyEvent* event) {
    const bool isRefused = !hasAcceptableInput() && !text().isEmpty();
    QSpinBox::keyPressEvent(event);
    if (isRefused && (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)) {
        event->accept();  // the dialog must not close with another number than the one typed
    }
}

}  // namespace keeper
