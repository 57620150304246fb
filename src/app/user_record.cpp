// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/user_record.h"

#include <QStringList>

#include "crypto/code_page.h"
#include "crypto/secure_wipe.h"

namespace keeper {
namespace {

constexpr qsizetype fieldCount = 14;

bool isPlain(QChar unit) {
    return unit.unicode() >= 0x20 && unit.unicode() != 0x7F && !unit.isSurrogate() &&
           ansiText(ansiBytes(QStringView(&unit, 1))) == unit;
}

QString fieldOf(const QString& text) {
    QString field;
    for (const QChar unit : text) {
        if (unit == u'\\') {
            field += QStringLiteral("\\\\");
        } else if (isPlain(unit)) {
            field += unit;
        } else {
            field += QStringLiteral("\\u%1").arg(
                QString::number(unit.unicode(), 16).rightJustified(4, u'0'));
        }
    }
    return field;
}

QString fieldOf(bool flag) {
    return flag ? QStringLiteral("True") : QStringLiteral("False");
}

QString fieldOf(std::int16_t number) {
    return QString::number(number);
}

QString fieldOf(const QDateTime& time) {
    return time.isValid() ? time.toOffsetFromUtc(time.offsetFromUtc()).toString(Qt::ISODate)
                          : QString();
}

bool readField(const QString& field, QString& text) {
    text.clear();
    for (qsizetype i = 0; i < field.size(); ++i) {
        if (field.at(i) != u'\\') {
            text += field.at(i);
            continue;
        }
        const QStringView rest = QStringView(field).mid(i + 1);
        if (rest.startsWith(u'\\')) {
            text += u'\\';
            i += 1;
            continue;
        }
        bool isNumber = false;
        const ushort unit = rest.mid(1, 4).toUShort(&isNumber, 16);
        if (!rest.startsWith(u'u') || rest.size() < 5 || !isNumber) {
            return false;
        }
        text += QChar(unit);
        i += 5;
    }
    return true;
}

bool readField(const QString& field, bool& flag) {
    flag = field == fieldOf(true);
    return flag || field == fieldOf(false);
}

bool readField(const QString& field, std::int16_t& number) {
    bool isNumber = false;
    number = field.toShort(&isNumber);
    return isNumber;
}

bool readField(const QString& field, QDateTime& time) {
    time = QDateTime();
    if (field.isEmpty()) {
        return true;
    }
    time = QDateTime::fromString(field, Qt::ISODate).toLocalTime();
    return time.isValid();
}

}  // namespace

QString UserRecord::toText() const {
    const QStringList fields{
        fieldOf(activeFile),      fieldOf(activeTime),    fieldOf(attackTime),
        fieldOf(autoLogin),       fieldOf(keyPartA),      fieldOf(keyPartB),
        fieldOf(fingerprint),     fieldOf(hideDBPath),    fieldOf(lgnKeyChances0),
        fieldOf(lgnKeyTip),       fieldOf(privateFolder), fieldOf(std::int16_t{0}),  // reserved
        fieldOf(themeBackground), fieldOf(usedTimes)};
    return fields.join(u'\t');
}

std::optional<UserRecord> UserRecord::fromText(const QString& text) {
    QStringList fields = text.split(u'\t');
    if (fields.size() != fieldCount) {
        return std::nullopt;
    }
    UserRecord record;
    const bool isGood =
        readField(fields.at(0), record.activeFile) && readField(fields.at(1), record.activeTime) &&
        readField(fields.at(2), record.attackTime) && readField(fields.at(3), record.autoLogin) &&
        readField(fields.at(4), record.keyPartA) && readField(fields.at(5), record.keyPartB) &&
        readField(fields.at(6), record.fingerprint) && readField(fields.at(7), record.hideDBPath) &&
        readField(fields.at(8), record.lgnKeyChances0) &&
        readField(fields.at(9), record.lgnKeyTip) &&
        readField(fields.at(10), record.privateFolder) &&
        readField(fields.at(12), record.themeBackground) &&
        readField(fields.at(13), record.usedTimes);
    for (const qsizetype part : {4, 5}) {
        secureWipe(fields[part]);
    }
    return isGood ? std::optional(record) : std::nullopt;
}

}  // namespace keeper
