// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/ports/qt_prompt.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpression>
#include <QStyle>
#include <QVBoxLayout>

#include "app/program_info.h"
#include "ui/theme/icons.h"

namespace keeper {
namespace {

QString forDisplay(QString text) {
    return text.replace(QStringLiteral("\r\n"), QStringLiteral("\n")).replace(u'\r', u'\n');
}

/// The window that the person looks at; none while only the splash or a popup shows.
QWidget* owner() {
    QWidget* window = QApplication::activeModalWidget();
    if (window == nullptr) {
        window = QApplication::activeWindow();
    }
    return window != nullptr && window->windowType() != Qt::SplashScreen ? window : nullptr;
}

QIcon boxIcon(Prompt::Icon icon) {
    switch (icon) {
        case Prompt::Icon::None:
            break;
        case Prompt::Icon::Information:
            return glyphIcon(Glyph::Info, IconTint::Accent);
        case Prompt::Icon::Question:
            return glyphIcon(Glyph::Question, IconTint::Accent);
        case Prompt::Icon::Exclamation:
            return glyphIcon(Glyph::Warning, IconTint::Warning);
        case Prompt::Icon::Critical:
            return glyphIcon(Glyph::Error, IconTint::Danger);
    }
    return {};
}

/// For the sound and the role that assistive programs hear; the picture is our own.
QMessageBox::Icon nativeIcon(Prompt::Icon icon) {
    switch (icon) {
        case Prompt::Icon::None:
            break;
        case Prompt::Icon::Information:
            return QMessageBox::Information;
        case Prompt::Icon::Question:
            return QMessageBox::Question;
        case Prompt::Icon::Exclamation:
            return QMessageBox::Warning;
        case Prompt::Icon::Critical:
            return QMessageBox::Critical;
    }
    return QMessageBox::NoIcon;
}

struct ButtonSet {
    QMessageBox::StandardButtons buttons;
    QMessageBox::StandardButton preset;
    QMessageBox::StandardButton escape;
};

ButtonSet buttonSet(Prompt::Buttons buttons, Prompt::Icon icon) {
    // What asks with a warning removes something for good: Enter must do nothing then.
    const bool isWarning = icon == Prompt::Icon::Exclamation;
    switch (buttons) {
        case Prompt::Buttons::Ok:
            break;
        case Prompt::Buttons::OkCancel:
            return {QMessageBox::Ok | QMessageBox::Cancel,
                    isWarning ? QMessageBox::Cancel : QMessageBox::Ok, QMessageBox::Cancel};
        case Prompt::Buttons::YesNo:
            return {QMessageBox::Yes | QMessageBox::No,
                    isWarning ? QMessageBox::No : QMessageBox::Yes, QMessageBox::No};
        case Prompt::Buttons::YesNoCancel:
            // Of three ways the first is the most far-reaching; it takes a choice.
            return {QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel,
                    isWarning ? QMessageBox::Cancel : QMessageBox::No, QMessageBox::Cancel};
    }
    return {QMessageBox::Ok, QMessageBox::Ok, QMessageBox::Ok};
}

QMessageBox::StandardButton buttonOf(Prompt::Answer answer) {
    switch (answer) {
        case Prompt::Answer::Yes:
            return QMessageBox::Yes;
        case Prompt::Answer::No:
            return QMessageBox::No;
        case Prompt::Answer::Cancel:
            return QMessageBox::Cancel;
        case Prompt::Answer::Ok:
            break;
    }
    return QMessageBox::Ok;
}

/// Named here and not left to the toolkit's translation, which may not be installed.
QString buttonText(QMessageBox::StandardButton button) {
    switch (button) {
        case QMessageBox::Yes:
            return QStringLiteral("是(&Y)");
        case QMessageBox::No:
            return QStringLiteral("否(&N)");
        case QMessageBox::Cancel:
            return QStringLiteral("取消");
        default:
            return QStringLiteral("确定");
    }
}

}  // namespace

Prompt::Answer QtPrompt::messageBox(const QString& text, Icon icon, Buttons buttons,
                                    const QString& title, std::optional<Answer> preset) {
    ButtonSet set = buttonSet(buttons, icon);
    if (preset) {
        set.preset = buttonOf(*preset);
    }
    QMessageBox box(owner());
    box.setObjectName(QStringLiteral("messageBox"));
    box.setWindowIcon(programIcon());
    box.setWindowTitle(title.isEmpty() ? programTitle() : title);
    box.setTextFormat(Qt::PlainText);
    box.setText(forDisplay(text));
    box.setTextInteractionFlags(Qt::NoTextInteraction);
    box.setIcon(nativeIcon(icon));
    if (icon != Icon::None) {
        const int side = box.style()->pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, &box);
        box.setIconPixmap(boxIcon(icon).pixmap(QSize(side, side), box.devicePixelRatioF()));
    }
    box.setStandardButtons(set.buttons);
    box.setDefaultButton(set.preset);
    box.setEscapeButton(set.escape);
    for (QAbstractButton* button : box.buttons()) {
        button->setText(buttonText(box.standardButton(button)));
    }
    const int pressed = box.exec();
    // A lock or the end of the program takes the box away without a button, and is no consent.
    switch (pressed == QMessageBox::NoButton ? set.escape : pressed) {
        case QMessageBox::Yes:
            return Answer::Yes;
        case QMessageBox::No:
            return Answer::No;
        case QMessageBox::Cancel:
            return Answer::Cancel;
        default:
            return Answer::Ok;
    }
}

