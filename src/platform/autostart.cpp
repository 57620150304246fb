// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/autostart.h"

#include <QByteArray>
#include <QList>
#include <algorithm>

#include "platform/durable_file.h"

namespace keeper {
namespace {

constexpr qint64 largestEntry = 64 * 1024;

}  // namespace

QString desktopString(const QString& text) {
    QString escaped;
    for (const QChar unit : text) {
        switch (unit.unicode()) {
            case u'\\':
                escaped += QStringLiteral("\\\\");
                break;
            case u'\n':
                escaped += QStringLiteral("\\n");
                break;
            case u'\r':
                escaped += QStringLiteral("\\r");
                break;
            case u'\t':
                escaped += QStringLiteral("\\t");
                break;
            default:
                escaped += unit;
        }
    }
    // A leading blank would be taken for the one that may follow the equals sign.
    return escaped.startsWith(u' ') ? QStringLiteral("\\s") + escaped.mid(1) : escaped;
}

QString desktopExecArgument(const QString& argument) {
    QString quoted = QStringLiteral("\"");
    for (const QChar unit : argument) {
        if (unit == u'"' || unit == u'`' || unit == u'$' || unit == u'\\') {
            quoted += u'\\';
        } else if (unit == u'%') {  // would start a field code
            quoted += u'%';
        }
        quoted += unit;
    }
    return desktopString(quoted + u'"');
}

XdgAutostart::XdgAutostart(const UserFolders& folders, QString program)
    : m_folder(folders.autostart()), m_program(std::move(program)) {}

QString XdgAutostart::path(const QString& id) const {
    return m_folder + QStringLiteral("/morvane-keeper-") + id + QStringLiteral(".desktop");
}

QString XdgAutostart::execLine(const QString& document) const {
    return QStringLiteral("Exec=%1 %2")
        .arg(desktopExecArgument(m_program), desktopExecArgument(document));
}

bool XdgAutostart::contains(const QString& id) const {
    const auto content = readWholeFile(path(id), largestEntry);
    if (!content) {
        return false;
    }
    for (const QByteArray& line : content->split('\n')) {
        const QByteArray setting = line.trimmed().replace(" ", "").toLower();
        if (setting == "hidden=true" || setting == "x-gnome-autostart-enabled=false") {
            return false;
        }
    }
    return true;
}

void XdgAutostart::add(const QString& id, const QString& title, const QString& document) {
    ensureFolder(m_folder);
    const QString entry = QStringLiteral(
                              "[Desktop Entry]\n"
                              "Type=Application\n"
                              "Name=%1\n"
                              "%2\n"
                              "Icon=morvane-keeper\n"
                              "Terminal=false\n"
                              "X-GNOME-Autostart-enabled=true\n")
                              .arg(desktopString(title), execLine(document));
    replaceFile(path(id), entry.toUtf8());
}

void XdgAutostart::refresh(const QString& id, const QString& document) {
    const auto content = readWholeFile(path(id), largestEntry);
    const QByteArray exec = execLine(document).toUtf8();
    QList<QByteArray> lines = content.value_or(QByteArray()).split('\n');
    const auto found = std::ranges::find_if(
        lines, [](const QByteArray& line) { return line.startsWith("Exec="); });
    if (found != lines.end() && *found != exec) {
        *found = exec;
        replaceFile(path(id), lines.join('\n'));
    }
}

void XdgAutostart::remove(const QString& id) {
    removeFile(path(id));
}

}  // namespace keeper
