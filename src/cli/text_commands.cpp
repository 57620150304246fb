// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <unistd.h>

#include "cli/commands.h"
#include "cli/console.h"
#include "cli/key_entry.h"
#include "cli/quiet_host.h"
#include "cli/signal_watch.h"
#include "crypto/code_page.h"
#include "crypto/cryptor3.h"
#include "crypto/hex_display.h"
#include "crypto/secure_wipe.h"

namespace keeper::cli {

namespace {

constexpr qsizetype kLongestText = qsizetype{16} * 1024 * 1024;

QString standardInput(SignalWatch& signalWatch) {
    QByteArray bytes = readAll(STDIN_FILENO, QStringLiteral("标准输入"), kLongestText, signalWatch);
    std::optional<QString> text = exactText(bytes);
    secureWipe(bytes.data(), static_cast<std::size_t>(bytes.size()));
    if (!text) {
        throw Exit(kFailed, QStringLiteral("标准输入不是 UTF-8 文本"));
    }
    return *std::move(text);
}

/// What the text form would lose is refused: characters outside the code page, and a NUL, which
/// ends the text when it is read again.
void requireKept(const QString& text) {
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == QChar(u'\0') || (ansiCode(text[i]) == '?' && text[i] != u'?')) {
            throw Exit(kFailed, QStringLiteral("文本的第 %1 个字符不能以 GBK 保存").arg(i + 1));
        }
    }
}

/// The class skips what is no digit: a text that has none would pass as the cipher of nothing.
void requireDigits(const QString& text) {
    std::vector<std::uint8_t> bytes;
    if (!text.trimmed().isEmpty() && HexDisplayToBytes(text, bytes) == 0) {
        throw Exit(kFailed, QStringLiteral("标准输入不是密文：没有十六进制数字"));
    }
}

}  // namespace

int runTextCommand(const Arguments& arguments) {
    const bool isEncryption = arguments.command == Command::EncryptText;
    SignalWatch signalWatch;
    QString key = obtainKey(arguments.keyFile, isEncryption, signalWatch);
    const WipeGuard wipeKey(key);
    QString text = standardInput(signalWatch);
    const WipeGuard wipeText(text);
    if (isEncryption) {
        requireKept(text);
    } else {
        requireDigits(text);
    }
    QuietHost host;
    Cryptor3 cipher(host);
    QString result =
        isEncryption ? cipher.EncryptString(text, key) : cipher.DecryptString(text, key);
    const WipeGuard wipeResult(result);
    if (!host.message.isEmpty()) {
        throw Exit(kFailed, withoutTag(host.message));
    }
    QByteArray bytes = result.toUtf8();
    if (isEncryption) {
        bytes += '\n';
    }
    writeAll(STDOUT_FILENO, bytes);
    secureWipe(bytes.data(), static_cast<std::size_t>(bytes.size()));
    return kDone;
}

}  // namespace keeper::cli
