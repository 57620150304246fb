// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "store/sys_log.h"

#include <QStringList>
#include <algorithm>
#include <cstdlib>

#include "store/sys_log_sentences.h"
#include "store/time_text.h"

namespace keeper {

namespace {

constexpr int kAuthorityBits = 20;

/// What a sentence is composed from.
struct LogRow {
    std::int64_t count;
    QStringList values;
    bool isPlaceholder;

    [[nodiscard]] QString value(qsizetype index) const { return values.value(index); }
};

bool fits(const LogSentence& sentence, const LogRow& row) {
    switch (sentence.condition) {
        case LogCondition::Always:
            return true;
        case LogCondition::CountIs:
            return row.count == sentence.operand;
        case LogCondition::CountAbove:
            return row.count > sentence.operand;
        case LogCondition::CountBelow:
            return row.count < sentence.operand;
        case LogCondition::CountOdd:
            return row.count % 2 != 0;
        case LogCondition::ValuesEmpty:
            return row.value(0).isEmpty();
        case LogCondition::ValuesDiffer:
            return row.values.size() > 1 && row.values.at(0) != row.values.at(1);
    }
    return false;
}

/// The sign of the count says what kind of address it is. A placeholder names both kinds itself.
QString addressText(const LogRow& row) {
    QString address = row.value(1);
    if (row.isPlaceholder || row.count == 0) {
        return address;
    }
    return (row.count > 0 ? QStringLiteral("IP:【") : QStringLiteral("MAC:【")) + address +
           QStringLiteral("】");
}

QString bitsText(std::int64_t bits) {
    QStringList numbers;
    for (int bit = 0; bit < kAuthorityBits; ++bit) {
        if ((bits >> bit) & 1) {
            numbers.append(QString::number(bit + 1));
        }
    }
    return numbers.join(QLatin1Char(','));
}

QString markText(QStringView mark, const LogRow& row) {
    if (mark == u"#") {
        return QString::number(row.count);
    }
    if (mark == u"abs") {
        return QString::number(std::llabs(row.count));
    }
    if (mark == u"addr") {
        return addressText(row);
    }
    // Only a clock that was set back makes a run time negative.
    if (mark == u"dur") {
        return Time::ShowTime(std::max<std::int64_t>(row.count, 0));
    }
    if (mark == u"bits") {
        return bitsText(row.count);
    }
    return row.value(mark.toInt() - 1);
}

/// One pass from left to right: what a value holds is never taken for a mark.
QString compose(QStringView sentence, const LogRow& row) {
    QString text;
    while (true) {
        const qsizetype open = sentence.indexOf(u'{');
        if (open < 0) {
            return text.append(sentence);
        }
        const qsizetype close = sentence.indexOf(u'}', open);
        text.append(sentence.first(open));
        text.append(markText(sentence.sliced(open + 1, close - open - 1), row));
        sentence = sentence.sliced(close + 1);
    }
}

QString placeholdersOf(int status) {
    const auto all = logPlaceholders();
    const auto found = std::find_if(all.begin(), all.end(), [status](const LogPlaceholders& item) {
        return item.status == status;
    });
    return found == all.end() ? QString() : found->values.toString();
}

}  // namespace

QString SysLog::p_Status() const {
    const bool isEmpty = m_Description.isEmpty();
    const QString values = isEmpty ? placeholdersOf(m_statusNo) : m_Description;
    const LogRow row{m_lCount, values.split(QLatin1Char('\t')), isEmpty};
    for (const LogSentence& sentence : logSentences()) {
        if (sentence.status == m_statusNo && fits(sentence, row)) {
            return compose(sentence.text, row);
        }
    }
    return {};
}

}  // namespace keeper
