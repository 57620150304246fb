// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "crypto/cryptor6.h"

#include <QByteArray>

namespace keeper {

QString Cryptor6::Encode(std::span<const std::uint8_t> data) {
    return QString::fromLatin1(QByteArray::fromRawData(reinterpret_cast<const char*>(data.data()),
                                                       static_cast<qsizetype>(data.size()))
                                   .toBase64());
}

std::vector<std::uint8_t> Cryptor6::Decode(const QString& text) {
    QByteArray digits = text.toLatin1();
    for (int padding = 0; padding < 2 && digits.endsWith('='); ++padding) {
        digits.chop(1);
    }
    // One digit alone holds no byte: the text was cut.
    const bool isCut = digits.size() % 4 == 1;
    const auto result = QByteArray::fromBase64Encoding(
        digits, QByteArray::OmitTrailingEquals | QByteArray::AbortOnBase64DecodingErrors);
    if (isCut || !result) {
        return {};
    }
    return {result.decoded.begin(), result.decoded.end()};
}

}  // namespace keeper
