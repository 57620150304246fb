// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

// The registry file, its body without the check sum (which would stop nearly every input), and the
// deciphered record of a user: none may crash, and what is accepted must come back as it was.

#include <cstdlib>

#include "app/registry_image.h"
#include "app/user_record.h"

namespace keeper {
namespace {

void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

void readFile(const QByteArray& bytes) {
    RegistryImage::Fault fault{};
    const RegistryImage image = RegistryImage::fromBytes(bytes, fault);
    require(fault == RegistryImage::Fault::None ? image.toBytes() == bytes
                                                : image == RegistryImage());
}

void readBody(const QByteArray& body) {
    RegistryImage image;
    if (image.readBody(body)) {
        RegistryImage::Fault fault{};
        require(RegistryImage::fromBytes(image.toBytes(), fault) == image);
        require(fault == RegistryImage::Fault::None && image.toBytes().endsWith(body));
    }
}

void readRecord(const QByteArray& bytes) {
    const auto record = UserRecord::fromText(QString::fromUtf8(bytes));
    if (record) {
        const QString text = record->toText();
        const auto again = UserRecord::fromText(text);
        require(again.has_value() && again->toText() == text);
        require(again->privateFolder == record->privateFolder);
    }
}

}  // namespace
}  // namespace keeper

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > 0) {
        const QByteArray rest(reinterpret_cast<const char*>(data) + 1,
                              static_cast<qsizetype>(size - 1));
        switch (data[0]) {
            case 'F':
                keeper::readFile(rest);
                break;
            case 'B':
                keeper::readBody(rest);
                break;
            default:
                keeper::readRecord(rest);
        }
    }
    return 0;
}
