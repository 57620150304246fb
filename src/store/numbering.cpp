// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "store/numbering.h"

#include <algorithm>

#include "store/failure.h"

namespace keeper {

namespace {

constexpr qsizetype kPrefixLength = 3;
constexpr qsizetype kPairLength = 2;
constexpr qsizetype kTitleWidth = 200;

[[noreturn]] void throwInvalidCall(const char* operation) {
    throw KeeperError(5, QString::fromLatin1(operation), QStringLiteral("无效的过程调用或参数"));
}

QString headOf(const QString& number) {
    return number.chopped(std::min(kPairLength, number.size()));
}

int lastPairOf(const QString& number) {
    return QStringView(number).right(kPairLength).toInt();
}

QString pairText(int value) {
    return QStringLiteral("%1").arg(value, 2, 10, QLatin1Char('0'));
}

int bigClassOf(QStringView pair) {
    if (pair == u"02") {
        return 1;
    }
    if (pair == u"03") {
        return 2;
    }
    return 0;
}

bool isNumeric(const QString& text) {
    return std::all_of(text.begin(), text.end(),
                       [](QChar c) { return c >= QLatin1Char('0') && c <= QLatin1Char('9'); });
}

/// Where a walk starts; empty when there is nothing to walk from.
QString walkStart(const QString& keyOrNumber, bool asSibling) {
    if (keyOrNumber.isEmpty()) {
        return {};
    }
    const QString number = isNumeric(keyOrNumber) ? keyOrNumber : GetItemKeyNo(keyOrNumber);
    return asSibling ? number : number + QStringLiteral("00");
}

}  // namespace

EntryNo EntryNo::split(const QString& wholeNumber) {
    return {headOf(wholeNumber), wholeNumber.right(kPairLength)};
}

QString ConcatenateNo(const QString& number, bool isDir) {
    return (isDir ? QStringLiteral("dir") : QStringLiteral("ent")) + number;
}

QString GetItemKeyNo(const QString& key) {
    if (key.size() < kPrefixLength) {
        throwInvalidCall("GetItemKeyNo");
    }
    return key.sliced(kPrefixLength);
}

bool TestEntDir(const QString& key) {
    return key.startsWith(QStringLiteral("ent"));
}

QString CatTitleNo(const QString& title, const QString& number) {
    if (title.size() > kTitleWidth) {
        throwInvalidCall("CatTitleNo");
    }
    return title.leftJustified(kTitleWidth) + number;
}

QString GetLsbNo(const QString& line) {
    return line.mid(kTitleWidth);
}

QString GetLsbTitle(const QString& line) {
    qsizetype length = std::min(kTitleWidth, line.size());
    while (length > 0 && line.at(length - 1) == QLatin1Char(' ')) {
        --length;
    }
    return line.first(length);
}

int GetItemKeyType(const QString& keyOrNumber) {
    const QStringView key(keyOrNumber);
    const QStringView pair = key.mid(kPrefixLength, kPairLength);
    if (key.startsWith(u"dir")) {
        const bool isKnown = pair == u"01" || pair == u"02" || pair == u"03";
        return isKnown ? 3 + bigClassOf(pair) : 0;
    }
    if (key.startsWith(u"ent")) {
        return bigClassOf(pair);
    }
    return bigClassOf(key.left(kPairLength));
}

QString GetParent(const QString& number) {
    return number.size() > kPairLength ? headOf(number) : QString();
}

QString GetNext(const QString& number) {
    if (number.size() <= kPairLength) {
        return {};
    }
    const int next = lastPairOf(number) + 1;
    return headOf(number) + pairText(next < 100 ? next : 0);
}

QString GetPrevious(const QString& number) {
    if (number.size() < kPairLength) {
        return {};
    }
    const int last = lastPairOf(number);
    // Nothing stands before 00 either, so a reserved number has its parent for predecessor.
    return last <= 1 ? GetParent(number) : headOf(number) + pairText(last - 1);
}

QString GetFirstSibling(const QString& number) {
    return number.size() < kPairLength ? QString() : headOf(number) + QStringLiteral("01");
}

QString GetLastSibling(const QString& number) {
    return number.size() < kPairLength ? QString() : headOf(number) + QStringLiteral("99");
}

bool AreSameBigClass(const QString& key1, const QString& key2) {
    const bool isFile1 = GetItemKeyType(key1) % 3 == 2;
    const bool isFile2 = GetItemKeyType(key2) % 3 == 2;
    return isFile1 == isFile2;
}

QString FindItemNo(const QString& keyOrNumber, bool asSibling, bool findUsed, bool isDir,
                   const IsTaken& isTaken) {
    const QString start = walkStart(keyOrNumber, asSibling);
    // A big class has no next sibling: GetNext ends the walk with an empty text.
    for (QString number = GetNext(start); !number.isEmpty() && number != start;
         number = GetNext(number)) {
        if (isTaken(ConcatenateNo(number, isDir)) == findUsed) {
            return number;
        }
    }
    return {};
}

QString FindItemNoSkipZero(const QString& keyOrNumber, bool asSibling, bool findUsed, bool isDir,
                           const IsTaken& isTaken) {
    const QString start = walkStart(keyOrNumber, asSibling);
    const QString first = GetFirstSibling(start);
    bool hasWrapped = false;
    for (QString number = GetNext(start); !number.isEmpty(); number = GetNext(number)) {
        if (lastPairOf(number) == 0) {
            // A start of 00 is never met again, so the second time round ends the walk.
            if (findUsed || hasWrapped) {
                return {};
            }
            hasWrapped = true;
            number = first;
        }
        if (number == start) {
            return {};
        }
        if (isTaken(ConcatenateNo(number, isDir)) == findUsed) {
            return number;
        }
    }
    return {};
}

}  // namespace keeper
