// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "plain_sqlite.h"

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>

namespace keeper {

namespace {

constexpr int kRow = 100;
constexpr int kDone = 101;

[[noreturn]] void die(const char* call, const char* text) {
    std::fprintf(stderr, "plain SQLite: %s: %s\n", call, text != nullptr ? text : "?");
    std::exit(1);
}

template <typename Function>
Function symbol(const char* name) {
    // DEEPBIND: the library must find its own functions before those of the encrypted engine.
    static void* const library = dlopen("libsqlite3.so.0", RTLD_NOW | RTLD_LOCAL | RTLD_DEEPBIND);
    void* const address = library != nullptr ? dlsym(library, name) : nullptr;
    if (address == nullptr) {
        die(name, dlerror());
    }
    return reinterpret_cast<Function>(address);
}

struct Api {
    int (*open)(const char*, sqlite3**) = symbol<decltype(open)>("sqlite3_open");
    int (*close)(sqlite3*) = symbol<decltype(close)>("sqlite3_close");
    int (*exec)(sqlite3*, const char*, void*, void*,
                char**) = symbol<decltype(exec)>("sqlite3_exec");
    const char* (*errmsg)(sqlite3*) = symbol<decltype(errmsg)>("sqlite3_errmsg");
    int (*prepare)(sqlite3*, const char*, int, sqlite3_stmt**,
                   const char**) = symbol<decltype(prepare)>("sqlite3_prepare_v2");
    int (*finalize)(sqlite3_stmt*) = symbol<decltype(finalize)>("sqlite3_finalize");
    int (*step)(sqlite3_stmt*) = symbol<decltype(step)>("sqlite3_step");
    int (*reset)(sqlite3_stmt*) = symbol<decltype(reset)>("sqlite3_reset");
    int (*bindText)(sqlite3_stmt*, int, const char*, int,
                    void*) = symbol<decltype(bindText)>("sqlite3_bind_text");
    int (*bindInt)(sqlite3_stmt*, int, long long) = symbol<decltype(bindInt)>("sqlite3_bind_int64");
    int (*bindNull)(sqlite3_stmt*, int) = symbol<decltype(bindNull)>("sqlite3_bind_null");
    const unsigned char* (*text)(sqlite3_stmt*,
                                 int) = symbol<decltype(text)>("sqlite3_column_text");
    int (*bytes)(sqlite3_stmt*, int) = symbol<decltype(bytes)>("sqlite3_column_bytes");
    long long (*integer)(sqlite3_stmt*, int) = symbol<decltype(integer)>("sqlite3_column_int64");
};

const Api& api() {
    static const Api instance;
    return instance;
}

}  // namespace

PlainSqlite::PlainSqlite(const std::string& path) {
    if (api().open(path.c_str(), &m_handle) != 0) {
        die("open", api().errmsg(m_handle));
    }
}

PlainSqlite::~PlainSqlite() {
    api().close(m_handle);
}

void PlainSqlite::execute(const char* sql) {
    if (api().exec(m_handle, sql, nullptr, nullptr, nullptr) != 0) {
        die(sql, api().errmsg(m_handle));
    }
}

PlainSqlite::Query::Query(PlainSqlite& database, const char* sql) : m_handle(database.m_handle) {
    if (api().prepare(m_handle, sql, -1, &m_statement, nullptr) != 0) {
        die(sql, api().errmsg(m_handle));
    }
}

PlainSqlite::Query::~Query() {
    api().finalize(m_statement);
}

void PlainSqlite::Query::bind(int index, const std::string& text) {
    api().bindText(m_statement, index, text.data(), static_cast<int>(text.size()),
                   reinterpret_cast<void*>(-1));
}

void PlainSqlite::Query::bind(int index, std::int64_t number) {
    api().bindInt(m_statement, index, number);
}

void PlainSqlite::Query::bindNull(int index) {
    api().bindNull(m_statement, index);
}

bool PlainSqlite::Query::step() {
    const int result = api().step(m_statement);
    if (result != kRow && result != kDone) {
        die("step", api().errmsg(m_handle));
    }
    return result == kRow;
}

void PlainSqlite::Query::reset() {
    api().reset(m_statement);
}

const char* PlainSqlite::Query::text(int column, int& size) const {
    const auto* bytes = reinterpret_cast<const char*>(api().text(m_statement, column));
    size = api().bytes(m_statement, column);
    return bytes != nullptr ? bytes : "";
}

std::int64_t PlainSqlite::Query::integer(int column) const {
    return api().integer(m_statement, column);
}

}  // namespace keeper
