// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QStringView>
#include <span>

namespace keeper {

/// Which rows of the log a sentence is for. A status lists its sentences in order; the first that
/// fits is taken.
enum class LogCondition {
    Always,
    CountIs,       // m_lCount equals the operand
    CountAbove,    // m_lCount is above the operand
    CountBelow,    // m_lCount is below the operand
    CountOdd,      // m_lCount is odd
    ValuesEmpty,   // the description is empty, or begins with an empty value
    ValuesDiffer,  // the second value is there and differs from the first
};

/// A sentence with marks in it: {1} {2} {3} the values, {#} the count, {abs} the count without its
/// sign, {addr} the second value as the address of a machine, {dur} the count as a duration, {bits}
/// the numbers of the bits that are set in the count.
struct LogSentence {
    int status;
    LogCondition condition;
    int operand;
    QStringView text;
};

/// What stands in for the values of an empty description, separated by tabs.
struct LogPlaceholders {
    int status;
    QStringView values;
};

/// For a status that is taken out of the vocabulary, so that old rows of it can still be shown.
/// None has been so far.
inline constexpr QStringView kRetiredSentence = u"(本状态已过时)";

/// The whole vocabulary, ascending by status.
[[nodiscard]] std::span<const LogSentence> logSentences();
[[nodiscard]] std::span<const LogPlaceholders> logPlaceholders();

}  // namespace keeper
