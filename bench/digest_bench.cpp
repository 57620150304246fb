// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

// The digests and the exclusive-or beside the same work of OpenSSL, and of memcpy for the latter;
// in memory, and the file forms beside a plain read loop or a copy of the same file.

#include <benchmark/benchmark.h>
#include <openssl/evp.h>

#include <QFile>
#include <QTemporaryDir>
#include <cstring>
#include <vector>

#include "crypto/cryptor1.h"
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

/// A file of state.range(0) bytes on a memory file system where there is one.
class SampleFile {
  public:
    explicit SampleFile(const benchmark::State& state) {
        const auto bytes = data(state);
        QFile file(path(QStringLiteral("source")));
        isGood = file.open(QIODevice::WriteOnly) &&
                 file.write(reinterpret_cast<const char*>(bytes.data()),
                            static_cast<qsizetype>(bytes.size())) ==
                     static_cast<qsizetype>(bytes.size());
    }
    QString path(const QString& name) const { return m_folder.filePath(name); }

    bool isGood = false;

  private:
    QTemporaryDir m_folder{QFile::exists(QStringLiteral("/dev/shm"))
                               ? QStringLiteral("/dev/shm/digest_bench")
                               : QStringLiteral("digest_bench")};
};

/// `work` says whether it succeeded.
void onFile(benchmark::State& state, const SampleFile& sample, auto work) {
    bool good = sample.isGood;
    for (auto _ : state) {
        good = work() && good;
    }
    if (!good) {
        state.SkipWithError("the file operation failed");
    }
    count(state);
}

void md5File(benchmark::State& state) {
    const SampleFile sample(state);
    SilentHost host;
    Cryptor1 cryptor(host);
    QString digest;
    onFile(state, sample,
           [&] { return cryptor.hashFile(sample.path(QStringLiteral("source")), digest); });
}

void sha1File(benchmark::State& state) {
    const SampleFile sample(state);
    Cryptor2::BusyFlag busy;
    onFile(state, sample, [&] {
        return !Cryptor2(busy).hashFile(sample.path(QStringLiteral("source"))).isEmpty();
    });
}

void opensslFile(benchmark::State& state, const EVP_MD* (*algorithm)()) {
    const SampleFile sample(state);
    std::vector<char> buffer(kSmall);
    onFile(state, sample, [&] {
        QFile file(sample.path(QStringLiteral("source")));
        EVP_MD_CTX* const context = EVP_MD_CTX_new();
        bool good = file.open(QIODevice::ReadOnly | QIODevice::Unbuffered) &&
                    EVP_DigestInit_ex(context, algorithm(), nullptr) == 1;
        for (qint64 got = 1; good && got > 0;) {
            got = file.read(buffer.data(), static_cast<qint64>(buffer.size()));
            good = got >= 0 &&
                   EVP_DigestUpdate(context, buffer.data(), static_cast<std::size_t>(got)) == 1;
        }
        unsigned char digest[EVP_MAX_MD_SIZE];
        good = good && EVP_DigestFinal_ex(context, digest, nullptr) == 1;
        EVP_MD_CTX_free(context);
        return good;
    });
}

/// There and back again, since each way consumes its source: two passes over the file a turn.
void xorFile(benchmark::State& state) {
    const SampleFile sample(state);
    SilentHost host;
    Cryptor5 cipher(host);
    const QString key = QStringLiteral("a key of twenty-nine letters.");
    const QString source = sample.path(QStringLiteral("source"));
    const QString target = sample.path(QStringLiteral("target"));
    onFile(state, sample, [&] {
        return cipher.EncryptFile(source, target, key) && cipher.DecryptFile(target, source, key);
    });
}

void copyFile(benchmark::State& state) {
    const SampleFile sample(state);
    const QString source = sample.path(QStringLiteral("source"));
    const QString target = sample.path(QStringLiteral("target"));
    onFile(state, sample, [&] {
        return QFile::copy(source, target) && QFile::remove(source) &&
               QFile::copy(target, source) && QFile::remove(target);
    });
}

BENCHMARK(md5File)->Arg(kLarge);
BENCHMARK_CAPTURE(opensslFile, md5, EVP_md5)->Arg(kLarge);
BENCHMARK(sha1File)->Arg(kLarge);
BENCHMARK_CAPTURE(opensslFile, sha1, EVP_sha1)->Arg(kLarge);
BENCHMARK(xorFile)->Arg(kLarge);
BENCHMARK(copyFile)->Arg(kLarge);
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
