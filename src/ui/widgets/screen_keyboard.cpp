// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/widgets/screen_keyboard.h"

#include <QGridLayout>
#include <QPushButton>
#include <QScreen>
#include <array>

namespace keeper {
namespace {

struct KeyRow {
    const char16_t* plain;
    const char16_t* shifted;
    /// In half keys, as the rows of a keyboard stand.
    int indent;
};

constexpr std::array kKeyRows{
    KeyRow{u"`1234567890-=", u"~!@#$%^&*()_+", 0}, KeyRow{u"qwertyuiop[]\\", u"QWERTYUIOP{}|", 1},
    KeyRow{u"asdfghjkl;'", u"ASDFGHJKL:\"", 2}, KeyRow{u"zxcvbnm,./", u"ZXCVBNM<>?", 3}};
constexpr int kHalfKeys = 2;

/// A button eats the mark of a mnemonic.
QString keyText(QChar character) {
    return character == u'&' ? QStringLiteral("&&") : QString(character);
}

}  // namespace

ScreenKeyboard::ScreenKeyboard(QWidget* owner)
    : QFrame(owner, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus) {
    setObjectName(QStringLiteral("dlgKeyboard"));
    setAccessibleName(QStringLiteral("屏幕键盘"));
    setAttribute(Qt::WA_ShowWithoutActivating);
    setFrameShape(QFrame::StyledPanel);
    auto* grid = new QGridLayout(this);
    const int gap = fontMetrics().height() / 4;
    grid->setContentsMargins(gap * 2, gap * 2, gap * 2, gap * 2);
    grid->setSpacing(gap);
    addCharacters();
    const int last = static_cast<int>(kKeyRows.size());
    QPushButton* shift = addKey(last, 0, 6, QStringLiteral("大写"));
    shift->setCheckable(true);
    connect(shift, &QPushButton::toggled, this, [this](bool isOn) {
        m_isShifted = isOn;
        showCharacters();
    });
    QPushButton* blank = addKey(last, 6, 12, QStringLiteral("空格"));
    connect(blank, &QPushButton::clicked, this, [this] { Q_EMIT typed(QStringLiteral(" ")); });
    QPushButton* back = addKey(last, 18, 5, QStringLiteral("退格"));
    back->setAutoRepeat(true);
    connect(back, &QPushButton::clicked, this, &ScreenKeyboard::backspace);
    QPushButton* end = addKey(last, 23, 5, QStringLiteral("关闭"));
    connect(end, &QPushButton::clicked, this, &QWidget::hide);
    showCharacters();
}

QPushButton* ScreenKeyboard::addKey(int row, int column, int width, const QString& text) {
    auto* key = new QPushButton(text, this);
    key->setFocusPolicy(Qt::NoFocus);
    key->setAutoDefault(false);
    key->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    key->setMinimumWidth(fontMetrics().height() * width * 4 / 5);
    static_cast<QGridLayout*>(layout())->addWidget(key, row, column, 1, width);
    return key;
}

void ScreenKeyboard::addCharacters() {
    for (int row = 0; row < static_cast<int>(kKeyRows.size()); ++row) {
        const KeyRow& keys = kKeyRows.at(static_cast<std::size_t>(row));
        const int count = static_cast<int>(QStringView(keys.plain).size());
        for (int i = 0; i < count; ++i) {
            QPushButton* key = addKey(row, keys.indent + i * kHalfKeys, kHalfKeys, {});
            connect(key, &QPushButton::clicked, this, [this, row, i] {
                const KeyRow& of = kKeyRows.at(static_cast<std::size_t>(row));
                Q_EMIT typed(QString(QChar((m_isShifted ? of.shifted : of.plain)[i])));
            });
            m_characters.append(key);
        }
    }
}

void ScreenKeyboard::showCharacters() {
    auto key = m_characters.cbegin();
    for (const KeyRow& row : kKeyRows) {
        for (const QChar character : QStringView(m_isShifted ? row.shifted : row.plain)) {
            (*key++)->setText(keyText(character));
        }
    }
}

void ScreenKeyboard::showAt(const QWidget& place) {
    adjustSize();
    const QScreen* screen = place.screen();
    const QRect room = screen != nullptr ? screen->availableGeometry() : QRect(QPoint(), size());
    QPoint at = place.mapToGlobal(QPoint(0, place.height()));
    if (at.y() + height() > room.bottom()) {
        at.setY(place.mapToGlobal(QPoint()).y() - height());
    }
    at.setX(qBound(room.left(), at.x(), qMax(room.left(), room.right() - width())));
    move(at);
    show();
}

}  // namespace keeper
