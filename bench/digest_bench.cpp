// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

// The digests and the exclusive-or beside the same work of OpenSSL, and of memcpy for the latter.

#include <benchmark/benchmark.h>
#include <openssl/evp.h>

#include <cstring>
#include <vector>

#include "crypto/cryptor2.h"
#include "crypto/cryptor5.h"
#include "crypto/md5.h"
#include "crypto/sha1.h"

namespace keeper {
namespace {

constexpr std::size_t kSmall = std::size_t{16} << 10;
constexpr std::size_t kLarge = std::size_t{64} << 20;

class SilentHost final : public CryptorHost {
  public:
    void showMessage(Severity /*severity*/, const QString& /*text*/) override {}
    void turnEventLoop() override {}
};

std::vector<std::uint8_t> data(const benchmark::State& state) {
    return std::vector<std::uint8_t>(static_cast<std::size_t>(state.range(0)), 0x5A);
}

void count(benchmark::State& state) {
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

void md5(benchmark::State& state) {
    const auto bytes = data(state);
    for (auto _ : state) {
        Md5State words = kMd5Start;
        md5Transform(words, bytes.data(), bytes.size() / 64);
        benchmark::DoNotOptimize(words);
    }
    count(state);
}

void sha1(benchmark::State& state, bool allowHardware) {
    const auto bytes = data(state);
    const Sha1Path path = sha1Path(allowHardware);
    state.SetLabel(path.name);
    for (auto _ : state) {
        Sha1State words = kSha1Start;
        path.transform(words, bytes.data(), bytes.size() / 64);
        benchmark::DoNotOptimize(words);
    }
    count(state);
}

void openssl(benchmark::State& state, const EVP_MD* (*algorithm)()) {
    const auto bytes = data(state);
    unsigned char digest[EVP_MAX_MD_SIZE];
    for (auto _ : state) {
        EVP_Digest(bytes.data(), bytes.size(), digest, nullptr, algorithm(), nullptr);
        benchmark::DoNotOptimize(digest);
    }
    count(state);
}

void xorCipher(benchmark::State& state) {
    auto bytes = data(state);
    SilentHost host;
    Cryptor5 cipher(host);
    cipher.key(QStringLiteral("a key of twenty-nine letters."));
    for (auto _ : state) {
        cipher.EncryptByte(bytes, QString());
        benchmark::ClobberMemory();
    }
    count(state);
}

void copy(benchmark::State& state) {
    const auto bytes = data(state);
    auto target = bytes;
    for (auto _ : state) {
        std::memcpy(target.data(), bytes.data(), bytes.size());
        benchmark::ClobberMemory();
    }
    count(state);
}

BENCHMARK(md5)->Arg(kSmall)->Arg(kLarge);
BENCHMARK_CAPTURE(openssl, md5, EVP_md5)->Arg(kSmall)->Arg(kLarge);
BENCHMARK_CAPTURE(sha1, chosen, true)->Arg(kSmall)->Arg(kLarge);
BENCHMARK_CAPTURE(sha1, portable, false)->Arg(kSmall)->Arg(kLarge);
BENCHMARK_CAPTURE(openssl, sha1, EVP_sha1)->Arg(kSmall)->Arg(kLarge);
BENCHMARK(xorCipher)->Arg(kSmall)->Arg(kLarge);
BENCHMARK(copy)->Arg(kSmall)->Arg(kLarge);

}  // namespace
}  // namespace keeper

BENCHMARK_MAIN();
