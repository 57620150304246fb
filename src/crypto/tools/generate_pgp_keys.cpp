// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

// Prints the source file of the table of public keys (pgp_keys.cpp). The table in the tree is the
// one that all stored data depends on: a new one makes a program that reads no older database.

#include <sys/random.h>

#include <cstdio>
#include <set>
#include <stdexcept>

#include "crypto/cryptor4.h"

namespace {

constexpr std::size_t kKeys = 50;

class NoHost final : public keeper::CryptorHost {
  public:
    void showMessage(Severity, const QString&) override {}
    void turnEventLoop() override {}
};

void systemRandom(std::span<std::uint8_t> bytes) {
    if (::getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
        throw std::runtime_error("getrandom failed");
    }
}

}  // namespace

int main() {
    NoHost host;
    keeper::Cryptor4 codec(host, systemRandom);
    std::set<keeper::Cryptor4::Key> keys;
    while (keys.size() < kKeys) {
        keys.insert(codec.GenKey(0));
    }
    std::puts(
        "// SPDX-FileCopyrightText: Morvane Keeper contributors\n"
        "// SPDX-License-Identifier: GPL-3.0-or-later\n"
        "\n"
        "// Made by generate-pgp-keys.\n"
        "\n"
        "#include \"crypto/pgp_keys.h\"\n"
        "\n"
        "namespace keeper {\n"
        "\n"
        "const std::array<Cryptor4::Key, 50> kPgpKeys = {{");
    for (const auto& [e, d, n] : keys) {
        std::printf("    {%d, %d, %d},\n", e, d, n);
    }
    std::puts("}};\n\n}  // namespace keeper");
    return 0;
}
