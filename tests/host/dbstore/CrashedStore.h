#pragma once

#include <sqlite3.h>

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>

#include "TestHost.h"

/// Leaves at @p copy (logical path) what a power cut in the middle of a large change would leave of a store: a
/// file with some pages changed already, and the journal that undoes them.
inline void CopyAsIfCrashed(const TestHost& host, DBStore::Type type, const std::string& copy)
{
    namespace fs = std::filesystem;
    const std::string store = host.Real(DBStore::StorePath(type));
    sqlite3* opened = nullptr;
    sqlite3_open_v2(store.c_str(), &opened, SQLITE_OPEN_READWRITE, nullptr);
    const std::unique_ptr<sqlite3, decltype(&sqlite3_close)> database(opened, sqlite3_close);
    const char* change =
        "PRAGMA cache_size = 2; BEGIN; CREATE TABLE Half (Filler); WITH RECURSIVE n (i) AS "
        "(SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 200) INSERT INTO Half SELECT zeroblob(8000) FROM n";
    if (sqlite3_exec(opened, change, nullptr, nullptr, nullptr) != SQLITE_OK) {
        throw std::runtime_error(sqlite3_errmsg(opened));
    }
    fs::copy_file(store, host.Real(copy), fs::copy_options::overwrite_existing);
    fs::copy_file(store + "-journal", host.Real(copy + "-journal"), fs::copy_options::overwrite_existing);
}
