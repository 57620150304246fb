// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

// Enciphered texts, arrays and files from elsewhere: none may crash, hang or write past a buffer,
// and what deciphers must encipher to the same bytes. The first byte chooses the form and the size.

#include <QFile>
#include <QTemporaryDir>
#include <cstdlib>

#include "crypto/cryptor3.h"
#include "crypto/hex_display.h"

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
        require(text.startsWith(QLatin1Char('[')));
    }
    void turnEventLoop() override {}
};

void decipherText(Cryptor3& cryptor, const QString& key, std::span<const std::uint8_t> bytes) {
    const QString text(reinterpret_cast<const QChar*>(bytes.data()),
                       static_cast<qsizetype>(bytes.size() / sizeof(QChar)));
    std::vector<std::uint8_t> found;
    const int count = HexDisplayToBytes(text, found);
    require(static_cast<std::size_t>(count) == found.size() && count <= text.size() / 2);
    std::vector<std::uint8_t> again;
    require(HexDisplayToBytes(BytesToHexDisplay(found, 16), again) == count && again == found);
    (void)cryptor.DecryptString(text, key);
    (void)cryptor.DecryptString(QString::fromLatin1(reinterpret_cast<const char*>(bytes.data()),
                                                    static_cast<qsizetype>(bytes.size())),
                                key);
}

void decipherArray(Cryptor3& cryptor, int bits, bool hasSize, std::span<const std::uint8_t> bytes) {
    std::vector<std::uint8_t> plain;
    std::vector<std::uint8_t> cipher;
    try {
        cryptor.ArrayDecrypt(plain, bytes, false, bits);
        cryptor.ArrayEncrypt(plain, cipher, false, bits);
        require(std::equal(cipher.begin(), cipher.end(), bytes.begin(), bytes.end()));
        if (hasSize) {
            cryptor.ArrayDecrypt(plain, bytes, true, bits);
            require(plain.size() <= bytes.size() && !plain.empty());
        }
    } catch (const CryptorError& error) {
        require(error.number() != 0);
    }
}

void decipherFile(Cryptor3& cryptor, int bits, std::span<const std::uint8_t> bytes) {
    static const QTemporaryDir folder(QStringLiteral("/dev/shm/fuzz_cipher"));
    const QString source = folder.filePath(QStringLiteral("source"));
    const QString target = folder.filePath(QStringLiteral("target"));
    QFile file(source);
    require(file.open(QIODevice::WriteOnly) &&
            file.write(reinterpret_cast<const char*>(bytes.data()),
                       static_cast<qsizetype>(bytes.size())) ==
                static_cast<qsizetype>(bytes.size()));
    file.close();
    const bool done = cryptor.FileDecrypt(target, source, bits);
    require(done == QFile::exists(target));
    if (done) {
        const auto length = static_cast<std::size_t>(QFile(target).size());
        require(length < bytes.size() &&
                length + static_cast<std::size_t>(bits / 8) >= bytes.size());
        QFile::remove(target);
    }
}

}  // namespace
}  // namespace keeper

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    keeper::SilentHost host;
    keeper::Cryptor3 cryptor(host);
    const int form = data[0] / 5 % 4;
    const int bits = 128 + 32 * (data[0] % 5);
    const QString key(bits / 8, QLatin1Char('k'));
    cryptor.SetCipherKeyString(key, bits, bits, false);
    const std::span<const std::uint8_t> rest(data + 1, size - 1);
    if (form == 0) {
        // A copy at an even address, to be read as UTF-16.
        const std::vector<std::uint8_t> aligned(rest.begin(), rest.end());
        keeper::decipherText(cryptor, key, aligned);
    } else if (form == 3) {
        keeper::decipherFile(cryptor, bits, rest);
    } else {
        keeper::decipherArray(cryptor, bits, form == 2, rest);
    }
    return 0;
}
