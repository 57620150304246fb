// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <QStringList>
#include <exception>
#include <optional>

namespace keeper::cli {

class SignalWatch;

/// Exit statuses. A run that a signal ended exits with 128 and the signal's number.
inline constexpr int kDone = 0;
inline constexpr int kFailed = 1;
inline constexpr int kWrongUsage = 2;

/// Ends the command with a status and, unless empty, one line on standard error.
class Exit : public std::exception {
  public:
    explicit Exit(int status, QString message = {})
        : m_status(status), m_message(std::move(message)) {}
    [[nodiscard]] int status() const { return m_status; }
    [[nodiscard]] const QString& message() const { return m_message; }

  private:
    int m_status;
    QString m_message;
};

/// "morvane-cli: " and the message as one line on standard error, whatever breaks it holds.
void printError(const QString& message);
/// Writes all of it to a descriptor as UTF-8; Exit 1 when that fails.
void writeAll(int descriptor, const QByteArray& bytes);
/// The lines on standard output.
void printLines(const QStringList& lines);
/// A text of a file's or a person's making as part of a line: nothing in it ends the line or speaks
/// to the terminal.
[[nodiscard]] QString printable(QString text);
/// Everything up to the end of the descriptor; Exit 1 when that fails or passes `limit` bytes,
/// 128 and its number when a signal comes first.
[[nodiscard]] QByteArray readAll(int descriptor, const QString& name, qsizetype limit,
                                 SignalWatch& signalWatch);
/// The text without any loss, also of a byte order mark; nothing where the bytes are not UTF-8.
[[nodiscard]] std::optional<QString> exactText(const QByteArray& utf8);
/// A message box's text without the "[number]Class.Op:" line, which says nothing at a terminal.
[[nodiscard]] QString withoutTag(const QString& message);
/// That number, 0 for a message without one.
[[nodiscard]] int numberInTag(const QString& message);

}  // namespace keeper::cli
