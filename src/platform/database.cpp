// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/database.h"

#include <fcntl.h>
#include <sqlcipher/sqlite3.h>
#include <unistd.h>

#include <QByteArray>
#include <QFile>
#include <QFileInfo>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include "crypto/secure_wipe.h"
#include "platform/database_checks.h"
#include "platform/page_key.h"
#include "platform/unique_fd.h"
#include "platform/wiping_allocator.h"

namespace keeper {
namespace {

/// Holds the lock of the whole process from the first read on.
constexpr char kVfs[] = "unix-excl";

[[noreturn]] void fail(sqlite3* handle, int result, const char* call) {
    const int number = handle != nullptr ? sqlite3_extended_errcode(handle) : result;
    const char* text = handle != nullptr ? sqlite3_errmsg(handle) : sqlite3_errstr(result);
    throw DatabaseError(
        number == SQLITE_OK ? result : number,
        QStringLiteral("%1: %2").arg(QString::fromLatin1(call), QString::fromUtf8(text)));
}

void check(sqlite3* handle, int result, const char* call) {
    if (result != SQLITE_OK) {
        fail(handle, result, call);
    }
}

void run(sqlite3* handle, const QByteArray& sql) {
    if (handle == nullptr) {
        throw DatabaseError(SQLITE_MISUSE, QStringLiteral("sqlite3_exec: not open"));
    }
    check(handle, sqlite3_exec(handle, sql.constData(), nullptr, nullptr, nullptr), "sqlite3_exec");
}

/// The one number that a pragma or a counting query answers.
std::int64_t number(sqlite3* handle, const char* sql) {
    if (handle == nullptr) {
        throw DatabaseError(SQLITE_MISUSE, QStringLiteral("sqlite3_prepare_v2: not open"));
    }
    sqlite3_stmt* statement = nullptr;
    check(handle, sqlite3_prepare_v2(handle, sql, -1, &statement, nullptr), "sqlite3_prepare_v2");
    const int result = sqlite3_step(statement);
    const std::int64_t value = result == SQLITE_ROW ? sqlite3_column_int64(statement, 0) : 0;
    const int finalized = sqlite3_finalize(statement);
    if (result != SQLITE_ROW) {
        fail(handle, finalized == SQLITE_OK ? SQLITE_ERROR : finalized, "sqlite3_step");
    }
    return value;
}

class Secret {
  public:
    explicit Secret(const QString& text) : m_bytes(text.toUtf8()) {}
    explicit Secret(const PageKey& key) : m_bytes(key.readyForm()) {}
    ~Secret() { secureWipe(m_bytes.data(), static_cast<std::size_t>(m_bytes.size())); }
    Secret(const Secret&) = delete;
    Secret& operator=(const Secret&) = delete;
    [[nodiscard]] const char* data() const { return m_bytes.constData(); }
    [[nodiscard]] int size() const { return static_cast<int>(m_bytes.size()); }

