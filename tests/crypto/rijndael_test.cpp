// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "crypto/rijndael.h"

#include <gtest/gtest.h>
#include <mcrypt.h>
#include <openssl/evp.h>

#include <algorithm>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "crypto/cipher_self_test.h"
#include "support/test_files.h"

namespace keeper::rijndael {

void PrintTo(const Implementation* implementation, std::ostream* out) {
    *out << implementation->name;
}

namespace {

Bytes fromHex(const std::string& hex) {
    Bytes bytes;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
        bytes.push_back(static_cast<std::uint8_t>(std::stoi(hex.substr(i, 2), nullptr, 16)));
    }
    return bytes;
}

void run(const Implementation& implementation, const KeySchedule& key, bool decrypt,
         const std::uint8_t* source, std::uint8_t* destination, std::size_t blocks) {
    const auto index = static_cast<std::size_t>(key.columns - 4);
    const auto function = decrypt ? implementation.decrypt[index] : implementation.encrypt[index];
    function(decrypt ? key.reverse.data() : key.forward.data(), key.rounds, source, destination,
             blocks);
}

Bytes run(const Implementation& implementation, const KeySchedule& key, bool decrypt,
          const Bytes& data) {
    Bytes result(data.size());
    run(implementation, key, decrypt, data.data(), result.data(),
        data.size() / static_cast<std::size_t>(4 * key.columns));
    return result;
}

/// Each path that this machine has, once.
std::vector<const Implementation*> paths() {
    std::vector<const Implementation*> found;
    for (const unsigned path : {Portable, AesNi, Vaes256, Vaes512}) {
        const Implementation& implementation = selectImplementation(path);
        if (implementation.path == path) {
            found.push_back(&implementation);
        }
    }
    return found;
}

class RijndaelPath : public testing::TestWithParam<const Implementation*> {};

INSTANTIATE_TEST_SUITE_P(All, RijndaelPath, testing::ValuesIn(paths()),
                         [](const auto& path) { return std::string(path.param->name); });

struct Vector {
    const char* key;
    const char* plain;
    const char* cipher;
};

TEST_P(RijndaelPath, PublishedVectors) {
    const Vector vectors[] = {
        // FIPS 197, appendix C.
        {"000102030405060708090a0b0c0d0e0f", "00112233445566778899aabbccddeeff",
         "69c4e0d86a7b0430d8cdb78070b4c55a"},
        {"000102030405060708090a0b0c0d0e0f1011121314151617", "00112233445566778899aabbccddeeff",
         "dda97ca4864cdfe06eaf70a0ec0d7191"},
        {"000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f",
         "00112233445566778899aabbccddeeff", "8ea2b7ca516745bfeafc49904b496089"},
        // B. Gladman's vectors for all block sizes: the digits of e as key, of pi as text.
        {"2b7e151628aed2a6abf7158809cf4f3c", "3243f6a8885a308d313198a2e0370734",
         "3925841d02dc09fbdc118597196a0b32"},
        {"2b7e151628aed2a6abf7158809cf4f3c", "3243f6a8885a308d313198a2e03707344a409382",
         "16e73aec921314c29df905432bc8968ab64b1f51"},
        {"2b7e151628aed2a6abf7158809cf4f3c", "3243f6a8885a308d313198a2e03707344a4093822299f31d",
         "b24d275489e82bb8f7375e0d5fcdb1f481757c538b65148a"},
        {"2b7e151628aed2a6abf7158809cf4f3c",
         "3243f6a8885a308d313198a2e03707344a4093822299f31d0082efa98ec4e6c8",
         "7d15479076b69a46ffb3b3beae97ad8313f622f67fedb487de9f06b9ed9c8f19"},
        // The sizes that no publication covers, computed by two independent byte-wise programs
        // that were proved on the vectors above; more digits of e and pi.
        {"2b7e151628aed2a6abf7158809cf4f3c",
         "3243f6a8885a308d313198a2e03707344a4093822299f31d0082efa9",
         "b0a8f78f6b3c66213f792ffd2a61631f79331407a5e5c8d3793aceb1"},
        {"2b7e151628aed2a6abf7158809cf4f3c762e7160",
         "3243f6a8885a308d313198a2e03707344a4093822299f31d0082efa9",
         "08b99944edfce33a2acb131183ab0168446b2d15e958480010f545e3"},
        {"2b7e151628aed2a6abf7158809cf4f3c762e7160f38b4da56a784d90",
         "3243f6a8885a308d313198a2e03707344a4093822299f31d0082efa9",
         "ef529598ecbce297811b49bbed2c33bbe1241d6e1a833dbe119569e8"},
        {"2b7e151628aed2a6abf7158809cf4f3c762e7160", "3243f6a8885a308d313198a2e03707344a409382",
         "0553eb691670dd8a5a5b5addf1aa7450f7a0e587"},
        {"2b7e151628aed2a6abf7158809cf4f3c762e7160", "3243f6a8885a308d313198a2e0370734",
         "231d844639b31b412211cfe93712b880"},
        {"2b7e151628aed2a6abf7158809cf4f3c762e7160f38b4da56a784d90",
         "3243f6a8885a308d313198a2e0370734", "8faa8fe4dee9eb17caa4797502fc9d3f"},
        {"2b7e151628aed2a6abf7158809cf4f3c762e7160f38b4da56a784d9045190cfe",
         "3243f6a8885a308d313198a2e03707344a4093822299f31d0082efa98ec4e6c8",
         "a49406115dfb30a40418aafa4869b7c6a886ff31602a7dd19c889dc64f7e4e7a"},
    };
    for (const Vector& vector : vectors) {
        const Bytes plain = fromHex(vector.plain);
        KeySchedule key;
        expandKey(key, fromHex(vector.key), static_cast<int>(plain.size() / 4));
        EXPECT_EQ(run(*GetParam(), key, false, plain), fromHex(vector.cipher)) << vector.key;
        EXPECT_EQ(run(*GetParam(), key, true, fromHex(vector.cipher)), plain) << vector.key;
    }
}

TEST_P(RijndaelPath, AesAgreesWithOpenSsl) {
    for (const std::size_t keyBytes : {16U, 24U, 32U}) {
        const Bytes secret = noise(keyBytes, 7);
        const Bytes plain = noise(16 * 10'000, 8);
        KeySchedule key;
        expandKey(key, secret, 4);
        const std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)> context(
            EVP_CIPHER_CTX_new(), &EVP_CIPHER_CTX_free);
        const EVP_CIPHER* cipher = keyBytes == 16   ? EVP_aes_128_ecb()
                                   : keyBytes == 24 ? EVP_aes_192_ecb()
                                                    : EVP_aes_256_ecb();
        ASSERT_EQ(EVP_EncryptInit_ex(context.get(), cipher, nullptr, secret.data(), nullptr), 1);
        EVP_CIPHER_CTX_set_padding(context.get(), 0);
        Bytes expected(plain.size());
        int length = 0;
        ASSERT_EQ(EVP_EncryptUpdate(context.get(), expected.data(), &length, plain.data(),
                                    static_cast<int>(plain.size())),
                  1);
        ASSERT_EQ(static_cast<std::size_t>(length), plain.size());
        EXPECT_TRUE(run(*GetParam(), key, false, plain) == expected) << keyBytes;
        EXPECT_TRUE(run(*GetParam(), key, true, expected) == plain) << keyBytes;
    }
}

TEST_P(RijndaelPath, WideBlocksAgreeWithLibmcrypt) {
    for (const int columns : {6, 8}) {
        const std::string name = columns == 6 ? "rijndael-192" : "rijndael-256";
        for (const std::size_t keyBytes : {16U, 24U, 32U}) {
            Bytes secret = noise(keyBytes, 9);
            const Bytes plain = noise(static_cast<std::size_t>(4 * columns) * 10'000, 10);
            KeySchedule key;
            expandKey(key, secret, columns);
            std::string algorithm = name;
            std::string mode = "ecb";
            const MCRYPT peer = mcrypt_module_open(algorithm.data(), nullptr, mode.data(), nullptr);
            ASSERT_NE(peer, nullptr);
            ASSERT_GE(mcrypt_generic_init(peer, secret.data(), static_cast<int>(keyBytes), nullptr),
                      0);
            Bytes expected = plain;
            EXPECT_EQ(mcrypt_generic(peer, expected.data(), static_cast<int>(expected.size())), 0);
            mcrypt_generic_deinit(peer);
            mcrypt_module_close(peer);
            EXPECT_TRUE(run(*GetParam(), key, false, plain) == expected) << name << keyBytes;
            EXPECT_TRUE(run(*GetParam(), key, true, expected) == plain) << name << keyBytes;
        }
    }
}

TEST_P(RijndaelPath, AllPairsInvertAndHaveTheirRounds) {
    for (int columns = 4; columns <= 8; ++columns) {
        for (int keyColumns = 4; keyColumns <= 8; ++keyColumns) {
            KeySchedule key;
            expandKey(key, noise(static_cast<std::size_t>(4 * keyColumns)), columns);
            EXPECT_EQ(key.rounds, std::max(columns, keyColumns) + 6);
            const Bytes plain = noise(static_cast<std::size_t>(4 * columns) * 1000);
            const Bytes cipher = run(*GetParam(), key, false, plain);
            EXPECT_TRUE(cipher == run(portableImplementation, key, false, plain));
            EXPECT_TRUE(run(*GetParam(), key, true, cipher) == plain);
        }
    }
}

TEST(CipherSelfTest, PassesHere) {
    EXPECT_TRUE(cipherSelfTest());
}

/// Counts around the widths of the kernels, at addresses of every kind, and nothing beside the
/// blocks is touched.
TEST_P(RijndaelPath, AnyCountAnyAddressInPlaceAndNot) {
    constexpr std::size_t most = 300;
    constexpr std::uint8_t untouched = 0xA5;
    for (int columns = 4; columns <= 8; ++columns) {
        const auto block = static_cast<std::size_t>(4 * columns);
        KeySchedule key;
        expandKey(key, noise(32, 11), columns);
        const Bytes plain = noise(most * block, 12);
        for (const bool decrypt : {false, true}) {
            const Bytes expected = run(portableImplementation, key, decrypt, plain);
            for (std::size_t blocks = 1; blocks <= most; ++blocks) {
                const std::size_t bytes = blocks * block;
                const std::size_t from = blocks % 17;
                const std::size_t to = blocks * 7 % 19;
                Bytes source(from + bytes);
                std::copy_n(plain.begin(), bytes, source.begin() + static_cast<long>(from));
                Bytes target(to + bytes + 1, untouched);
                run(*GetParam(), key, decrypt, source.data() + from, target.data() + to, blocks);
                ASSERT_TRUE(std::equal(target.begin() + static_cast<long>(to), target.end() - 1,
                                       expected.begin()))
                    << columns << " " << blocks;
                ASSERT_EQ(target.back(), untouched);
                ASSERT_TRUE(to == 0 || target[to - 1] == untouched);
                run(*GetParam(), key, decrypt, source.data() + from, source.data() + from, blocks);
                ASSERT_TRUE(std::equal(source.begin() + static_cast<long>(from), source.end(),
                                       expected.begin()))
                    << columns << " " << blocks << " in place";
            }
        }
    }
}

}  // namespace
}  // namespace keeper::rijndael
