// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/widgets/key_box.h"

#include <QEvent>
#include <QGridLayout>
#include <algorithm>

#include "ui/theme/colors.h"
#include "ui/theme/icons.h"
#include "ui/widgets/screen_keyboard.h"

namespace keeper {
namespace {

QToolButton* switchButton(QWidget* parent, const char* name, Glyph glyph, const QString& text) {
    auto* button = new QToolButton(parent);
    button->setObjectName(QLatin1StringView(name));
    button->setIcon(glyphIcon(glyph));
    button->setCheckable(true);
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::TabFocus);
    button->setToolTip(text);
    button->setAccessibleName(text);
    return button;
}

}  // namespace

bool hasFullWidth(const QString& text) {
    return std::any_of(text.cbegin(), text.cend(), [](QChar c) {
        return c == QChar(0x3000) || (c >= QChar(0xFF01) && c <= QChar(0xFF5E)) ||
               (c >= QChar(0xFFE0) && c <= QChar(0xFFE6));
    });
}

KeyBox::KeyBox(const KeyboardState& keyboard, const QString& name, QWidget* parent)
    : QWidget(parent),
      m_keyboard(keyboard),
      m_edit(new KeyEdit(this)),
      m_show(switchButton(this, "cmdShowKey", Glyph::Eye, QStringLiteral("显示输入的内容"))),
      m_language(switchButton(this, "cmdChineseKey", Glyph::Language,
                              QStringLiteral("允许输入法（密钥含有汉字时打开）"))),
      cmdKeyboard(switchButton(this, "cmdKeyboard", Glyph::Keyboard, QStringLiteral("屏幕键盘"))),
      m_warningIcon(new QLabel(this)),
      m_warning(new QLabel(this)) {
    setFocusProxy(m_edit);
    m_edit->setAccessibleName(name);
    m_warning->setObjectName(QStringLiteral("lblKeyWarning"));
    m_warning->setTextFormat(Qt::PlainText);
    const int side = fontMetrics().height();
    m_warningIcon->setFixedSize(side, side);

    auto* grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(side / 4);
    grid->setVerticalSpacing(side / 6);
    grid->addWidget(m_edit, 0, 0, 1, 2);
    grid->addWidget(m_show, 0, 2);
    grid->addWidget(m_language, 0, 3);
    grid->addWidget(cmdKeyboard, 0, 4);
    grid->addWidget(m_warningIcon, 1, 0);
    grid->addWidget(m_warning, 1, 1, 1, 4);
    grid->setColumnStretch(1, 1);

    connect(m_edit, &QLineEdit::textEdited, this, &KeyBox::textEdited);
    connect(m_edit, &QLineEdit::inputRejected, this, [this] {
        m_isCut = true;
        updateWarning();
    });
    connect(m_edit, &QLineEdit::textChanged, this, [this] {
        m_isCut = m_isCut && m_edit->text().size() >= m_edit->maxLength();
        updateWarning();
        Q_EMIT textChanged();
    });
    connect(m_edit, &QLineEdit::returnPressed, this, &KeyBox::returnPressed);
    connect(m_edit, &KeyEdit::focusChanged, this, &KeyBox::updateWarning);
    connect(m_show, &QToolButton::toggled, this, [this](bool isShown) {
        m_edit->setShown(isShown);
        m_show->setIcon(glyphIcon(isShown ? Glyph::EyeOff : Glyph::Eye));
    });
    cmdKeyboard->setCheckable(false);
    // Whoever goes from field to field by keys has keys.
    cmdKeyboard->setFocusPolicy(Qt::NoFocus);
    connect(cmdKeyboard, &QToolButton::clicked, this, &KeyBox::showKeyboard);
    connect(m_language, &QToolButton::toggled, m_edit, &KeyEdit::setInputMethodAllowed);
    connect(&m_keyboard, &KeyboardState::capsLockChanged, this, &KeyBox::updateWarning);
    updateWarning();
}

KeyBox::~KeyBox() {
    // The edit outlives this part of the object and loses the focus on its way out.
    m_edit->disconnect(this);
}

void KeyBox::setText(const QString& text) {
    m_edit->wipe();
    m_edit->setText(text);
}

void KeyBox::setShowButtonVisible(bool isVisible) {
    // Its room stays, so that boxes above each other are of one width.
    QSizePolicy policy = m_show->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    m_show->setSizePolicy(policy);
    m_show->setVisible(isVisible);
}

void KeyBox::showKeyboard() {
    if (m_screenKeyboard == nullptr) {
        m_screenKeyboard = new ScreenKeyboard(this);
        connect(m_screenKeyboard, &ScreenKeyboard::typed, m_edit, &QLineEdit::insert);
        connect(m_screenKeyboard, &ScreenKeyboard::backspace, m_edit, &QLineEdit::backspace);
    }
    m_edit->setFocus();
    if (m_screenKeyboard->isVisible()) {
        m_screenKeyboard->hide();
    } else {
        m_screenKeyboard->showAt(*this);
    }
}

void KeyBox::setShown(bool isShown) {
    m_show->setChecked(isShown);
}

void KeyBox::updateWarning() {
    QString warning;
    if (m_edit->hasFocus() && m_keyboard.capsLock()) {
        warning = QStringLiteral("大写锁定已打开");
    }
    if (hasFullWidth(m_edit->text())) {
        warning += warning.isEmpty() ? QString() : QStringLiteral("；");
        warning += QStringLiteral("含有全角字符");
    }
    if (m_isCut) {
        warning += warning.isEmpty() ? QString() : QStringLiteral("；");
        warning += QStringLiteral("最多%1位，多出的没有输入").arg(m_edit->maxLength());
    }
    m_warning->setText(warning);
    m_warning->setAccessibleName(warning);
    m_edit->setAccessibleDescription(warning);
    const int side = m_warningIcon->height();
    m_warningIcon->setPixmap(warning.isEmpty()
                                 ? QPixmap()
                                 : glyphIcon(Glyph::Warning, IconTint::Warning)
                                       .pixmap(QSize(side, side), devicePixelRatioF()));
    QPalette colors = palette();
    colors.setColor(QPalette::WindowText, themeColor(ThemeColor::Warning, isDarkPalette(colors)));
    m_warning->setPalette(colors);
}

void KeyBox::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        updateWarning();
    } else if (event->type() == QEvent::EnabledChange && m_screenKeyboard != nullptr) {
        m_screenKeyboard->hide();
    }
}

}  // namespace keeper
