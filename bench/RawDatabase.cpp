#include "RawDatabase.h"

#include <sqlite3.h>

#include <stdexcept>

RawDatabase::RawDatabase(const std::string& path)
{
    Check(sqlite3_open_v2(path.c_str(), &database_, SQLITE_OPEN_READWRITE, nullptr));
    Run("PRAGMA journal_mode = TRUNCATE");
    Run("PRAGMA synchronous = FULL");
}

RawDatabase::~RawDatabase()
{
    sqlite3_finalize(statement_);
    sqlite3_close(database_);
}

void RawDatabase::Run(const std::string& sql)
{
    Check(sqlite3_exec(database_, sql.c_str(), nullptr, nullptr, nullptr));
}

void RawDatabase::Prepare(const std::string& sql)
{
    sqlite3_finalize(statement_);
    statement_ = nullptr;
    Check(sqlite3_prepare_v2(database_, sql.c_str(), -1, &statement_, nullptr));
}

void RawDatabase::Bind(int index, std::string_view text)
{
    Check(sqlite3_bind_text(statement_, index, text.data(), static_cast<int>(text.size()), SQLITE_STATIC));
}

void RawDatabase::Step()
{
    int result = SQLITE_ROW;
    while (result == SQLITE_ROW) {
        result = sqlite3_step(statement_);
    }
    Check(sqlite3_reset(statement_));
}

void RawDatabase::Check(int result)
{
    if (result != SQLITE_OK) {
        throw std::runtime_error(sqlite3_errmsg(database_));
    }
}
