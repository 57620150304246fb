// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later
//
// Every path of the cipher beside OpenSSL's AES-ECB and libmcrypt's wide blocks, in memory, and the
// whole-file form. Names: path, block bits, e or d, buffer size.

#include <benchmark/benchmark.h>
#include <mcrypt.h>
#include <openssl/evp.h>

#include <QFile>
#include <QTemporaryDir>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "crypto/cryptor3.h"

namespace {

using keeper::rijndael::Implementation;
using keeper::rijndael::KeySchedule;

constexpr std::size_t cached = 16 * 1024;
constexpr std::size_t large = 64 * 1024 * 1024;

std::vector<std::uint8_t> buffer(std::size_t size) {
    return std::vector<std::uint8_t>(size, 0x5A);
}

void finish(benchmark::State& state, std::size_t bytes) {
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes) * state.iterations());
}

void runPath(benchmark::State& state, const Implementation& path, int bits, bool decrypt,
             std::size_t size) {
    const auto block = static_cast<std::size_t>(bits / 8);
    const std::vector<std::uint8_t> secret(block, 0x2B);
    KeySchedule key;
    keeper::rijndael::expandKey(key, secret, bits / 32);
    const auto index = static_cast<std::size_t>(bits / 32 - 4);
    const auto function = decrypt ? path.decrypt[index] : path.encrypt[index];
    std::vector<std::uint8_t> data = buffer(size);
    for ([[maybe_unused]] auto pass : state) {
        function(decrypt ? key.reverse.data() : key.forward.data(), key.rounds, data.data(),
                 data.data(), size / block);
        benchmark::ClobberMemory();
    }
    finish(state, size / block * block);
}

void runOpenSsl(benchmark::State& state, const EVP_CIPHER* cipher, bool decrypt, std::size_t size) {
    const std::vector<std::uint8_t> secret(32, 0x2B);
    std::vector<std::uint8_t> data = buffer(size);
    const std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)> context(
        EVP_CIPHER_CTX_new(), &EVP_CIPHER_CTX_free);
    EVP_CipherInit_ex(context.get(), cipher, nullptr, secret.data(), nullptr, decrypt ? 0 : 1);
    EVP_CIPHER_CTX_set_padding(context.get(), 0);
    for ([[maybe_unused]] auto pass : state) {
        int length = 0;
        EVP_CipherUpdate(context.get(), data.data(), &length, data.data(), static_cast<int>(size));
        benchmark::ClobberMemory();
    }
    finish(state, size);
}

void runLibmcrypt(benchmark::State& state, std::string algorithm, int bits, bool decrypt,
                  std::size_t size) {
    std::vector<std::uint8_t> secret(static_cast<std::size_t>(bits / 8), 0x2B);
    std::string mode = "ecb";
    const auto block = static_cast<std::size_t>(bits / 8);
    std::vector<std::uint8_t> data = buffer(size / block * block);
    const MCRYPT peer = mcrypt_module_open(algorithm.data(), nullptr, mode.data(), nullptr);
    mcrypt_generic_init(peer, secret.data(), bits / 8, nullptr);
    for ([[maybe_unused]] auto pass : state) {
        if (decrypt) {
            mdecrypt_generic(peer, data.data(), static_cast<int>(data.size()));
        } else {
            mcrypt_generic(peer, data.data(), static_cast<int>(data.size()));
        }
        benchmark::ClobberMemory();
    }
    mcrypt_generic_deinit(peer);
    mcrypt_module_close(peer);
    finish(state, data.size());
}

class SilentHost final : public keeper::CryptorHost {
  public:
    void showMessage(Severity /*severity*/, const QString& text) override {
        std::fprintf(stderr, "%s\n", qUtf8Printable(text));
    }
    void turnEventLoop() override {}
};

void runFile(benchmark::State& state, bool decrypt) {
    const bool hasMemoryFolder = QFile::exists(QStringLiteral("/dev/shm"));
    const QTemporaryDir folder(hasMemoryFolder ? QStringLiteral("/dev/shm/cipher_bench")
                                               : QStringLiteral("cipher_bench"));
    constexpr std::size_t size = 256 * 1024 * 1024;
    const QString plain = folder.filePath(QStringLiteral("plain"));
    const QString sealed = folder.filePath(QStringLiteral("plain.aes"));
    {
        QFile file(plain);
        const auto data = buffer(size);
        if (!file.open(QIODevice::WriteOnly) ||
            file.write(reinterpret_cast<const char*>(data.data()), qint64{size}) != qint64{size}) {
            state.SkipWithError("cannot write the source");
            return;
        }
    }
    const QString key(32, QLatin1Char('k'));
    SilentHost host;
    keeper::Cryptor3 cryptor(host);
    bool good = !decrypt || cryptor.EncryptFile(plain, sealed, key, false);
    const QString target = decrypt ? folder.filePath(QStringLiteral("back")) : sealed;
    for ([[maybe_unused]] auto pass : state) {
        good = (decrypt ? cryptor.DecryptFile(sealed, target, key, false)
                        : cryptor.EncryptFile(plain, target, key, false)) &&
               good;
        state.PauseTiming();
        QFile::remove(target);
        state.ResumeTiming();
    }
    if (!good) {
        state.SkipWithError("the file operation failed");
    }
    finish(state, size);
}

std::string sizeName(std::size_t size) {
    return size == large ? "/64M" : "/16K";
}

void add(const std::string& name, auto function) {
    benchmark::RegisterBenchmark(name.c_str(), function)->Unit(benchmark::kMicrosecond);
}

void addAll() {
    using namespace keeper::rijndael;
    for (const std::size_t size : {cached, large}) {
        for (const bool decrypt : {false, true}) {
            const std::string way = std::string(decrypt ? "/d" : "/e").append(sizeName(size));
            add("openssl_aes_128_ecb" + way, [=](benchmark::State& state) {
                runOpenSsl(state, EVP_aes_128_ecb(), decrypt, size);
            });
            add("openssl_aes_256_ecb" + way, [=](benchmark::State& state) {
                runOpenSsl(state, EVP_aes_256_ecb(), decrypt, size);
            });
            for (const int bits : {192, 256}) {
                const std::string algorithm = bits == 192 ? "rijndael-192" : "rijndael-256";
                add("libmcrypt_" + algorithm + way, [=](benchmark::State& state) {
                    runLibmcrypt(state, algorithm, bits, decrypt, size);
                });
            }
            for (const unsigned path : {Portable, AesNi, Vaes256, Vaes512}) {
                const Implementation& implementation = selectImplementation(path);
                if (implementation.path != path) {
                    continue;
                }
                for (int bits = 128; bits <= 256; bits += 32) {
                    add(std::string(implementation.name)
                            .append("/")
                            .append(std::to_string(bits))
                            .append(way),
                        [=, &implementation](benchmark::State& state) {
                            runPath(state, implementation, bits, decrypt, size);
                        });
                }
            }
        }
    }
    add("encrypt_file_256M", [](benchmark::State& state) { runFile(state, false); });
    add("decrypt_file_256M", [](benchmark::State& state) { runFile(state, true); });
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    addAll();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
