// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/theme/keeper_style.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPainter>
#include <QPainterPath>
#include <QStyleFactory>
#include <QStyleOption>
#include <array>

#include "ui/theme/colors.h"
#include "ui/theme/icons.h"

namespace keeper {
namespace {

int em(const QStyleOption* option, const QWidget* widget) {
    if (widget != nullptr) {
        return widget->fontMetrics().height();
    }
    return option != nullptr ? option->fontMetrics.height() : 16;
}

QColor mix(const QColor& a, const QColor& b, qreal share) {
    return QColor::fromRgbF(static_cast<float>(a.redF() + (b.redF() - a.redF()) * share),
                            static_cast<float>(a.greenF() + (b.greenF() - a.greenF()) * share),
                            static_cast<float>(a.blueF() + (b.blueF() - a.blueF()) * share));
}

/// A rounded box with a hairline border, inset so that the line lies inside `rect`.
void drawBox(QPainter* painter, const QRectF& rect, qreal radius, const QColor& fill,
             const QColor& border, qreal width = 1.0) {
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(border.isValid() ? QPen(border, width) : QPen(Qt::NoPen));
    painter->setBrush(fill.isValid() ? QBrush(fill) : QBrush(Qt::NoBrush));
    const qreal inset = border.isValid() ? width / 2 : 0;
    painter->drawRoundedRect(rect.adjusted(inset, inset, -inset, -inset), radius, radius);
    painter->restore();
}

qreal radiusOf(const QStyleOption* option, const QWidget* widget) {
    return em(option, widget) * 0.28;
}

void drawFocusRing(QPainter* painter, const QStyleOption* option, const QWidget* widget) {
    drawBox(painter, option->rect, radiusOf(option, widget), {},
            option->palette.color(QPalette::Highlight), 2.0);
}

void drawButton(QPainter* painter, const QStyleOption* option, const QWidget* widget) {
    const QPalette& palette = option->palette;
    const bool isEnabled = option->state.testFlag(QStyle::State_Enabled);
    const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option);
    const bool isDefault = button != nullptr && isEnabled &&
                           button->features.testFlag(QStyleOptionButton::DefaultButton);
    const bool isDown =
        option->state.testFlag(QStyle::State_Sunken) || option->state.testFlag(QStyle::State_On);
    const bool isHot = isEnabled && option->state.testFlag(QStyle::State_MouseOver);
    QColor fill = isDefault ? palette.color(QPalette::Highlight) : palette.color(QPalette::Button);
    const QColor ink = palette.color(QPalette::WindowText);
    if (isDown) {
        fill = mix(fill, ink, 0.18);
    } else if (isHot) {
        fill = mix(fill, ink, 0.07);
    }
    const QColor border = isDefault ? fill : palette.color(QPalette::Mid);
    drawBox(painter, option->rect, radiusOf(option, widget), fill, border);
    if (option->state.testFlag(QStyle::State_HasFocus)) {
        if (isDefault) {
            // A ring in the accent colour would vanish on the accent: draw it inside, in the ink.
            drawBox(painter, QRectF(option->rect).adjusted(3, 3, -3, -3),
                    radiusOf(option, widget) * 0.7, {}, palette.color(QPalette::HighlightedText));
        } else {
            drawFocusRing(painter, option, widget);
        }
    }
}

void drawEditFrame(QPainter* painter, const QStyleOption* option, const QWidget* widget,
                   bool hasFocus) {
    const QPalette& palette = option->palette;
    const bool isHot = option->state.testFlag(QStyle::State_MouseOver) &&
                       option->state.testFlag(QStyle::State_Enabled);
    const QColor border = hasFocus ? palette.color(QPalette::Highlight)
                          : isHot  ? palette.color(QPalette::Dark)
                                   : palette.color(QPalette::Mid);
    drawBox(painter, option->rect, radiusOf(option, widget), palette.color(QPalette::Base), border,
            hasFocus ? 2.0 : 1.0);
}

void drawIndicator(QPainter* painter, const QStyleOption* option, bool isRound) {
    const QPalette& palette = option->palette;
    const bool isEnabled = option->state.testFlag(QStyle::State_Enabled);
    const bool isOn = option->state.testFlag(QStyle::State_On);
    const bool isPartial = option->state.testFlag(QStyle::State_NoChange);
    const QColor accent =
        palette.color(isEnabled ? QPalette::Active : QPalette::Disabled, QPalette::Highlight);
    const QRectF box = QRectF(option->rect).adjusted(1, 1, -1, -1);
    const qreal radius = isRound ? box.height() / 2 : box.height() * 0.22;
    const bool isHot = isEnabled && option->state.testFlag(QStyle::State_MouseOver);
    const QColor border = isOn || isPartial || isHot ? accent : palette.color(QPalette::Dark);
    drawBox(painter, box, radius, isOn || isPartial ? accent : palette.color(QPalette::Base),
            border);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const QColor mark = palette.color(QPalette::HighlightedText);
    if (isOn && isRound) {
        painter->setPen(Qt::NoPen);
        painter->setBrush(mark);
        painter->drawEllipse(box.center(), box.width() * 0.2, box.height() * 0.2);
    } else if (isOn) {
        painter->setPen(QPen(mark, box.width() * 0.14, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        QPainterPath tick;
        tick.moveTo(box.left() + box.width() * 0.24, box.top() + box.height() * 0.52);
        tick.lineTo(box.left() + box.width() * 0.43, box.top() + box.height() * 0.70);
        tick.lineTo(box.left() + box.width() * 0.77, box.top() + box.height() * 0.30);
        painter->drawPath(tick);
    } else if (isPartial) {
        painter->setPen(QPen(mark, box.width() * 0.14, Qt::SolidLine, Qt::RoundCap));
        painter->drawLine(QPointF(box.left() + box.width() * 0.27, box.center().y()),
                          QPointF(box.right() - box.width() * 0.27, box.center().y()));
    }
    painter->restore();
}

/// `direction` is 1 for downwards, -1 for upwards.
void drawChevron(QPainter* painter, const QRectF& rect, qreal half, int direction,
                 const QColor& color) {
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(QPen(color, half * 0.38, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    const QPointF middle = rect.center();
    const qreal rise = half / 2 * direction;
    const std::array<QPointF, 3> points = {
        middle + QPointF(-half, -rise), middle + QPointF(0, rise), middle + QPointF(half, -rise)};
    painter->drawPolyline(points.data(), static_cast<int>(points.size()));
    painter->restore();
}

void drawSpinArrows(QPainter* painter, const QStyleOptionSpinBox& spin, const QRect& up,
                    const QRect& down) {
    const auto ink = [&spin](QAbstractSpinBox::StepEnabledFlag step) {
        const bool isEnabled =
            spin.state.testFlag(QStyle::State_Enabled) && spin.stepEnabled.testFlag(step);
        return spin.palette.color(isEnabled ? QPalette::Active : QPalette::Disabled,
                                  QPalette::Text);
    };
    const qreal half = up.width() * 0.2;
    drawChevron(painter, up, half, -1, ink(QAbstractSpinBox::StepUpEnabled));
    drawChevron(painter, down, half, 1, ink(QAbstractSpinBox::StepDownEnabled));
}

void drawProgress(QPainter* painter, const QStyleOptionProgressBar& bar, const QWidget* widget) {
    const qreal height = qMin<qreal>(bar.rect.height(), em(&bar, widget) * 0.42);
    QRectF groove(bar.rect);
    groove.setHeight(height);
    groove.moveCenter(QRectF(bar.rect).center());
    drawBox(painter, groove, height / 2, bar.palette.color(QPalette::Mid), {});
    const int span = bar.maximum - bar.minimum;
    if (span <= 0 || bar.progress <= bar.minimum) {
        return;
    }
    const qreal share = qBound(0.0, qreal(bar.progress - bar.minimum) / span, 1.0);
    groove.setWidth(qMax(height, groove.width() * share));
    drawBox(painter, groove, height / 2, bar.palette.color(QPalette::Highlight), {});
}

}  // namespace

KeeperStyle::KeeperStyle() : QProxyStyle(QStyleFactory::create(QStringLiteral("Fusion"))) {
    setObjectName(QStringLiteral("keeper"));
}

void KeeperStyle::polish(QWidget* widget) {
    if (qobject_cast<QLineEdit*>(widget) != nullptr ||
        qobject_cast<QComboBox*>(widget) != nullptr) {
        widget->setAttribute(Qt::WA_Hover);
    }
    QProxyStyle::polish(widget);
}

void KeeperStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option,
                                QPainter* painter, const QWidget* widget) const {
    switch (element) {
        case PE_PanelButtonCommand:
            drawButton(painter, option, widget);
            return;
        case PE_FrameDefaultButton:
        case PE_PanelStatusBar:
        case PE_FrameStatusBarItem:
            return;
        case PE_FrameFocusRect:
            drawFocusRing(painter, option, widget);
            return;
        case PE_PanelLineEdit: {
            const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
            if (frame != nullptr && frame->lineWidth > 0) {
                drawEditFrame(painter, option, widget, option->state.testFlag(State_HasFocus));
            }
            return;
        }
        case PE_IndicatorCheckBox:
            drawIndicator(painter, option, /*isRound=*/false);
            return;
        case PE_IndicatorRadioButton:
            drawIndicator(painter, option, /*isRound=*/true);
            return;
        case PE_FrameGroupBox:
            drawBox(painter, option->rect, radiusOf(option, widget) * 1.4, {},
                    option->palette.color(QPalette::Mid));
            return;
        case PE_Frame:
            drawBox(painter, option->rect, radiusOf(option, widget), {},
                    option->state.testFlag(State_HasFocus)
                        ? option->palette.color(QPalette::Highlight)
                        : option->palette.color(QPalette::Mid));
            return;
        default:
            QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
}

void KeeperStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                              const QWidget* widget) const {
    if (element == CE_ProgressBar) {
        if (const auto* bar = qstyleoption_cast<const QStyleOptionProgressBar*>(option)) {
            drawProgress(painter, *bar, widget);
            return;
        }
    }
    if (element == CE_PushButtonLabel) {
        if (const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option)) {
            QStyleOptionButton label = *button;
            if (label.features.testFlag(QStyleOptionButton::DefaultButton) &&
                label.state.testFlag(State_Enabled)) {
                label.palette.setColor(QPalette::ButtonText,
                                       label.palette.color(QPalette::HighlightedText));
            }
            QProxyStyle::drawControl(element, &label, painter, widget);
            return;
        }
    }
    QProxyStyle::drawControl(element, option, painter, widget);
}

void KeeperStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                                     QPainter* painter, const QWidget* widget) const {
    if (control == CC_ComboBox) {
        if (const auto* combo = qstyleoption_cast<const QStyleOptionComboBox*>(option)) {
            if (combo->frame) {
                drawEditFrame(painter, option, widget, option->state.testFlag(State_HasFocus));
            }
            const QRect arrow = subControlRect(CC_ComboBox, option, SC_ComboBoxArrow, widget);
            drawChevron(painter, arrow, qMin(arrow.width(), arrow.height()) * 0.22, 1,
                        option->palette.color(QPalette::Text));
            return;
        }
    }
    if (control == CC_SpinBox) {
        if (const auto* spin = qstyleoption_cast<const QStyleOptionSpinBox*>(option)) {
            if (spin->frame) {
                drawEditFrame(painter, option, widget, option->state.testFlag(State_HasFocus));
            }
            if (spin->buttonSymbols != QAbstractSpinBox::NoButtons) {
                drawSpinArrows(painter, *spin,
                               subControlRect(CC_SpinBox, option, SC_SpinBoxUp, widget),
                               subControlRect(CC_SpinBox, option, SC_SpinBoxDown, widget));
            }
            return;
        }
    }
    QProxyStyle::drawComplexControl(control, option, painter, widget);
}

int KeeperStyle::pixelMetric(PixelMetric metric, const QStyleOption* option,
                             const QWidget* widget) const {
    const int unit = em(option, widget);
    switch (metric) {
        case PM_LayoutLeftMargin:
        case PM_LayoutRightMargin:
        case PM_LayoutTopMargin:
        case PM_LayoutBottomMargin:
            return unit * 3 / 4;
        case PM_LayoutHorizontalSpacing:
        case PM_LayoutVerticalSpacing:
            return unit / 2;
        case PM_IndicatorWidth:
        case PM_IndicatorHeight:
        case PM_ExclusiveIndicatorWidth:
        case PM_ExclusiveIndicatorHeight:
            return unit;
        case PM_SmallIconSize:
        case PM_ButtonIconSize:
            return unit * 9 / 8;
        case PM_MessageBoxIconSize:
            return unit * 5 / 2;
        case PM_DefaultFrameWidth:
            // The room between frame and text, where Fusion leaves two pixels at every size.
            return qobject_cast<const QLineEdit*>(widget) != nullptr
                       ? unit / 4
                       : QProxyStyle::pixelMetric(metric, option, widget);
        case PM_ButtonShiftHorizontal:
        case PM_ButtonShiftVertical:
            return 0;
        default:
            return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

int KeeperStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                           QStyleHintReturn* data) const {
    switch (hint) {
        case SH_DialogButtonBox_ButtonsHaveIcons:
        case SH_ComboBox_Popup:
            return 0;
        case SH_LineEdit_PasswordCharacter:
            return 0x25CF;
        default:
            return QProxyStyle::styleHint(hint, option, widget, data);
    }
}

QRect KeeperStyle::subControlRect(ComplexControl control, const QStyleOptionComplex* option,
                                  SubControl part, const QWidget* widget) const {
    QRect rect = QProxyStyle::subControlRect(control, option, part, widget);
    if (control == CC_GroupBox && part == SC_GroupBoxLabel) {
        rect.translate(em(option, widget) / 2, 0);
    }
    if (control == CC_SpinBox && part == SC_SpinBoxEditField) {
        rect.adjust(em(option, widget) / 4, 0, 0, 0);
    }
    return rect;
}

QSize KeeperStyle::sizeFromContents(ContentsType type, const QStyleOption* option,
                                    const QSize& contents, const QWidget* widget) const {
    QSize size = QProxyStyle::sizeFromContents(type, option, contents, widget);
    const int unit = em(option, widget);
    switch (type) {
        case CT_PushButton:
            return size.expandedTo({unit * 5, unit * 2});
        case CT_LineEdit:
        case CT_ComboBox:
        case CT_SpinBox:
            return size.expandedTo({0, unit * 2});
        case CT_MenuItem:
            return size + QSize(0, unit / 4);
        default:
            return size;
    }
}

QIcon KeeperStyle::standardIcon(StandardPixmap standardIcon, const QStyleOption* option,
                                const QWidget* widget) const {
    // Our own sign; to look for one in the desktop's themes takes as long as a window.
    return standardIcon == SP_LineEditClearButton
               ? glyphIcon(Glyph::Close)
               : QProxyStyle::standardIcon(standardIcon, option, widget);
}

}  // namespace keeper