std::optional<QString> QtPrompt::inputBox(const QString& prompt, const QString& title,
                                          const QString& defaultText) {
    QDialog dialog(owner());
    dialog.setObjectName(QStringLiteral("inputBox"));
    dialog.setWindowIcon(programIcon());
    dialog.setWindowTitle(title.isEmpty() ? programTitle() : title);
    auto* label = new QLabel(forDisplay(prompt), &dialog);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    auto* edit = new QLineEdit(defaultText, &dialog);
    edit->setAccessibleName(label->text());
    edit->selectAll();
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &dialog);
    buttons->button(QDialogButtonBox::Ok)->setText(buttonText(QMessageBox::Ok));
    buttons->button(QDialogButtonBox::Cancel)->setText(buttonText(QMessageBox::Cancel));
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    auto* layout = new QVBoxLayout(&dialog);
    layout->addWidget(label);
    layout->addWidget(edit);
    layout->addWidget(buttons);
    dialog.setMinimumWidth(dialog.fontMetrics().averageCharWidth() * 48);
    edit->setFocus();
    if (dialog.exec() != QDialog::Accepted) {
        return std::nullopt;
    }
    return edit->text();
}

QString QtPrompt::openFile(const QString& title, const QString& folder, const QString& filter) {
    return QFileDialog::getOpenFileName(owner(), title, folder, filter);
}

QString QtPrompt::saveFile(const QString& title, const QString& path, const QString& filter) {
    QFileDialog dialog(owner(), title);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    if (!filter.isEmpty()) {
        dialog.setNameFilters(filter.split(QStringLiteral(";;")));
        static const QRegularExpression extension(QStringLiteral(R"(\*\.(\w+))"));
        dialog.setDefaultSuffix(extension.match(filter).captured(1));
    }
    const QFileInfo suggestion(path);
    if (suggestion.isDir()) {
        dialog.setDirectory(path);
    } else {
        dialog.setDirectory(suggestion.absolutePath());
        dialog.selectFile(suggestion.fileName());
    }
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) {
        return {};
    }
    return dialog.selectedFiles().constFirst();
}

QString QtPrompt::chooseFolder(const QString& title, const QString& folder) {
    return QFileDialog::getExistingDirectory(owner(), title, folder);
}

}  // namespace keeper
