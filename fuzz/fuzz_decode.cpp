// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

// Wrapped passwords from elsewhere: no text may crash the codec, and what it accepts is made of
// characters that a single byte stands for. The first byte chooses the key; 255 takes exponent and
// modulus from the input, too.

#include <cstdlib>
#include <cstring>

#include "crypto/code_page.h"
#include "crypto/cryptor4.h"

namespace keeper {
namespace {

void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

class SilentHost final : public CryptorHost {
  public:
    void showMessage(Severity /*severity*/, const QString& text) override {
        require(text.startsWith(QStringLiteral("[6]cCryptor4.Mult:\r\n")));
    }
    void turnEventLoop() override {}
};

void decode(std::span<const std::uint8_t> bytes) {
    SilentHost host;
    Cryptor4 codec(host, [](std::span<std::uint8_t>) { std::abort(); });
    Cryptor4::Key key{};
    const std::uint8_t choice = bytes[0];
    bytes = bytes.subspan(1);
    Cryptor4::GetPGPKey(choice, key);
    if (choice == 255 && bytes.size() >= 8) {
        std::memcpy(&key[1], bytes.data(), 8);
        bytes = bytes.subspan(8);
    }
    const QString text = QString::fromUtf8(reinterpret_cast<const char*>(bytes.data()),
                                           static_cast<qsizetype>(bytes.size()));
    const QString decoded = codec.Decode(text, key[1], key[2]);
    if (key[1] == 0 || key[2] == 0) {
        require(decoded == text);
        return;
    }
    for (const QChar character : decoded) {
        require(ansiCode(character) <= 255);
    }
}

}  // namespace
}  // namespace keeper

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > 0) {
        keeper::decode({data, size});
    }
    return 0;
}