  private:
    QByteArray m_bytes;
};

void refuseUnfitPassword(const QString& password) {
    // The engine takes x'…' as a ready page key without derivation.
    constexpr qsizetype kShortestReadyKey = 67;
    if (password.isEmpty() || (password.startsWith(QStringLiteral("x'"), Qt::CaseInsensitive) &&
                               password.toUtf8().size() >= kShortestReadyKey)) {
        throw DatabaseError(SQLITE_MISUSE, QStringLiteral("sqlite3_key: unfit password"));
    }
}

/// Cipher parameters are told at every open: the defaults differ between versions of the engine.
/// Later ones know the digests by names of their own and reset everything on
/// cipher_compatibility, so that comes first; earlier ones know SHA-1 only and pass over all three.
QByteArray cipherPragmas(const char* schema, const DatabaseOptions& options) {
    const QByteArray name(schema);
    return "PRAGMA " + name + ".cipher_compatibility=3;PRAGMA " + name +
           ".cipher_hmac_algorithm=HMAC_SHA1;PRAGMA " + name +
           ".cipher_kdf_algorithm=PBKDF2_HMAC_SHA1;PRAGMA " + name +
           ".cipher_page_size=" + QByteArray::number(options.pageSize) + ";PRAGMA " + name +
           ".kdf_iter=" + QByteArray::number(options.keyRounds) + ";PRAGMA " + name +
           ".cipher='aes-256-cbc';PRAGMA " + name + ".cipher_use_hmac=ON;";
}

void createEmptyFile(const QString& path) {
    const QByteArray name = QFile::encodeName(path);
    const int file = ::open(name.constData(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0600);
    if (file < 0) {
        throw DatabaseError(
            SQLITE_CANTOPEN,
            QStringLiteral("open: %1").arg(QString::fromLocal8Bit(std::strerror(errno))));
    }
    ::close(file);
}

void flushFile(const QString& path) {
    const QByteArray name = QFile::encodeName(path);
    const int file = ::open(name.constData(), O_RDONLY | O_CLOEXEC);
    const bool flushed = file >= 0 && ::fsync(file) == 0;
    const int error = errno;
    if (file >= 0) {
        ::close(file);
    }
    if (!flushed) {
        throw DatabaseError(
            SQLITE_IOERR_FSYNC,
            QStringLiteral("fsync: %1").arg(QString::fromLocal8Bit(std::strerror(error))));
    }
}

/// Frees a connection on every way out but the one that hands it over.
class Connection {
  public:
    Connection() = default;
    ~Connection() { sqlite3_close_v2(m_handle); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    [[nodiscard]] sqlite3** out() { return &m_handle; }
    [[nodiscard]] sqlite3* get() const { return m_handle; }
    [[nodiscard]] sqlite3* release() { return std::exchange(m_handle, nullptr); }

  private:
    sqlite3* m_handle = nullptr;
};

}  // namespace

bool DatabaseError::saysNoDatabase() const {
    const int primary = m_number & 0xFF;
    return primary == SQLITE_NOTADB || primary == SQLITE_CORRUPT || primary == SQLITE_FORMAT;
}

bool DatabaseError::saysWrongPassword() const {
    return (m_number & 0xFF) == SQLITE_NOTADB;
}

bool DatabaseError::saysBusy() const {
    const int primary = m_number & 0xFF;
    return primary == SQLITE_BUSY || primary == SQLITE_LOCKED;
}

bool Database::isHeldElsewhere(const QString& path) {
    const UniqueFd file(::open(QFile::encodeName(path).constData(), O_RDWR | O_CLOEXEC));
    // The bytes on which the engine keeps its locks, from the pending byte to the shared range.
    struct flock lock {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    lock.l_start = 0x40000000;
    lock.l_len = 512;
    return file.isValid() && ::fcntl(file.get(), F_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

Database::Database(DatabaseOptions options) : m_options(options) {
    installWipingAllocator();
}

Database::~Database() {
    dropStatements();
    sqlite3_close_v2(m_handle);
    forgetCodeKey();
}

sqlite3* Database::connect(const QString& path, const QString& password, bool isNew,
                           std::unique_ptr<PageKey>* pageKey) const {
    refuseUnfitPassword(password);
    startCipherLibrary();
    const KeyAllocations keys(m_options.locksKeys);
    Connection connection;
    const QByteArray name = QFile::encodeName(path);
    check(nullptr,
          sqlite3_open_v2(name.constData(), connection.out(),
                          SQLITE_OPEN_READWRITE | SQLITE_OPEN_PRIVATECACHE | SQLITE_OPEN_NOMUTEX,
                          kVfs),
          "sqlite3_open_v2");
    sqlite3* handle = connection.get();
    check(handle, sqlite3_extended_result_codes(handle, 1), "sqlite3_extended_result_codes");
    if (pageKey != nullptr) {
        *pageKey = std::make_unique<PageKey>(password, saltOf(handle), m_options.keyRounds);
    }
    const Secret key = pageKey != nullptr ? Secret(**pageKey) : Secret(password);
    check(handle, sqlite3_key(handle, key.data(), key.size()), "sqlite3_key");
    run(handle, cipherPragmas("main", m_options));
    // Sub-journals and sorters stay in memory: the engine would write them in clear.
    run(handle,
        "PRAGMA temp_store=MEMORY;PRAGMA secure_delete=ON;PRAGMA journal_mode=DELETE;"
        "PRAGMA synchronous=FULL;PRAGMA mmap_size=0;PRAGMA cell_size_check=ON;"
        "PRAGMA foreign_keys=ON;PRAGMA locking_mode=EXCLUSIVE;PRAGMA cache_size=-16384;");
    // EXCLUSIVE excludes nobody before the first write lock.
    run(handle, "BEGIN EXCLUSIVE;");
    if (isNew) {
        run(handle, "PRAGMA main.user_version=0;");
    }
    static_cast<void>(number(handle, "SELECT count(*) FROM sqlite_master"));
    run(handle, "COMMIT;");
    if (number(handle, "PRAGMA foreign_keys") != 1) {
        throw DatabaseError(SQLITE_ERROR, QStringLiteral("PRAGMA foreign_keys: not available"));
    }
    return connection.release();
}

void Database::create(const QString& path, const QString& password) {
    if (isOpen()) {
        throw DatabaseError(SQLITE_MISUSE, QStringLiteral("Database.create: is open"));
    }
    refuseUnfitPassword(password);
    createEmptyFile(path);
    try {
        m_handle = connect(path, password, /*isNew=*/true);
    } catch (...) {
        QFile::remove(path);
        throw;
    }
    m_path = path;
}

void Database::open(const QString& path, const QString& password, Trust trust) {
    if (isOpen()) {
        throw DatabaseError(SQLITE_MISUSE, QStringLiteral("Database.open: is open"));
    }
    // The engine would take an empty file for a new database under any password. The size of a file
    // with a journal is only final once that is rolled back.
    const QFileInfo file(path);
    const bool hasJournal = QFileInfo(path + QStringLiteral("-journal")).size() > 0;
    if (!file.isFile() || file.size() == 0 ||
        (!hasJournal && file.size() % m_options.pageSize != 0)) {
        throw DatabaseError(SQLITE_NOTADB, QStringLiteral("open: file is not a database"));
    }
    std::unique_ptr<PageKey> pageKey;
    m_handle = connect(path, password, /*isNew=*/false, &pageKey);
    m_path = path;
    try {
        checkSize();
        m_codeKey = pageKey->codeKey();
        if (trust == Trust::AllPages) {
            checkPages();
        }
    } catch (...) {
        sqlite3_close_v2(std::exchange(m_handle, nullptr));
        m_path.clear();
        forgetCodeKey();
        throw;
    }
}

void Database::checkSize() const {
    // The engine tolerates bytes behind the end and a cut inside the last page.
    const std::int64_t pages = number(m_handle, "PRAGMA page_count");
    if (QFileInfo(m_path).size() != pages * m_options.pageSize) {
        throw DatabaseError(SQLITE_CORRUPT, QStringLiteral("page_count: size of the file differs"));
    }
}

void Database::close() {
    if (m_handle == nullptr) {
        return;
    }
    dropStatements();
    check(m_handle, sqlite3_close(m_handle), "sqlite3_close");
    m_handle = nullptr;
    m_path.clear();
    forgetCodeKey();
}

void Database::checkPages() const {
    checkSize();
    checkAllPages(*this, m_options, m_codeKey);
}

void Database::forgetCodeKey() {
    secureWipe(m_codeKey.data(), m_codeKey.size());
}

void Database::rekey(const QString& oldPassword, const QString& newPassword,
                     const QString& beside) {
    // The engine's own change of the password is of no use: one that fails half-way leaves a
    // connection that writes its pages under the new password among those under the old one.
    const QString path = m_path;
    exportTo(beside, newPassword);
    close();
    if (std::rename(QFile::encodeName(beside).constData(), QFile::encodeName(path).constData()) !=
        0) {
        const int error = errno;
        QFile::remove(beside);
        open(path, oldPassword);
        throw DatabaseError(SQLITE_IOERR, QStringLiteral("rename: ") +
                                              QString::fromLocal8Bit(std::strerror(error)));
    }
    open(path, newPassword);
}

void Database::exportTo(const QString& target, const QString& password) {
    refuseUnfitPassword(password);
    createEmptyFile(target);
    try {
        {
            Statement attach(*this, "ATTACH DATABASE ?1 AS target KEY ?2");
            attach.bind(1, target).bind(2, password).run();
        }
        run(m_handle, cipherPragmas("target", m_options));
        // A failed copy is deleted whole and a good one flushed once, so it needs no journal.
        run(m_handle, "PRAGMA target.journal_mode=OFF;PRAGMA target.synchronous=OFF;");
        const std::int64_t applicationId = number(m_handle, "PRAGMA main.application_id");
        const std::int64_t userVersion = number(m_handle, "PRAGMA main.user_version");
        static_cast<void>(number(m_handle, "SELECT coalesce(sqlcipher_export('target'),0)"));
        run(m_handle, "PRAGMA target.application_id=" + QByteArray::number(qint64{applicationId}) +
                          ";PRAGMA target.user_version=" + QByteArray::number(qint64{userVersion}));
        run(m_handle, "DETACH DATABASE target");
        Database copy(m_options);
        copy.open(target, password, Trust::AllPages);
        compareTables(*this, copy);
        if (const QString fault = copy.checkIntegrity(); !fault.isEmpty()) {
            throw DatabaseError(SQLITE_CORRUPT, QStringLiteral("integrity_check: ") + fault);
        }
        copy.close();
        flushFile(target);
    } catch (...) {
        sqlite3_exec(m_handle, "DETACH DATABASE target", nullptr, nullptr, nullptr);
        QFile::remove(target);
        QFile::remove(target + QStringLiteral("-journal"));
        throw;
    }
}

QString Database::checkIntegrity() {
    {
        Statement integrity(*this, "PRAGMA integrity_check(1)");
        if (!integrity.step()) {
            return QStringLiteral("no answer");
        }
        if (QString answer = integrity.text(0); answer != QStringLiteral("ok")) {
            return answer;
        }
    }
    Statement foreignKeys(*this, "PRAGMA foreign_key_check");
    return foreignKeys.step() ? QStringLiteral("foreign key of ") + foreignKeys.text(0) : QString();
}

void Database::forgetPages() {
    if (m_handle != nullptr) {
        sqlite3_db_release_memory(m_handle);
    }
}

void Database::execute(const char* sql) {
    run(m_handle, sql);
}

int Database::changes() const {
    return isOpen() ? sqlite3_changes(m_handle) : 0;
}

Transaction::Transaction(Database& database)
    : m_database(database),
      m_isNested(database.isOpen() && sqlite3_get_autocommit(database.handle()) == 0) {
    m_database.execute(m_isNested ? "SAVEPOINT nested" : "BEGIN IMMEDIATE");
}

Transaction::~Transaction() {
    // After some failures the engine has rolled everything back by itself.
    if (m_done || !m_database.isOpen() || sqlite3_get_autocommit(m_database.handle()) != 0) {
        return;
    }
    sqlite3_exec(m_database.handle(), m_isNested ? "ROLLBACK TO nested;RELEASE nested" : "ROLLBACK",
                 nullptr, nullptr, nullptr);
}

void Transaction::commit() {
    m_database.execute(m_isNested ? "RELEASE nested" : "COMMIT");
    m_done = true;
}

}  // namespace keeper
