// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/database_checks.h"

#include <openssl/core_names.h>
#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <sqlcipher/sqlite3.h>

#include <array>
#include <memory>
#include <vector>

#include "crypto/secure_wipe.h"

namespace keeper {
namespace {

// The engine's page layout: 16 bytes of salt head the first page; each page ends in an
// initialisation vector (16), the HMAC-SHA1 (20) over all before it and the page's number, and
// filling up to a whole number of cipher blocks.
constexpr std::size_t kSaltSize = 16;
constexpr std::size_t kVectorSize = 16;
constexpr std::size_t kCodeSize = 20;
constexpr std::size_t kReserve = 48;

[[noreturn]] void corrupt(const char* what) {
    throw DatabaseError(SQLITE_CORRUPT, QStringLiteral("page check: ") + QString::fromLatin1(what));
}

sqlite3_file* fileOf(sqlite3* handle) {
    sqlite3_file* file = nullptr;
    if (sqlite3_file_control(handle, "main", SQLITE_FCNTL_FILE_POINTER, &file) != SQLITE_OK ||
        file == nullptr || file->pMethods == nullptr) {
        throw DatabaseError(SQLITE_IOERR, QStringLiteral("sqlite3_file_control: no file"));
    }
    return file;
}

void read(sqlite3_file* file, std::int64_t offset, void* out, int size) {
    // Through the engine's own descriptor: closing another one would drop the lock.
    if (const int result = file->pMethods->xRead(file, out, size, offset); result != SQLITE_OK) {
        throw DatabaseError(result, QStringLiteral("page check: read failed"));
    }
}

/// HMAC-SHA1 under one key for many pages.
class PageCode {
  public:
    explicit PageCode(const PageKey::Bytes& key)
        : m_mac(EVP_MAC_fetch(nullptr, OSSL_MAC_NAME_HMAC, nullptr)),
          m_context(EVP_MAC_CTX_new(m_mac)) {
        char digest[] = "SHA1";
        const std::array<OSSL_PARAM, 2> parameters{
            OSSL_PARAM_construct_utf8_string(OSSL_MAC_PARAM_DIGEST, digest, 0),
            OSSL_PARAM_construct_end()};
        require(EVP_MAC_init(m_context, key.data(), key.size(), parameters.data()));
    }
    ~PageCode() {
        EVP_MAC_CTX_free(m_context);
        EVP_MAC_free(m_mac);
    }
    PageCode(const PageCode&) = delete;
    PageCode& operator=(const PageCode&) = delete;

    [[nodiscard]] bool matches(const std::uint8_t* data, std::size_t size, std::uint32_t number,
                               const std::uint8_t* expected) {
        const std::array<std::uint8_t, 4> littleEndian{
            static_cast<std::uint8_t>(number), static_cast<std::uint8_t>(number >> 8),
            static_cast<std::uint8_t>(number >> 16), static_cast<std::uint8_t>(number >> 24)};
        std::array<std::uint8_t, kCodeSize> code{};
        std::size_t length = 0;
        require(EVP_MAC_init(m_context, nullptr, 0, nullptr));
        require(EVP_MAC_update(m_context, data, size));
        require(EVP_MAC_update(m_context, littleEndian.data(), littleEndian.size()));
        require(EVP_MAC_final(m_context, code.data(), &length, code.size()));
        return CRYPTO_memcmp(code.data(), expected, code.size()) == 0;
    }

  private:
    static void require(int success) {
        if (success != 1) {
            throw DatabaseError(SQLITE_NOMEM, QStringLiteral("EVP_MAC: failed"));
        }
    }

    EVP_MAC* m_mac;
    EVP_MAC_CTX* m_context;
};

bool haveSameRows(Database& left, Database& right, const char* sql) {
    Statement leftRows(left, sql);
    Statement rightRows(right, sql);
    while (leftRows.step()) {
        if (!rightRows.step() || !leftRows.isSameRowAs(rightRows)) {
            return false;
        }
    }
    return !rightRows.step();
}

}  // namespace

void startCipherLibrary() {
    OPENSSL_init_crypto(OPENSSL_INIT_NO_LOAD_CONFIG, nullptr);
}

PageKey::Salt saltOf(sqlite3* handle) {
    PageKey::Salt salt{};
    read(fileOf(handle), 0, salt.data(), static_cast<int>(salt.size()));
    return salt;
}

void checkAllPages(const Database& database, const DatabaseOptions& options,
                   const PageKey::Bytes& codeKey) {
    sqlite3_file* const file = fileOf(database.handle());
    sqlite3_int64 size = 0;
    if (const int result = file->pMethods->xFileSize(file, &size); result != SQLITE_OK) {
        throw DatabaseError(result, QStringLiteral("page check: size unknown"));
    }
    PageCode code(codeKey);

    const auto pageSize = static_cast<std::size_t>(options.pageSize);
    std::vector<std::uint8_t> page(pageSize);
    const std::int64_t pages = size / options.pageSize;
    for (std::int64_t i = 0; i < pages; ++i) {
        read(file, i * options.pageSize, page.data(), options.pageSize);
        const std::size_t start = i == 0 ? kSaltSize : 0;
        const std::size_t end = pageSize - kReserve + kVectorSize;
        if (!code.matches(&page[start], end - start, static_cast<std::uint32_t>(i + 1),
                          &page[end])) {
            corrupt("wrong authentication code");
        }
    }
}

void compareTables(Database& left, Database& right) {
    constexpr char kSchema[] = "SELECT type, name, tbl_name, sql FROM sqlite_master ORDER BY name";
    bool isSame = haveSameRows(left, right, kSchema);
    Statement tables(
        left,
        "SELECT 'SELECT * FROM \"' || replace(name, '\"', '\"\"') || '\" ORDER BY rowid'"
        " FROM sqlite_master WHERE type='table' AND name NOT LIKE 'sqlite~_%' ESCAPE '~'");
    while (isSame && tables.step()) {
        isSame = haveSameRows(left, right, tables.text(0).toUtf8().constData());
    }
    if (!isSame) {
        corrupt("tables differ");
    }
}

}  // namespace keeper
